
-- Below, nothing knows a record, a field or a command: it all goes by the tables above.

-- What Wireshark shows, and what a display filter can name ------------------------------------------------------

local relay = Proto("relaymsg", "Relay Message")

relay.prefs.udp_ports = Pref.range("UDP ports", "", "Ports whose datagrams hold relay messages", 65535)
relay.prefs.tcp_ports = Pref.range("TCP ports", "", "Ports whose connections carry relay messages", 65535)
relay.prefs.desegment = Pref.bool("Reassemble messages that span several TCP segments", true,
    "The TCP preference for subdissectors must allow it, too")
relay.prefs.heuristic = Pref.bool("Look for relay messages on all other ports", false,
    "Takes a payload for relay messages if every byte of it fits; it may be something else")

local all_fields = {}

local function filterable(field)
    all_fields[#all_fields + 1] = field
    return field
end

-- How the value of each kind of field is kept. An integer's kind is its type.
local keep = {
    bytes = function(filter, name) return ProtoField.bytes(filter, name) end,
    text = function(filter, name) return ProtoField.stringz(filter, name) end,
}
for _, integer in ipairs({"uint8", "uint16", "uint32", "uint64", "int8", "int16", "int32", "int64"}) do
    keep[integer] = function(filter, name, names) return ProtoField[integer](filter, name, base.DEC, names) end
end
local function keep_group(filter, name) return ProtoField.none(filter, name) end

local command_names = {}
for id, command in pairs(protocol.commands) do
    command_names[id] = command.name
    command.shown = filterable(ProtoField.none("relaymsg." .. command.name, command.name))
end

for _, record in pairs(protocol.records) do
    record.field_named = {}
    for _, field in ipairs(record.fields) do
        record.field_named[field.name] = field
        local filter = "relaymsg." .. record.filter .. field.name
        field.width = field.kind:match("int(%d+)$") and field.kind:match("%d+") / 8
        local names = filter == "relaymsg." .. protocol.records[protocol.head].filter .. protocol.command_field and command_names or nil
        if field.kind ~= "body" then
            field.shown = filterable((keep[field.kind] or keep_group)(filter, field.name, names))
        end
        if field.kind == "text" then
            field.length = filterable(ProtoField.uint32(filter .. ".length", field.name .. " length"))
            field.hex = filterable(ProtoField.bytes(filter .. ".hex", field.name .. " bytes"))
        end
        if field.count then
            record.field_named[field.count].counts = field
        end
    end
end

local version_field = protocol.records[protocol.head].field_named[protocol.version_field]
local message_length = filterable(ProtoField.uint32("relaymsg.length", "Message length"))
local undecoded = filterable(ProtoField.bytes("relaymsg.undecoded", "Not decoded"))
relay.fields = all_fields

local refusals = {}
for code, sentence in pairs(protocol.refusals) do
    refusals[code] = ProtoExpert.new("relaymsg." .. code, sentence, expert.group.MALFORMED, expert.severity.ERROR)
end
local unknown_command = ProtoExpert.new("relaymsg.unknown_command",
    "The command is unknown. The message ends behind its head; what follows may be its body.",
    expert.group.UNDECODED, expert.severity.WARN)
local cut_short = ProtoExpert.new("relaymsg.cut_short",
    "The capture does not hold the rest of this packet.", expert.group.UNDECODED, expert.severity.NOTE)
local all_experts = {unknown_command, cut_short}
for _, refusal in pairs(refusals) do
    all_experts[#all_experts + 1] = refusal
end
relay.experts = all_experts

-- One walk over a message ---------------------------------------------------------------------------------------
--
-- It is gone twice: without a tree, to learn the length, the facts for the info column and whether the message is
-- refused; then with a tree, to show it.

local Walk = {}
Walk.__index = Walk

local function walk_from(start, packet, tree)
    return setmetatable({
        tvb = packet.tvb,
        size = packet.tvb:captured_len(),
        is_stream = packet.is_stream,
        start = start,
        at = start,
        tree = tree,
        path = {},
        facts = {},
    }, Walk)
end

function Walk:left() return self.size - self.at end

function Walk:push(step) self.path[#self.path + 1] = step end
function Walk:pop() self.path[#self.path] = nil end

-- Ends the walk: what the library's `unpack` says of these bytes, and the item that shows why.
function Walk:refuse(code, item, words)
    self.refusal = {
        code = code,
        path = table.concat(self.path, "."):gsub("%.%[", "["),
        words = words,
        item = item,
    }
    return false
end

-- Whether so many bytes are left. Otherwise more of a stream might bring them.
function Walk:has(count)
    if count <= self:left() then
        return true
    end
    self:refuse("BIX_ERR_READ_UNDERFLOW", nil, string.format("%d bytes are needed, %d are left", count, self:left()))
    self.refusal.needed = self.at + count
    return false
end

-- The next bytes. They must be there.
function Walk:take(count)
    local range = self.tvb:range(self.at, count)
    self.at = self.at + count
    return range
end

-- Reads a record as an item of its own, in which what could be read stays on show.
function Walk:group(shown, name, record, version, tree)
    local start = self.at
    local item = tree and tree:add(shown, self.tvb:range(start, 0))
    local good = self:record(protocol.records[record], version, item)
    if item then
        item:set_text(name):set_len(self.at - start)
    end
    return good
end

-- Each reads one field of its kind and says whether it could.
local read = {}

local function integer(walk, field, tree, values)
    if not walk:has(field.width) then
        return false
    end
    local range = walk:take(field.width)
    local signed = field.kind:sub(1, 1) == "i"
    local value
    if field.width == 8 then
        value = signed and range:int64() or range:uint64()
    else
        value = signed and range:int() or range:uint()
    end
    values[field.name] = {value = value, item = tree and tree:add(field.shown, range)}
    walk:note(field, value)
    return true
end
for _, width in ipairs({8, 16, 32, 64}) do
    read["int" .. width] = integer
    read["uint" .. width] = integer
end

-- Strict, as the library's tools are: no overlong forms, no surrogates, nothing above U+10FFFF.
local function is_utf8(bytes)
    local at = 1
    while true do
        at = bytes:find("[\128-\255]", at)
        if not at then
            return true
        end
        local lead, second = bytes:byte(at, at + 1)
        local length = lead >= 0xf0 and 4 or lead >= 0xe0 and 3 or 2
        local least = lead == 0xe0 and 0xa0 or lead == 0xf0 and 0x90 or 0x80
        local most = lead == 0xed and 0x9f or lead == 0xf4 and 0x8f or 0xbf
        if lead < 0xc2 or lead > 0xf4 or not second or second < least or second > most
            or not bytes:find("^" .. ("[\128-\191]"):rep(length - 1), at + 1) then
            return false
        end
        at = at + length
    end
end

local LENGTH_WIDTH = 4

function read.text(walk, field, tree)
    if not walk:has(LENGTH_WIDTH) then
        return false
    end
    local range = walk:take(LENGTH_WIDTH)
    local length = range:uint()
    local length_item = tree and tree:add(field.length, range)
    local too_long = length > field.bound
    local words = string.format("the length is %d, at most %d fit", length, field.bound)
    if too_long and walk.is_stream then
        -- More bytes cannot mend it: not waited for. What a receiver that keeps the bytes says in the end.
        local fits = walk.at - walk.start + length <= protocol.longest
        return walk:refuse(fits and "BIX_ERR_STRING_TOO_LONG" or "BIX_ERR_READ_UNDERFLOW", length_item, words)
    end
    if not walk:has(length) then
        if too_long then
            walk.refusal.words = words
        end
        return false
    end
    if too_long then
        return walk:refuse("BIX_ERR_STRING_TOO_LONG", length_item, words)
    end
    if length == 0 then
        return walk:refuse("BIX_ERR_STRING_EMPTY", length_item, words)
    end
    range = walk:take(length)
    local bytes = range:raw()
    local nul = bytes:find("\0", 1, true)
    if nul ~= length then
        local item = tree and tree:add(field.hex, range)
        return walk:refuse("BIX_ERR_STRING_MALFORMED", item,
            nul and string.format("byte %d of %d is NUL", nul, length) or "the last byte is not NUL")
    end
    if tree then
        local item = tree:add_packet_field(field.shown, range, ENC_UTF_8)
        if not is_utf8(bytes) then
            item:append_text(" [not UTF-8]")
            item:add(field.hex, range:range(0, length - 1))
        end
    end
    return true
end

-- The value that counts the elements of an array, or nothing if it is above the limit.
local function counted(walk, field, values)
    local count = values[field.count]
    local number = tonumber(tostring(count.value))
    if number <= field.bound then
        return number
    end
    walk:pop()
    walk:push(field.count)
    walk:refuse("BIX_ERR_COUNT_OUT_OF_RANGE", count.item,
        string.format("the count is %s, %s holds at most %d", tostring(count.value), field.name, field.bound))
    return nil
end

function read.bytes(walk, field, tree, values)
    local count = counted(walk, field, values)
    if not count or not walk:has(count) then
        return false
    end
    local range = walk:take(count)
    if tree then
        tree:add(field.shown, range)
    end
    return true
end

function read.record(walk, field, tree, _, version)
    return walk:group(field.shown, field.name, field.record, version, tree)
end

function read.records(walk, field, tree, values, version)
    local count = counted(walk, field, values)
    for index = 0, (count or 0) - 1 do
        local step = "[" .. index .. "]"
        walk:push(step)
        if not walk:group(field.shown, field.name .. step, field.record, version, tree) then
            return false
        end
        walk:pop()
    end
    return count ~= nil
end

function read.body(walk, _, tree, _, version)
    local command = walk.command
    if not command then
        return true
    end
    walk:push(command.name)
    if not walk:group(command.shown, command.name, command.record, version, tree) then
        return false
    end
    walk:pop()
    return true
end

function Walk:record(record, version, tree)
    local values = {}
    for _, field in ipairs(record.fields) do
        if field.since <= version then
            self:push(field.name)
            if not read[field.kind](self, field, tree, values, version) then
                return false
            end
            self:pop()
        end
    end
    return true
end

-- Reads the message, and says whether it is one.
function Walk:message()
    self:push(protocol.records[protocol.message].fields[1].name)
    self:push(protocol.version_field)
    if not self:has(protocol.version_at + 1) then
        return false
    end
    local range = self.tvb:range(self.at + protocol.version_at, 1)
    local version = range:uint()
    if version < protocol.oldest or version > protocol.newest then
        return self:refuse("BIX_ERR_VERSION_OUT_OF_RANGE", self.tree and self.tree:add(version_field.shown, range),
            string.format("the version is %d", version))
    end
    self.path = {}
    self.version = version
    if self:left() > protocol.command_at then
        self.id = self.tvb:range(self.at + protocol.command_at, 1):uint()
        self.command = protocol.commands[self.id]
    end
    return self:record(protocol.records[protocol.message], version, self.tree)
end

-- The info column -----------------------------------------------------------------------------------------------

local MOST_FACTS = 7
local MOST_MESSAGES = 12 -- told one by one
local DEEPEST_FACT = 5   -- steps of a path: a field of an element of the body's list

-- Remembers a value for the info column: of the head, of the body, and of the body's records. What repeats is shown
-- as the first and the last of its values, a count by the name of what it counts.
function Walk:note(field, value)
    local name = field.counts and field.counts.name or field.name
    if #self.path > DEEPEST_FACT or (field.counts and #self.path > 3)
        or field.name == protocol.version_field or field.name == protocol.command_field then
        return
    end
    local fact = self.facts[name]
    if fact then
        fact.last = value
    elseif #self.facts < MOST_FACTS then
        fact = {name = name:gsub("^%l+", ""), first = value, last = value}
        self.facts[name] = fact
        self.facts[#self.facts + 1] = fact
    end
end

function Walk:name()
    return self.command and self.command.name or self.id and "unknown command " .. self.id or "message"
end

function Walk:summary()
    local words = {self:name(), self.version and "v" .. self.version}
    for _, fact in ipairs(self.facts) do
        local first, last = tostring(fact.first), tostring(fact.last)
        words[#words + 1] = fact.name .. "=" .. first .. (first ~= last and ".." .. last or "")
    end
    if self.refusal then
        words[#words + 1] = "[" .. (self.is_cut_short and "cut short" or self.refusal.code) .. "]"
    end
    return table.concat(words, " ")
end

-- From packets to messages --------------------------------------------------------------------------------------

-- Whether the message may be good once more of the stream is there.
local function must_wait(walk, packet)
    return packet.is_stream and not packet.is_cut and walk.refusal and walk.refusal.needed
end

local function show(measured, packet, tree)
    local refusal = measured.refusal
    local stop = refusal and measured.size or measured.at
    local item = tree:add(relay, packet.tvb:range(measured.start, stop - measured.start),
        relay.description .. ": " .. measured:summary())
    local length = item:add(message_length, measured.at - measured.start):set_generated()
    local walk = walk_from(measured.start, packet, item)
    walk:message()
    if not refusal then
        if not walk.command then
            item:add_proto_expert_info(unknown_command)
        end
        return
    end
    local rest = walk:left() > 0 and item:add(undecoded, walk.tvb:range(walk.at))
    if measured.is_cut_short then
        item:add_proto_expert_info(cut_short)
    else
        length:append_text(" up to the refusal")
        local about = walk.refusal.item or rest or item
        about:add_proto_expert_info(refusals[refusal.code],
            refusal.code .. " at " .. refusal.path .. ": " .. refusal.words)
    end
end

-- Shows every message of the payload. What is behind a refused one is not decoded: nothing says where the next
-- begins. The next segment is taken to begin with a message again.
local function dissect(tvb, pinfo, tree)
    local size = tvb:captured_len()
    if size == 0 then
        return 0
    end
    local packet = {
        tvb = tvb,
        is_stream = pinfo.can_desegment > 0 and relay.prefs.desegment,
        is_cut = size < tvb:reported_len(),
    }
    local told = tonumber(pinfo.private.relaymsg_told or 0) -- in this packet: it may hold the ends of several PDUs
    local at = 0
    while at < size do
        local walk = walk_from(at, packet)
        local good = walk:message()
        if must_wait(walk, packet) then
            pinfo.desegment_offset = at
            pinfo.desegment_len = DESEGMENT_ONE_MORE_SEGMENT
            break
        end
        walk.is_cut_short = packet.is_cut and walk.refusal and walk.refusal.needed
            and walk.refusal.needed <= tvb:reported_len()
        if told == 0 then
            pinfo.cols.protocol = "Relay"
            pinfo.cols.info:clear()
        end
        told = told + 1
        if told <= MOST_MESSAGES then
            pinfo.cols.info:append((told > 1 and " | " or "") .. walk:summary())
        elseif told == MOST_MESSAGES + 1 then
            pinfo.cols.info:append(" | ...")
        end
        show(walk, packet, tree)
        at = good and walk.at or size
    end
    pinfo.private.relaymsg_told = tostring(told)
    pinfo.cols.info:fence()
    return size
end

relay.dissector = dissect

-- Which packets -------------------------------------------------------------------------------------------------

local transports = {"udp", "tcp"}
local claimed = {udp = "", tcp = ""}

function relay.prefs_changed()
    for _, transport in ipairs(transports) do
        local ports = relay.prefs[transport .. "_ports"]
        local before = claimed[transport]
        if ports ~= before then
            local dissectors = DissectorTable.get(transport .. ".port")
            if before ~= "" then
                dissectors:remove(before, relay)
            end
            if ports ~= "" then
                dissectors:add(ports, relay)
            end
            claimed[transport] = ports
        end
    end
end

-- Whether every byte of a payload fits: whole messages of known commands, in a stream also the beginning of one.
local function fits(tvb, is_stream)
    local packet = {tvb = tvb, is_stream = is_stream}
    local at = 0
    while at < tvb:captured_len() do
        local walk = walk_from(at, packet)
        if not walk:message() then
            return at > 0 and must_wait(walk, packet)
        end
        if not walk.command then
            return false
        end
        at = walk.at
    end
    return at > 0
end

for _, transport in ipairs(transports) do
    DissectorTable.get(transport .. ".port"):add_for_decode_as(relay)
    relay:register_heuristic(transport, function(tvb, pinfo, tree)
        if not relay.prefs.heuristic or not fits(tvb, transport == "tcp") then
            return false
        end
        dissect(tvb, pinfo, tree) -- called through `relay` it could not ask for more of a stream
        pinfo.conversation = relay
        return true
    end)
end
