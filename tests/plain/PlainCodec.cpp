#include "tests/plain/PlainCodec.h"

#include "protocol/cs_relay_msg.h"

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <cstddef>
#include <cstring>

namespace cs_relay_msg::plain {

namespace {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using schema::Command;
using schema::Field;
using schema::Kind;
using schema::Type;

constexpr size_t VERSION_BYTE = 8; // from the start of a message

template <class T>
T get(const char* from) {
    T value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

template <class T>
void set(char* to, T value) {
    std::memcpy(to, &value, sizeof(value));
}

/// The bits of a scalar, widened without sign.
uint64_t getScalar(const Field& field, const char* at) {
    if (field.width == 1) {
        return get<uint8_t>(at);
    }
    if (field.width == 2) {
        return get<uint16_t>(at);
    }
    if (field.width == 4) {
        return get<uint32_t>(at);
    }
    return get<uint64_t>(at);
}

void setScalar(const Field& field, char* at, uint64_t bits) {
    if (field.width == 1) {
        set(at, static_cast<uint8_t>(bits));
    } else if (field.width == 2) {
        set(at, static_cast<uint16_t>(bits));
    } else if (field.width == 4) {
        set(at, static_cast<uint32_t>(bits));
    } else {
        set(at, bits);
    }
}

uint64_t getCount(const Type& type, const Field& array, const char* record) {
    const Field& count = type.fields[array.countField];
    return getScalar(count, record + count.offset);
}

long long getSelector(const char* message) {
    return get<uint8_t>(message + offsetof(CSRelayMsgHead, bCmdId));
}

uint32_t clamp(uint32_t cutVer, uint32_t current) {
    if (cutVer == 0) {
        return current;
    }
    return std::min(cutVer, current);
}

const Command* findMember(long long selector) {
    for (const Command& command : schema::commands()) {
        if (command.id == selector) {
            return &command;
        }
    }
    return nullptr;
}

uint32_t bodyVersion() {
    uint32_t latest = schema::BASE_VERSION;
    for (const Command& command : schema::commands()) {
        latest = std::max(latest, command.type->currentVersion);
    }
    return latest;
}

bool isMessage(const Type& type) {
    for (const Field& field : type) {
        if (field.kind == Kind::Union) {
            return true;
        }
    }
    return false;
}

// ---- Pack ----

int32_t packScalar(const Field& field, const char* at, BixWriteBuf& out) {
    if (field.width == 1) {
        return out.writeUInt8(get<uint8_t>(at));
    }
    if (field.width == 2) {
        return out.writeUInt16(get<uint16_t>(at));
    }
    if (field.width == 8) {
        return out.writeUInt64(get<uint64_t>(at));
    }
    return field.isSigned ? out.writeInt32(get<int32_t>(at)) : out.writeUInt32(get<uint32_t>(at));
}

int32_t packString(const Field& field, char* text, BixWriteBuf& out) {
    const size_t prefix = out.getUsedSize();
    int32_t result = out.reserve(4);
    if (result != 0) {
        return result;
    }
    const size_t start = out.getUsedSize();
    text[field.bound - 1] = '\0';
    result = out.writeBytes(text, std::strlen(text) + 1);
    if (result != 0) {
        return result;
    }
    return out.writeUInt32(static_cast<uint32_t>(out.getUsedSize() - start), prefix);
}

int32_t packArray(const Type& type, const Field& field, char* record, BixWriteBuf& out, uint32_t version) {
    const uint64_t count = getCount(type, field, record);
    if (count > field.bound) {
        return BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    char* const first = record + field.offset;
    if (field.kind == Kind::Bytes) {
        return out.writeBytes(first, static_cast<size_t>(count));
    }
    for (size_t i = 0; i < count; ++i) {
        const int32_t result = pack(*field.type, first + i * field.type->size, out, version);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t packField(const Type& type, const Field& field, char* record, BixWriteBuf& out, uint32_t version) {
    char* const at = record + field.offset;
    switch (field.kind) {
    case Kind::Scalar:
        return packScalar(field, at, out);
    case Kind::String:
        return packString(field, at, out);
    case Kind::Record:
        return pack(*field.type, at, out, version);
    case Kind::Union:
        return packBody(getSelector(record), at, out, version);
    case Kind::Bytes:
    case Kind::RecordArray:
        break;
    }
    return packArray(type, field, record, out, version);
}

// ---- Unpack ----

/// Reads by @p read into a value of its own, so that a failed read leaves the record alone.
template <class T, class Read>
int32_t unpackAs(char* at, Read read) {
    T value{};
    const int32_t result = read(value);
    if (result == 0) {
        set(at, value);
    }
    return result;
}

int32_t unpackScalar(const Field& field, char* at, BixReadBuf& in) {
    if (field.width == 1) {
        return unpackAs<uint8_t>(at, [&](uint8_t& value) { return in.readUInt8(value); });
    }
    if (field.width == 2) {
        return unpackAs<uint16_t>(at, [&](uint16_t& value) { return in.readUInt16(value); });
    }
    if (field.width == 8) {
        return unpackAs<uint64_t>(at, [&](uint64_t& value) { return in.readUInt64(value); });
    }
    if (field.isSigned) {
        return unpackAs<int32_t>(at, [&](int32_t& value) { return in.readInt32(value); });
    }
    return unpackAs<uint32_t>(at, [&](uint32_t& value) { return in.readUInt32(value); });
}

int32_t unpackString(const Field& field, char* text, BixReadBuf& in) {
    uint32_t length = 0;
    int32_t result = in.readUInt32(length);
    if (result != 0) {
        return result;
    }
    if (length > in.getLeftSize()) {
        return BIX_ERR_READ_UNDERFLOW;
    }
    if (length > field.bound) {
        return BIX_ERR_STRING_TOO_LONG;
    }
    if (length == 0) {
        return BIX_ERR_STRING_EMPTY;
    }
    result = in.readBytes(text, length);
    if (result != 0) {
        return result;
    }
    if (text[length - 1] != '\0') {
        return BIX_ERR_STRING_MALFORMED;
    }
    return std::strlen(text) + 1 == length ? 0 : BIX_ERR_STRING_MALFORMED;
}

int32_t unpackArray(const Type& type, const Field& field, char* record, BixReadBuf& in, uint32_t version) {
    const uint64_t count = getCount(type, field, record);
    if (count > field.bound) {
        return BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    char* const first = record + field.offset;
    if (field.kind == Kind::Bytes) {
        return in.readBytes(first, static_cast<size_t>(count));
    }
    for (size_t i = 0; i < count; ++i) {
        const int32_t result = unpack(*field.type, first + i * field.type->size, in, version);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t unpackField(const Type& type, const Field& field, char* record, BixReadBuf& in, uint32_t version) {
    char* const at = record + field.offset;
    switch (field.kind) {
    case Kind::Scalar:
        return unpackScalar(field, at, in);
    case Kind::String:
        return unpackString(field, at, in);
    case Kind::Record:
        return unpack(*field.type, at, in, version);
    case Kind::Union:
        return unpackBody(getSelector(record), at, in, version);
    case Kind::Bytes:
    case Kind::RecordArray:
        break;
    }
    return unpackArray(type, field, record, in, version);
}

/// The version in which the message that starts at the cursor was packed.
int32_t peekVersion(const Type& type, BixReadBuf& in, uint32_t& version) {
    uint8_t byte = 0;
    const int32_t result = in.readUInt8(byte, in.getUsedSize() + VERSION_BYTE);
    if (result != 0) {
        return result;
    }
    if (byte < schema::BASE_VERSION || byte > type.currentVersion) {
        return BIX_ERR_VERSION_OUT_OF_RANGE;
    }
    version = byte;
    return 0;
}

// ---- Visualize: one bounded print per piece ----

/// The blanks before a line, but no more than there is room: the print fails all the same.
int blanks(const BixWriteBuf& out, int indent) {
    const uint64_t wanted = indent > 0 ? 2 * static_cast<uint64_t>(indent) : 0;
    return static_cast<int>(std::min<uint64_t>(wanted, out.getTotalSize() - out.getUsedSize()));
}

int nestedIndent(int indent) {
    return indent >= 0 && indent < INT_MAX ? indent + 1 : indent;
}

int32_t printHeader(const char* label, BixWriteBuf& out, int indent, char sep) {
    return out.textize("%*s%s%c", blanks(out, indent), "", label, sep);
}

int32_t printScalar(const Field& field, const char* at, BixWriteBuf& out, int indent, char sep) {
    const int pad = blanks(out, indent);
    if (field.width == 1) {
        return out.textize("%*s%s: 0x%02x%c", pad, "", field.label, get<uint8_t>(at), sep);
    }
    if (field.width == 2) {
        return out.textize("%*s%s: %d%c", pad, "", field.label, get<uint16_t>(at), sep);
    }
    if (field.width == 8) {
        return out.textize("%*s%s: %" PRIu64 "%c", pad, "", field.label, get<uint64_t>(at), sep);
    }
    if (field.isSigned) {
        return out.textize("%*s%s: %d%c", pad, "", field.label, get<int32_t>(at), sep);
    }
    return out.textize("%*s%s: %u%c", pad, "", field.label, get<uint32_t>(at), sep);
}

int32_t printString(const Field& field, const char* text, BixWriteBuf& out, int indent, char sep) {
    // The precision keeps the print inside the array when there is no NUL in it.
    return out.textize("%*s%s: %.*s%c", blanks(out, indent), "", field.label, static_cast<int>(field.bound),
                       text, sep);
}

int32_t printBytes(const Field& field, const char* bytes, uint64_t count, BixWriteBuf& out, int indent,
                   char sep) {
    int32_t result = out.textize("%*s%s(%" PRIu64 "):", blanks(out, indent), "", field.label, count);
    for (size_t i = 0; result == 0 && i < count; ++i) {
        result = out.textize(" 0x%02x", get<uint8_t>(bytes + i));
    }
    return result != 0 ? result : out.writeCharWithNull(sep);
}

int32_t printElements(const Field& field, const char* first, uint64_t count, BixWriteBuf& out, int indent,
                      char sep) {
    for (size_t i = 0; i < count; ++i) {
        int32_t result =
            out.textize("%*s%s[%u]%c", blanks(out, indent), "", field.label, static_cast<unsigned>(i), sep);
        if (result == 0) {
            result = visualize(*field.type, first + i * field.type->size, out, nestedIndent(indent), sep);
        }
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t printField(const Type& type, const Field& field, const char* record, BixWriteBuf& out, int indent,
                   char sep) {
    const char* const at = record + field.offset;
    if (field.kind == Kind::Scalar) {
        return printScalar(field, at, out, indent, sep);
    }
    if (field.kind == Kind::String) {
        return printString(field, at, out, indent, sep);
    }
    if (field.kind == Kind::Record || field.kind == Kind::Union) {
        const int32_t result = printHeader(field.label, out, indent, sep);
        if (result != 0) {
            return result;
        }
        return field.kind == Kind::Record
                   ? visualize(*field.type, at, out, nestedIndent(indent), sep)
                   : visualizeBody(getSelector(record), at, out, nestedIndent(indent), sep);
    }
    const uint64_t count = getCount(type, field, record);
    if (count > field.bound) {
        return BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    return field.kind == Kind::Bytes ? printBytes(field, at, count, out, indent, sep)
                                     : printElements(field, at, count, out, indent, sep);
}

} // namespace

// ---- Records ----

int32_t construct(const Type& type, void* record) {
    for (const Field& field : type) {
        char* const at = static_cast<char*>(record) + field.offset;
        switch (field.kind) {
        case Kind::Scalar:
            setScalar(field, at, field.defaultValue);
            break;
        case Kind::Bytes:
            std::memset(at, 0, field.bound);
            break;
        case Kind::String:
            *at = '\0';
            break;
        case Kind::Record:
        case Kind::RecordArray:
            for (size_t i = 0; i < field.bound; ++i) {
                construct(*field.type, at + i * field.type->size);
            }
            break;
        case Kind::Union:
            constructBody(getSelector(static_cast<const char*>(record)), at);
            break;
        }
    }
    return 0;
}

int32_t pack(const Type& type, void* record, BixWriteBuf& out, uint32_t cutVer) {
    const uint32_t version = clamp(cutVer, type.currentVersion);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    const size_t start = out.getUsedSize();
    for (const Field& field : type) {
        if (version < field.since) {
            continue;
        }
        const int32_t result = packField(type, field, static_cast<char*>(record), out, version);
        if (result != 0) {
            return result;
        }
    }
    return isMessage(type) ? out.writeUInt8(static_cast<uint8_t>(version), start + VERSION_BYTE) : 0;
}

int32_t unpack(const Type& type, void* record, BixReadBuf& in, uint32_t cutVer) {
    uint32_t version = clamp(cutVer, type.currentVersion);
    if (isMessage(type)) {
        const int32_t result = peekVersion(type, in, version);
        if (result != 0) {
            return result;
        }
    }
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    for (const Field& field : type) {
        char* const base = static_cast<char*>(record);
        if (version < field.since) {
            setScalar(field, base + field.offset, field.defaultValue);
            continue;
        }
        const int32_t result = unpackField(type, field, base, in, version);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t visualize(const Type& type, const void* record, BixWriteBuf& out, int indent, char sep) {
    for (const Field& field : type) {
        const int32_t result = printField(type, field, static_cast<const char*>(record), out, indent, sep);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

// ---- The union ----

int32_t constructBody(long long selector, void* body) {
    const Command* member = findMember(selector);
    return member != nullptr ? construct(*member->type, body) : 0;
}

int32_t packBody(long long selector, void* body, BixWriteBuf& out, uint32_t cutVer) {
    const uint32_t version = clamp(cutVer, bodyVersion());
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    const Command* member = findMember(selector);
    return member != nullptr ? pack(*member->type, body, out, version) : 0;
}

int32_t unpackBody(long long selector, void* body, BixReadBuf& in, uint32_t cutVer) {
    const uint32_t version = clamp(cutVer, bodyVersion());
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    const Command* member = findMember(selector);
    return member != nullptr ? unpack(*member->type, body, in, version) : 0;
}

int32_t visualizeBody(long long selector, const void* body, BixWriteBuf& out, int indent, char sep) {
    const Command* member = findMember(selector);
    if (member == nullptr) {
        return 0;
    }
    const int32_t result = printHeader(member->label, out, indent, sep);
    return result != 0 ? result : visualize(*member->type, body, out, nestedIndent(indent), sep);
}

} // namespace cs_relay_msg::plain
