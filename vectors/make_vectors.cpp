/// Writes the vectors: make_vectors FOLDER. README.md in this folder tells what they are.
#include "protocol/cs_relay_msg.h"
#include "vectors/VectorJson.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>

namespace vectors {
namespace {

using namespace cs_relay_msg::schema;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

constexpr uint32_t NEWEST = 3;
constexpr uint32_t LARGEST_CUT = 0xffffffff;
constexpr char HELD = '\xee';               // what an output buffer holds before
constexpr size_t ROOM = 1u << 20;           // more than any record takes
constexpr size_t TEXT_ROOM = 8u << 20;      // more than any text takes
constexpr size_t CUT_EVERYWHERE = 2u << 10; // bytes: shorter wire forms are cut at every byte
constexpr size_t MESSAGE_HEAD = cs_relay_msg::CSRelayMsgHead::maxWireSize;

/// The file of each group, and what is in it.
const std::map<std::string, std::vector<std::string>> GROUPS = {
    {"head", {"CSRelayMsgHead"}},
    {"frame",
     {"CSRelayMsgPack", "CSRelayData", "CSRelayInput", "CSRelayInputMulty", "CSRelayFrame",
      "CSRelayFramePack"}},
    {"session",
     {"CSRelayMsgLoginReq", "CSRelayMsgLoginRes", "CSRelayMsgReloginNotify", "CSRelayMsgHeartBeatReq",
      "CSRelayMsgHeartBeatRes", "CSRelayMsgStopReq", "CSRelayMsgStopRes", "CSRelayError"}},
    {"start", {"CSRelayMsgStartReq", "CSRelayMsgStartRes", "CreateRoomUserInfo"}},
    {"replay",
     {"CSRelayMsgSyncReq", "CSRelayMsgSyncRes", "ReplayPieceInof", "CSRelaySeekPlayReq",
      "CSRelaySeekPlayRes"}},
    {"statistics", {"CSRelayStatReq", "CSRelayStatRes"}},
    {"envelope", {"CSRelayMsg"}},
};

// ---- What the library does ----

struct Outcome {
    int32_t code;
    size_t used;
    std::string bytes; // the used part of the output
};

/// Packs into memory of @p room bytes, of which only the used part is looked at afterwards.
Outcome pack(const Type& type, const Storage& record, uint32_t cut, size_t room = ROOM) {
    static std::string memory(ROOM, HELD);
    std::fill_n(memory.begin(), room, HELD);
    BixWriteBuf buffer(memory.data(), room);
    const int32_t code = type.pack(record.data(), buffer, cut);
    return {code, buffer.getUsedSize(), memory.substr(0, buffer.getUsedSize())};
}

Outcome render(const Type& type, const Storage& record, int indent, char sep) {
    static std::string memory(TEXT_ROOM, HELD);
    BixWriteBuf buffer(memory.data(), memory.size());
    const int32_t code = type.visualize(record.data(), buffer, indent, sep);
    return {code, buffer.getUsedSize(), memory.substr(0, buffer.getUsedSize())};
}

Outcome unpack(const Type& type, Storage& record, const std::string& wire, uint32_t cut) {
    BixReadBuf buffer(wire.data(), wire.size());
    const int32_t code = type.unpack(record.data(), buffer, cut);
    return {code, buffer.getUsedSize(), {}};
}

struct Received {
    Outcome outcome;
    Json fields;
};

/// Unpacks into two records that differ in every byte, so that what was written shows.
Received receive(const Type& type, const std::string& wire, uint32_t cut) {
    Storage one(type, '\x5a');
    Storage other(type, '\xa5');
    const Outcome outcome = unpack(type, one, wire, cut);
    (void)unpack(type, other, wire, cut);
    return {outcome, writtenJson(type, one.data(), other.data(), outcome.code == 0)};
}

// ---- Truncations ----

/// Where an operation stops that is given fewer bytes than it needs: @p attempt takes that number. Every
/// number below @p size is tried, or for a large size those at which the place changes and their neighbours.
Json stops(size_t size, const std::function<Outcome(size_t)>& attempt) {
    const Outcome none = attempt(0);
    Json places = {none.used};
    size_t last = none.used;
    const auto check = [&](size_t length) {
        const Outcome outcome = attempt(length);
        if (outcome.code != none.code || outcome.used < last || outcome.used > length) {
            throw std::runtime_error("a truncation fails in another way");
        }
        return outcome.used;
    };
    for (size_t length = 1; length < size; ++length) {
        if (size > CUT_EVERYWHERE) {
            // The place never moves back: find the next length at which it has moved.
            size_t moved = size;
            while (length < moved) {
                const size_t middle = length + (moved - length) / 2;
                if (check(middle) > last) {
                    moved = middle;
                } else {
                    length = middle + 1;
                }
            }
            if (length == size) {
                break;
            }
        }
        if (const size_t used = check(length); used != last) {
            last = used;
            places.push_back(used);
        }
    }
    return {{"code", none.code}, {"stops", places}};
}

Json cuts(const Type& type, const Storage& record, const std::string& wire, uint32_t cut) {
    Storage into(type, 0);
    std::string memory(wire.size(), HELD);
    const auto unpackOf = [&](size_t length) {
        BixReadBuf buffer(wire.data(), length);
        const int32_t code = type.unpack(into.data(), buffer, cut);
        return Outcome{code, buffer.getUsedSize(), {}};
    };
    const auto packInto = [&](size_t length) {
        BixWriteBuf buffer(memory.data(), length);
        const int32_t code = type.pack(record.data(), buffer, cut);
        return Outcome{code, buffer.getUsedSize(), {}};
    };
    return {{"unpack", stops(wire.size(), unpackOf)}, {"pack", stops(wire.size(), packInto)}};
}

// ---- Samples ----

bool isCount(const Type& type, const Field& field) {
    return std::any_of(type.begin(), type.end(), [&](const Field& other) {
        return other.countField >= 0 && &type.fields[other.countField] == &field;
    });
}

void set(char* record, const Type& type, const Field& field, const Json& value) {
    apply(type, record, {{field.name, value}});
}

Json number(const Field& field, uint64_t bits) {
    if (field.width == 8) {
        return std::to_string(bits);
    }
    if (field.isSigned) {
        return static_cast<int32_t>(bits);
    }
    return bits & ((uint64_t{1} << (8 * field.width)) - 1);
}

/// Makes records in which no two neighbours look alike, so that an exchanged field shows.
struct Sampler {
    size_t elements;  ///< in each list
    size_t bytes;     ///< in each array of bytes
    uint8_t next = 1; ///< the next byte

    std::string run(size_t count) {
        std::string result;
        while (result.size() < count) {
            result += static_cast<char>(next++);
        }
        return result;
    }

    uint64_t value(size_t width) {
        uint64_t bits = 0;
        for (const char byte : run(width)) {
            bits = bits << 8 | static_cast<uint8_t>(byte);
        }
        return bits;
    }

    void fill(const Type& type, char* record) {
        for (const Field& field : type) {
            char* const member = record + field.offset;
            if (field.kind == Kind::Record) {
                fill(*field.type, member);
            } else if (field.kind == Kind::String) {
                set(record, type, field, std::string(field.name) + " \xc3\xa4 %s");
            } else if (field.kind == Kind::Bytes) {
                count(type, field, record, bytes);
                set(record, type, field, hexJson(run(bytes)));
            } else if (field.kind == Kind::RecordArray) {
                count(type, field, record, elements);
                for (size_t i = 0; i < elements; ++i) {
                    fill(*field.type, member + i * field.width);
                }
            } else if (!isCount(type, field)) {
                set(record, type, field, number(field, value(field.width)));
            }
        }
    }

    static void count(const Type& type, const Field& field, char* record, uint64_t elements) {
        const Field& counter = type.fields[field.countField];
        set(record, type, counter, number(counter, elements));
    }
};

Storage fresh(const Type& type) {
    Storage record(type, 0);
    type.construct(record.data());
    return record;
}

Storage sample(const Type& type, size_t elements = 2, size_t bytes = 3) {
    Storage record = fresh(type);
    Sampler{elements, bytes}.fill(type, record.data());
    return record;
}

// ---- Vectors ----

/// Where a record stands while its vectors are made: by itself, or as the body of a message.
struct Place {
    const Type& type; ///< what is packed
    std::string name; ///< begins the ids
    uint8_t id = 0;   ///< the command, or 0 for a record by itself

    /// The record's memory in what is packed.
    char* inner(Storage& storage) const { return storage.data() + (id != 0 ? MESSAGE_HEAD : 0); }

    Storage around(const Type& record, const Storage& content) const {
        if (id == 0) {
            return content;
        }
        Storage message = fresh(type);
        apply(type, message.data(),
              {{"stHead",
                {{"dwUserID", 1001},
                 {"dwRoomID", 7},
                 {"bVersion", NEWEST},
                 {"wAsyncID", 258},
                 {"bCmdId", id}}}});
        std::copy(content.data(), content.data() + record.size, inner(message));
        return message;
    }
};

class File {
public:
    File(const std::string& path) : out_(path, std::ios::binary), path_(path) {}

    void line(const std::string& id, const char* test, const Type& type, const Json& rest) {
        Json line = {{"id", id}, {"test", test}, {"record", type.name}};
        line.update(rest);
        if (std::find(ids_.begin(), ids_.end(), id) != ids_.end()) {
            throw std::runtime_error("used twice: " + id);
        }
        ids_.push_back(id);
        out_ << line.dump() << '\n';
    }

    /// A record that packs, unpacks and renders.
    void both(const std::string& id, const Type& type, Storage record, uint32_t cut = 0) {
        const Json fields = fieldsJson(type, record.data());
        const Outcome text = render(type, record, 0, '\n');
        const Outcome packed = pack(type, record, cut);
        const Received received = receive(type, packed.bytes, cut);
        if (text.code != 0 || packed.code != 0 || received.outcome.code != 0 ||
            received.outcome.used != packed.used) {
            throw std::runtime_error("not valid: " + id);
        }
        Json rest = {{"cut", cut},
                     {"fields", fields},
                     {"wire", hexJson(packed.bytes)},
                     {"code", 0},
                     {"used", packed.used}};
        if (const Json after = fieldsJson(type, record.data()); after != fields) {
            rest["after"] = after;
        }
        if (received.fields != fields) {
            rest["received"] = received.fields;
        }
        rest["text"] = textJson(text.bytes);
        rest["cuts"] = cuts(type, record, packed.bytes, cut);
        line(id, "both", type, rest);
    }

    /// Bytes that are unpacked only.
    void unpacked(const std::string& id, const Type& type, const std::string& wire, uint32_t cut = 0) {
        const Received received = receive(type, wire, cut);
        line(id, "unpack", type,
             {{"cut", cut},
              {"wire", hexJson(wire)},
              {"code", received.outcome.code},
              {"used", received.outcome.used},
              {"received", received.fields}});
    }

    /// A record that does not pack, nor render.
    void refused(const std::string& id, const Type& type, Storage record, uint32_t cut = 0) {
        const Json fields = fieldsJson(type, record.data());
        const Outcome packed = pack(type, record, cut);
        if (packed.code == 0) {
            throw std::runtime_error("valid: " + id);
        }
        line(id + "/pack", "pack", type,
             {{"cut", cut},
              {"fields", fields},
              {"code", packed.code},
              {"used", packed.used},
              {"wire", hexJson(packed.bytes)}});
        rendered(id + "/text", type, record, 0, '\n');
    }

    /// A record that does not fit.
    void tooLarge(const std::string& id, const Type& type, const Storage& record, size_t room) {
        const Json fields = fieldsJson(type, record.data());
        const Outcome packed = pack(type, record, 0, room);
        line(id, "pack", type,
             {{"cut", 0},
              {"room", room},
              {"fields", fields},
              {"code", packed.code},
              {"used", packed.used},
              {"wire", hexJson(packed.bytes)}});
    }

    void constructed(const std::string& id, const Type& type) {
        line(id, "fresh", type, {{"fields", fieldsJson(type, fresh(type).data())}});
    }

    void rendered(const std::string& id, const Type& type, const Storage& record, int indent, char sep) {
        const Outcome text = render(type, record, indent, sep);
        line(id, "text", type,
             {{"fields", fieldsJson(type, record.data())},
              {"indent", indent},
              {"sep", std::string(1, sep)},
              {"code", text.code},
              {"used", text.used},
              {"text", textJson(text.bytes)}});
    }

    void close() {
        if (!out_.flush()) {
            throw std::runtime_error("cannot write " + path_);
        }
    }

private:
    std::ofstream out_;
    std::string path_;
    std::vector<std::string> ids_;
};

std::string big(uint64_t value, size_t width) {
    std::string bytes;
    while (width-- > 0) {
        bytes += static_cast<char>(value >> (8 * width));
    }
    return bytes;
}

/// The number of bytes on the wire before @p field.
size_t wireOffset(const Type& type, const Field& field, const Storage& record) {
    size_t offset = 0;
    for (const Field* before = type.begin(); before != &field; ++before) {
        if (before->kind != Kind::Scalar && before->kind != Kind::String) {
            throw std::runtime_error("behind such a field no string was expected");
        }
        offset += before->kind == Kind::Scalar ? before->width
                                               : 4 + std::strlen(record.data() + before->offset) + 1;
    }
    return offset;
}

/// Each way of a string to be wrong, with its twins that are right.
void strings(File& file, const Place& place, const Type& type, const Field& field) {
    const Storage record = sample(type);
    const std::string name = place.name + "/" + field.name + "/";
    const size_t start = (place.id != 0 ? MESSAGE_HEAD : 0) + wireOffset(type, field, record);
    const Storage whole = place.around(type, record);
    const std::string wire = pack(place.type, whole, 0).bytes;
    const size_t length = std::strlen(record.data() + field.offset) + 1;
    const std::string before = wire.substr(0, start);
    const std::string behind = wire.substr(start + 4 + length);
    const auto received = [&](const char* id, uint32_t said, const std::string& bytes) {
        file.unpacked(name + id, place.type, before + big(said, 4) + bytes);
    };
    const uint32_t limit = field.bound;

    for (const size_t characters : {size_t{0}, size_t{1}, size_t{limit} - 2, size_t{limit} - 1}) {
        Storage valid = record;
        set(valid.data(), type, field, std::string(characters, 'x'));
        file.both(name + "characters-" + std::to_string(characters), place.type, place.around(type, valid));
    }
    Storage full = record;
    set(full.data(), type, field, {{"raw", hexJson(std::string(limit, 'x'))}});
    file.both(name + "cut-to-limit", place.type, place.around(type, full));

    file.tooLarge(name + "no-room-for-length", place.type, whole, start + 3);
    file.tooLarge(name + "no-room-for-text", place.type, whole, start + 4 + length - 1);

    received("length-0", 0, behind + std::string(8, '\0'));
    received("length-1-NUL", 1, std::string(1, '\0') + behind);
    received("length-1-no-NUL", 1, "a" + behind);
    received("no-NUL", 3, "abc" + behind);
    received("NUL-behind-only", 3, "abc" + std::string(1, '\0') + behind);
    received("NUL-inside", 5, std::string("ab\0c\0", 5) + behind);
    received("NUL-first", 2, std::string(2, '\0') + behind);
    received("NUL-twice-at-end", 4, std::string("ab\0\0", 4) + behind);
    received("limit", limit, std::string(limit - 1, 'y') + '\0' + behind);
    received("limit-no-NUL", limit, std::string(limit, 'y') + behind);
    received("limit-plus-1", limit + 1, std::string(limit, 'y') + '\0' + behind);
    received("limit-plus-1-too-few-bytes", limit + 1, std::string(limit, 'y'));
    received("limit-plus-1-no-NUL", limit + 1, std::string(limit + 1, 'y'));
    received("one-byte-more-than-left", 5, std::string("abc\0", 4));
    received("all-bytes-left", 4, std::string("abc\0", 4));
    received("no-bytes-left", 1, "");
    received("length-high-bit", 0x80000000, behind);
    received("length-largest", LARGEST_CUT, behind);
    received("length-other-order", 0x04000000, std::string("abc\0", 4) + behind);
}

/// Counts at the bound, just above it, and at the end of their range.
void counts(File& file, const Place& place, const Type& type, const Field& field) {
    const Field& counter = type.fields[field.countField];
    const std::string name = place.name + "/" + counter.name + "/";
    const uint64_t largest = (uint64_t{1} << (8 * counter.width)) - 1;

    for (const size_t count : {size_t{0}, size_t{1}, size_t{field.bound} - 1, size_t{field.bound}}) {
        const Storage record =
            field.kind == Kind::RecordArray ? sample(type, count, 2) : sample(type, 2, count);
        file.both(name + std::to_string(count), place.type, place.around(type, record));
    }
    for (const uint64_t count : {uint64_t{field.bound} + 1, largest}) {
        Storage record = sample(type);
        Sampler::count(type, field, record.data(), count);
        const Storage whole = place.around(type, record);
        const std::string wire = pack(place.type, whole, 0).bytes;
        file.refused(name + std::to_string(count), place.type, whole);
        file.unpacked(name + std::to_string(count) + "/unpack", place.type, wire);
        file.unpacked(name + std::to_string(count) + "/unpack-with-bytes", place.type,
                      wire + std::string(2048, '\x01'));
    }
}

/// A failure inside an element: the record that contains it fails alike.
void elements(File& file, const Place& place, const Type& type, const Field& field) {
    const Type& element = *field.type;
    for (const Field& inner : element) {
        if (inner.countField < 0) {
            continue;
        }
        const bool isList = field.kind == Kind::RecordArray;
        Storage record = sample(type);
        char* const at = record.data() + field.offset + (isList ? field.width : 0);
        Sampler::count(element, inner, at, inner.bound + 1);
        const std::string name = place.name + "/" + field.name + (isList ? "[1]." : ".") + inner.name;
        const Storage whole = place.around(type, record);
        file.refused(name, place.type, whole);
        file.unpacked(name + "/unpack", place.type,
                      pack(place.type, whole, 0).bytes + std::string(16, '\x01'));
    }
}

void scalars(File& file, const Type& type, const Field& field) {
    const std::string name = std::string(type.name) + "/" + field.name + "/";
    const uint64_t largest = field.width == 8 ? ~uint64_t{0} : (uint64_t{1} << (8 * field.width)) - 1;
    for (const uint64_t bits : {uint64_t{0}, uint64_t{1}, largest / 2, largest / 2 + 1, largest}) {
        Storage record = sample(type);
        const Json value = number(field, bits);
        set(record.data(), type, field, value);
        file.both(name + (value.is_string() ? value.get<std::string>() : value.dump()), type, record);
    }
}

/// The fields of a record, each at its limits.
void fields(File& file, const Place& place, const Type& type) {
    for (const Field& field : type) {
        if (field.kind == Kind::String) {
            strings(file, place, type, field);
        } else if (field.countField >= 0) {
            counts(file, place, type, field);
        } else if (field.kind == Kind::Scalar && place.id == 0 && !isCount(type, field)) {
            scalars(file, type, field);
        }
        if (field.type != nullptr) {
            elements(file, place, type, field);
        }
    }
}

Storage highBytes(const Type& type) {
    Storage record = fresh(type);
    Sampler sampler{1, 5, 0xf9};
    sampler.fill(type, record.data());
    for (const Field& field : type) {
        if (field.kind == Kind::String) {
            set(record.data(), type, field, {{"hex", "ff80c3"}});
        }
    }
    return record;
}

/// All there is to a record, by itself or as a body.
void record(File& file, const Place& place, const Type& type) {
    if (place.id == 0) {
        file.constructed(place.name + "/fresh", type);
    }
    for (const uint32_t cut : {0u, 1u, 2u, 3u, 4u, LARGEST_CUT}) {
        const std::string at = "/cut-" + std::to_string(cut);
        file.both(place.name + "/sample" + at, place.type, place.around(type, sample(type)), cut);
        if (1 <= cut && cut <= NEWEST) {
            file.both(place.name + "/fresh" + at, place.type, place.around(type, fresh(type)), cut);
            file.both(place.name + "/high-bytes" + at, place.type, place.around(type, highBytes(type)), cut);
        }
    }
    const Storage whole = place.around(type, sample(type));
    file.unpacked(place.name + "/bytes-behind", place.type,
                  pack(place.type, whole, 0).bytes + "\x01\x02\x03");
    file.rendered(place.name + "/text/indent-2", place.type, whole, 2, '\n');
    file.rendered(place.name + "/text/no-indent", place.type, whole, -1, ' ');
    file.rendered(place.name + "/text/percent", place.type, whole, 0, '%');
    fields(file, place, type);
}

// ---- The envelope ----

Storage heartBeat(const Type& message, uint8_t version) {
    const Type& body = typeNamed("CSRelayMsgHeartBeatReq");
    Storage record =
        Place{message, "", cs_relay_msg::cmd::stCSRelayMsgHeartBeatReq}.around(body, fresh(body));
    apply(message, record.data(), {{"stHead", {{"bVersion", version}}}});
    return record;
}

void versionBytes(File& file, const Type& message) {
    Storage record = heartBeat(message, 0);
    std::string wire = pack(message, record, 0).bytes;
    for (int version = 0; version <= 255; ++version) {
        const std::string name = "CSRelayMsg/bVersion/" + std::to_string(version);
        wire[VERSION_BYTE] = static_cast<char>(version);
        file.unpacked(name, message, wire);
        // The record's own version does not reach the wire.
        file.both(name + "/own", message, heartBeat(message, static_cast<uint8_t>(version)),
                  static_cast<uint32_t>(version));
    }
    // Nor does the message's, if the body does not pack.
    const Command& command = *findCommand(cs_relay_msg::cmd::stRelayMsgPack);
    Storage failing = Place{message, "", command.id}.around(*command.type, sample(*command.type));
    apply(message, failing.data(),
          {{"stHead", {{"bVersion", 9}}}, {"stBody", {{command.name, {{"wLength", 1025}}}}}});
    file.refused("CSRelayMsg/bVersion/not-stamped", message, failing);
    for (const char version : {'\x00', '\x01', '\x03', '\x04', '\xff'}) {
        wire[VERSION_BYTE] = version;
        for (const size_t length : {size_t{0}, size_t{8}, size_t{9}, size_t{11}, size_t{12}}) {
            file.unpacked("CSRelayMsg/first-bytes/" + std::to_string(length) + "/version-" +
                              std::to_string(static_cast<uint8_t>(version)),
                          message, wire.substr(0, length));
        }
    }
}

void unknownCommands(File& file, const Type& message) {
    for (unsigned id = 0; id <= 255; ++id) {
        if (findCommand(id) != nullptr) {
            continue;
        }
        Storage record = heartBeat(message, 0);
        apply(message, record.data(), {{"stHead", {{"bCmdId", id}}}});
        const std::string name = "CSRelayMsg/unassigned/" + std::to_string(id);
        file.both(name, message, record);
        file.unpacked(name + "/bytes-behind", message, pack(message, record, 0).bytes + "\x01\x02\x03\x04");
    }
}

/// The sender's version counts, whatever cut-off the receiver gives.
void ignoredCuts(File& file, const Type& message) {
    const Command& command = *findCommand(cs_relay_msg::cmd::stRelayLockStep);
    Storage record = Place{message, "", command.id}.around(*command.type, sample(*command.type));
    for (const uint32_t version : {1u, 2u, 3u}) {
        const std::string wire = pack(message, record, version).bytes;
        for (const uint32_t cut : {0u, 1u, 2u, 3u, LARGEST_CUT}) {
            file.unpacked("CSRelayMsg/version-" + std::to_string(version) + "/receiver-" +
                              std::to_string(cut),
                          message, wire, cut);
        }
    }
}

void stream(File& file, const Type& message) {
    Json messages = Json::array();
    std::string wire;
    uint32_t version = 0;
    for (const Command& command : commands()) {
        Storage record = Place{message, "", command.id}.around(*command.type, sample(*command.type));
        version = version % NEWEST + 1;
        const Json fields = fieldsJson(message, record.data());
        const Outcome packed = pack(message, record, version);
        messages.push_back({{"cut", version},
                            {"fields", fields},
                            {"used", packed.used},
                            {"received", receive(message, packed.bytes, 0).fields}});
        wire += packed.bytes;
    }
    file.line("CSRelayMsg/stream/every-command", "stream", message,
              {{"code", 0}, {"wire", hexJson(wire)}, {"messages", messages}});
}

void largest(File& file, const Type& message) {
    const Command& command = *findCommand(cs_relay_msg::cmd::stRelayLockStep);
    Storage record = fresh(message);
    auto* const whole = reinterpret_cast<cs_relay_msg::CSRelayMsg*>(record.data());
    std::memset(record.data(), 0x5a, sizeof(*whole));
    whole->stHead.bCmdId = command.id;
    auto& frames = whole->stBody.stRelayLockStep;
    frames.bCount = 5;
    for (auto& frame : frames.astRelayData) {
        frame.bCount = 100;
        for (auto& data : frame.astRelayData) {
            data.wRelayLen = 1024;
        }
    }
    file.both("CSRelayMsg/largest", message, record);
}

void envelope(File& file, const Type& message) {
    for (const Command& command : commands()) {
        record(file, Place{message, std::string("CSRelayMsg/") + command.name, command.id}, *command.type);
    }
    file.constructed("CSRelayMsg/fresh", message);
    file.both("CSRelayMsg/fresh/cut-0", message, fresh(message));
    versionBytes(file, message);
    unknownCommands(file, message);
    ignoredCuts(file, message);
    stream(file, message);
    largest(file, message);
}

void make(const std::string& folder) {
    size_t written = 0;
    for (const auto& [group, names] : GROUPS) {
        File file(folder + "/" + group + ".jsonl");
        for (const std::string& name : names) {
            const Type& type = typeNamed(name);
            if (group == "envelope") {
                envelope(file, type);
            } else {
                record(file, Place{type, name}, type);
            }
            ++written;
        }
        file.close();
    }
    if (written != types().size) {
        throw std::runtime_error("a record belongs to no group");
    }
}

} // namespace
} // namespace vectors

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_vectors FOLDER\n");
        return 2;
    }
    try {
        vectors::make(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_vectors: %s\n", error.what());
        return 1;
    }
}
