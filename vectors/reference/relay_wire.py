"""The relay protocol's bytes and text, read and written from docs/wire.md alone.

A second implementation that shares nothing with the library, to disagree with it if one of them is wrong. It is made
to be read, not to be fast. A record is a dict of its fields: integers are int, bytes and texts are bytes (a text
without its NUL), a contained record is a dict, a list is a list of dicts, and the body of a message is a dict with one
key, the body's name, or none.
"""

OK = 0
WRITE_OVERFLOW = -1
READ_UNDERFLOW = -2
STRING_TOO_LONG = -3
STRING_EMPTY = -4
STRING_MALFORMED = -5
COUNT_OUT_OF_RANGE = -7
VERSION_OUT_OF_RANGE = -20

VERSIONS = (1, 2, 3)
VERSION_AT = 8

WIDTHS = {"u8": 1, "u16": 2, "u32": 4, "u64": 8, "i32": 4}


class Field:
    def __init__(self, name, kind, limit=1, counted_by=None, since=1, default=0):
        self.name = name
        self.kind = kind
        self.limit = limit
        self.counted_by = counted_by
        self.since = since
        self.default = default

    @property
    def element(self):
        """The record of a list, or None."""
        return self.kind[len("list of "):] if self.kind.startswith("list of ") else None


F = Field

RECORDS = {
    # Head
    "CSRelayMsgHead": [
        F("dwUserID", "u32"), F("dwRoomID", "u32"), F("bVersion", "u8"), F("wAsyncID", "u16"), F("bCmdId", "u8"),
    ],
    # Frame data
    "CSRelayData": [
        F("dwObjectId", "u32"), F("wRelayLen", "u16"), F("szRelayBuf", "bytes", 1024, "wRelayLen"),
        F("bUserStatusFlag", "u8"), F("wSequance", "u16"),
    ],
    "CSRelayInput": [F("stRelayData", "CSRelayData"), F("bRepeatCount", "u8", since=2, default=1)],
    "CSRelayInputMulty": [F("bFrameCount", "u8"), F("astRelayData", "list of CSRelayData", 10, "bFrameCount")],
    "CSRelayFrame": [
        F("dwFrameId", "u32"), F("bCount", "u8"), F("astRelayData", "list of CSRelayData", 100, "bCount"),
        F("dwLastHasDataFrameId", "u32", since=3),
    ],
    "CSRelayFramePack": [F("bCount", "u8"), F("astRelayData", "list of CSRelayFrame", 5, "bCount")],
    "CSRelayMsgPack": [
        F("wSeqId", "u16"), F("bCount", "u8", default=1), F("bIndex", "u8"), F("bDataType", "u8"),
        F("wLength", "u16"), F("szData", "bytes", 1024, "wLength"),
    ],
    # Session
    "CSRelayMsgLoginReq": [F("szSigBuf", "text", 128), F("dwReserve", "u32")],
    "CSRelayMsgLoginRes": [F("dwReserve", "u32")],
    "CSRelayMsgReloginNotify": [F("dwReserve", "u32"), F("ullQuestion", "u64")],
    "CSRelayMsgHeartBeatReq": [F("dwUnused", "u32")],
    "CSRelayMsgHeartBeatRes": [F("dwHeartBeatIntervalMs", "u32")],
    "CSRelayMsgStopReq": [F("dwReserve", "u32")],
    "CSRelayMsgStopRes": [F("iResult", "i32"), F("dwReserve", "u32")],
    "CSRelayError": [
        F("dwError_code", "u32", default=1), F("szError_code_str", "text", 1024), F("szError_svr_url", "text", 1024),
        F("bRequest_cmd_code", "u8", default=1), F("bIsFatalError", "u8"),
    ],
    # Start
    "CSRelayMsgStartReq": [F("dwReserve", "u32"), F("bNeedSeek", "u8"), F("dwSeekFrameID", "u32")],
    "CSRelayMsgStartRes": [
        F("iResult", "i32"), F("szErrorDesc", "text", 256), F("dwBeginFrameID", "u32"),
        F("bNeedToPlayFromFrame0", "u8"),
    ],
    "CreateRoomUserInfo": [F("szUser_id", "text", 256), F("szUser_ip", "text", 64)],
    # Sync and replay
    "CSRelayMsgSyncReq": [F("dwFrameIdBegin", "u32"), F("dwFrameIdEnd", "u32")],
    "CSRelayMsgSyncRes": [F("iResult", "i32"), F("stSyncData", "CSRelayFrame")],
    "ReplayPieceInof": [F("dwStartFrame", "u32"), F("dwFrameCount", "u32", default=1000)],
    "CSRelaySeekPlayReq": [
        F("dwFrameIntervalMs", "u32", default=10), F("dwStartFrame", "u32"), F("dwFrameCount", "u32", default=1000),
        F("dwReplayPieceInofCount", "u32", default=1),
        F("astReplayPieceInof", "list of ReplayPieceInof", 10, "dwReplayPieceInofCount"),
    ],
    "CSRelaySeekPlayRes": [F("dwRetCode", "u32"), F("szRetStr", "text", 1024)],
    # Statistics
    "CSRelayStatReq": [F("dwRetCode", "u32")],
    "CSRelayStatRes": [
        F("szRoomRetStr", "text", 4096), F("szUserRetStr", "text", 4096), F("szProcessRetStr", "text", 4096),
    ],
}

COMMANDS = {
    161: ("stRelayLoginReq", "CSRelayMsgLoginReq"),
    162: ("stRelayLoginRes", "CSRelayMsgLoginRes"),
    163: ("stRelayStartReq", "CSRelayMsgStartReq"),
    164: ("stRelayStartRes", "CSRelayMsgStartRes"),
    165: ("stRelayInputing", "CSRelayInput"),
    167: ("stRelayLockStep", "CSRelayFramePack"),
    168: ("stRelaySyncReq", "CSRelayMsgSyncReq"),
    169: ("stRelaySyncRes", "CSRelayMsgSyncRes"),
    170: ("stRelayMsgPack", "CSRelayMsgPack"),
    174: ("stRelayStopReq", "CSRelayMsgStopReq"),
    175: ("stRelayStopRes", "CSRelayMsgStopRes"),
    182: ("stCSRelaySeekPlayReq", "CSRelaySeekPlayReq"),
    183: ("stCSRelaySeekPlayRes", "CSRelaySeekPlayRes"),
    184: ("stCSRelayMsgHeartBeatReq", "CSRelayMsgHeartBeatReq"),
    185: ("stCSRelayMsgHeartBeatRes", "CSRelayMsgHeartBeatRes"),
    186: ("stRelayBroadCastReq", "CSRelayInput"),
    187: ("stRelayBroadCastRes", "CSRelayFramePack"),
    188: ("stRelayInputCheckReq", "CSRelayInput"),
    189: ("stRelayBroadCastCheckReq", "CSRelayInput"),
    190: ("stRelayCheckReq", "CSRelayInput"),
    191: ("stCSRelayMsgStatUserReq", "CSRelayStatReq"),
    192: ("stCSRelayMsgStatUserRes", "CSRelayStatRes"),
    193: ("stRelayReloginNotify", "CSRelayMsgReloginNotify"),
    194: ("stRelayError", "CSRelayError"),
    195: ("stRelayInputMulty", "CSRelayInputMulty"),
}


class Malformed(bytes):
    """What a text field holds after -5: all the bytes that were received."""


class Refused(Exception):
    def __init__(self, code):
        super().__init__(code)
        self.code = code


def newest(record):
    """The newest version that the record knows: the highest Since in it or in what it contains."""
    versions = [1]
    for field in RECORDS[record]:
        versions.append(field.since)
        inner = field.element or field.kind
        if inner in RECORDS:
            versions.append(newest(inner))
    return max(versions)


def effective(record, cut):
    highest = max(VERSIONS) if record == "CSRelayMsg" else newest(record)
    return highest if cut == 0 or cut > highest else cut


def is_record(kind):
    return kind in RECORDS


# ---- Fresh records ----

def fresh(record):
    if record == "CSRelayMsg":
        return {"stHead": fresh("CSRelayMsgHead"), "stBody": {}}
    fields = {}
    for field in RECORDS[record]:
        if field.kind in WIDTHS:
            fields[field.name] = field.default
        elif field.element:
            fields[field.name] = [fresh(field.element) for _ in range(fields[field.counted_by])]
        else:
            fields[field.name] = fresh(field.kind) if is_record(field.kind) else b""
    return fields


# ---- Reading ----

class Reader:
    def __init__(self, data, start=0):
        self.data = data
        self.at = start

    def left(self):
        return len(self.data) - self.at

    def take(self, count):
        if self.left() < count:
            raise Refused(READ_UNDERFLOW)
        self.at += count
        return self.data[self.at - count:self.at]

    def integer(self, kind):
        return int.from_bytes(self.take(WIDTHS[kind]), "big", signed=kind == "i32")

    def text(self, limit, keep):
        """Reads a text and hands it to keep, which gets it even if it is malformed."""
        length = self.integer("u32")
        if length > self.left():
            raise Refused(READ_UNDERFLOW)
        if length > limit:
            raise Refused(STRING_TOO_LONG)
        if length == 0:
            raise Refused(STRING_EMPTY)
        raw = self.take(length)
        if raw[-1] != 0 or 0 in raw[:-1]:
            keep(Malformed(raw))
            raise Refused(STRING_MALFORMED)
        keep(raw[:-1])


def read_record(record, reader, cut, into):
    version = effective(record, cut)
    for field in RECORDS[record]:
        if version < field.since:
            into[field.name] = field.default
            continue
        read_field(field, reader, version, into)


def read_field(field, reader, version, into):
    if field.kind in WIDTHS:
        into[field.name] = reader.integer(field.kind)
    elif field.kind == "text":
        reader.text(field.limit, lambda value: into.update({field.name: value}))
    elif is_record(field.kind):
        read_record(field.kind, reader, version, into.setdefault(field.name, {}))
    elif into[field.counted_by] > field.limit:
        raise Refused(COUNT_OUT_OF_RANGE)
    elif field.kind == "bytes":
        into[field.name] = reader.take(into[field.counted_by])
    else:
        elements = into.setdefault(field.name, [])
        for _ in range(into[field.counted_by]):
            elements.append({})
            read_record(field.element, reader, version, elements[-1])


def read_message(reader, into):
    if reader.left() <= VERSION_AT:
        raise Refused(READ_UNDERFLOW)
    version = reader.data[reader.at + VERSION_AT]
    if version not in VERSIONS:
        raise Refused(VERSION_OUT_OF_RANGE)
    head = into.setdefault("stHead", {})
    read_record("CSRelayMsgHead", reader, version, head)
    body = into.setdefault("stBody", {})
    if head["bCmdId"] in COMMANDS:
        name, record = COMMANDS[head["bCmdId"]]
        read_record(record, reader, version, body.setdefault(name, {}))


def unpack(record, data, cut=0, start=0):
    """Returns the code, the number of bytes consumed, and the fields that were read."""
    reader = Reader(data, start)
    fields = {}
    try:
        if record == "CSRelayMsg":
            read_message(reader, fields)
        else:
            read_record(record, reader, cut, fields)
        return OK, reader.at - start, fields
    except Refused as refused:
        return refused.code, reader.at - start, fields


# ---- Writing ----

class Output:
    """Memory of so many bytes, which held something before."""

    def __init__(self, room, held):
        self.memory = bytearray([held]) * room
        self.at = 0

    def reserve(self, count):
        if len(self.memory) - self.at < count:
            raise Refused(WRITE_OVERFLOW)
        self.at += count
        return self.at - count

    def put(self, raw):
        start = self.reserve(len(raw))
        self.memory[start:self.at] = raw

    def text(self, text, limit):
        raw = text.split(b"\0")[0][:limit - 1] + b"\0"
        length_at = self.reserve(4)
        self.put(raw)
        self.memory[length_at:length_at + 4] = len(raw).to_bytes(4, "big")


def write_record(record, fields, cut, output):
    version = effective(record, cut)
    for field in RECORDS[record]:
        if version >= field.since:
            write_field(field, fields, version, output)


def write_field(field, fields, version, output):
    if field.kind in WIDTHS:
        output.put(fields[field.name].to_bytes(WIDTHS[field.kind], "big", signed=field.kind == "i32"))
    elif field.kind == "text":
        output.text(fields[field.name], field.limit)
    elif is_record(field.kind):
        write_record(field.kind, fields[field.name], version, output)
    elif fields[field.counted_by] > field.limit:
        raise Refused(COUNT_OUT_OF_RANGE)
    elif field.kind == "bytes":
        output.put(fields[field.name][:fields[field.counted_by]])
    else:
        for element in fields[field.name][:fields[field.counted_by]]:
            write_record(field.element, element, version, output)


def write_message(fields, cut, output):
    version = effective("CSRelayMsg", cut)
    start = output.at
    write_record("CSRelayMsgHead", fields["stHead"], version, output)
    if fields["stHead"]["bCmdId"] in COMMANDS:
        name, record = COMMANDS[fields["stHead"]["bCmdId"]]
        write_record(record, fields["stBody"][name], version, output)
    output.memory[start + VERSION_AT] = version


def pack(record, fields, cut=0, room=1 << 20, held=0):
    """Returns the code, the number of bytes used, and the memory of so much room."""
    output = Output(room, held)
    try:
        if record == "CSRelayMsg":
            write_message(fields, cut, output)
        else:
            write_record(record, fields, cut, output)
        return OK, output.at, output.memory
    except Refused as refused:
        return refused.code, output.at, output.memory


# ---- Text ----

class Lines:
    def __init__(self, sep):
        self.sep = sep
        self.text = bytearray()

    def line(self, indent, label, rest=b""):
        self.text += b"  " * max(indent, 0) + label.encode() + rest + self.sep


def deeper(indent):
    return indent + 1 if indent >= 0 else indent


def render_record(record, fields, lines, indent):
    for field in RECORDS[record]:
        render_field(field, fields, lines, indent)


def render_field(field, fields, lines, indent):
    label = f"[{field.name}]"
    if field.kind == "u8":
        lines.line(indent, label, b": 0x%02x" % fields[field.name])
    elif field.kind in WIDTHS:
        lines.line(indent, label, b": %d" % fields[field.name])
    elif field.kind == "text":
        lines.line(indent, label, b": " + fields[field.name].split(b"\0")[0])
    elif is_record(field.kind):
        lines.line(indent, label)
        render_record(field.kind, fields[field.name], lines, deeper(indent))
    elif fields[field.counted_by] > field.limit:
        raise Refused(COUNT_OUT_OF_RANGE)
    elif field.kind == "bytes":
        raw = fields[field.name]
        lines.line(indent, label, b"(%d):" % len(raw) + b"".join(b" 0x%02x" % byte for byte in raw))
    else:
        for i, element in enumerate(fields[field.name]):
            lines.line(indent, f"{label}[{i}]")
            render_record(field.element, element, lines, deeper(indent))


def render_message(fields, lines, indent):
    lines.line(indent, "[stHead]")
    render_record("CSRelayMsgHead", fields["stHead"], lines, deeper(indent))
    lines.line(indent, "[stBody]")
    if fields["stHead"]["bCmdId"] in COMMANDS:
        name, record = COMMANDS[fields["stHead"]["bCmdId"]]
        lines.line(deeper(indent), f"[{name}]")
        render_record(record, fields["stBody"][name], lines, deeper(deeper(indent)))


def render(record, fields, indent=0, sep=b"\n"):
    """Returns the code and the text as bytes."""
    lines = Lines(sep)
    try:
        if record == "CSRelayMsg":
            render_message(fields, lines, indent)
        else:
            render_record(record, fields, lines, indent)
        return OK, bytes(lines.text)
    except Refused as refused:
        return refused.code, bytes(lines.text)
