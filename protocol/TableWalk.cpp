#include "protocol/TableWalk.h"

#include "Common/Source/Core/BIX/BixLine.h"

#include <climits>
#include <cstring>

namespace cs_relay_msg::walk {

namespace {

using Korvan::BixWriteBuf;
using namespace Korvan::detail;
using schema::Field;
using schema::Kind;
using schema::Type;

template <class T>
T load(const char* from) {
    T value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

uint64_t loadScalar(const Field& field, const char* record) {
    const char* const from = record + field.offset;
    switch (field.width) {
    case 1:
        return load<uint8_t>(from);
    case 2:
        return load<uint16_t>(from);
    case 4:
        return load<uint32_t>(from);
    default:
        return load<uint64_t>(from);
    }
}

template <class T>
void store(char* to, uint64_t bits) {
    const T value = static_cast<T>(bits);
    std::memcpy(to, &value, sizeof(value));
}

void storeDefault(const Field& field, char* to) {
    switch (field.width) {
    case 1:
        return store<uint8_t>(to, field.defaultValue);
    case 2:
        return store<uint16_t>(to, field.defaultValue);
    case 4:
        return store<uint32_t>(to, field.defaultValue);
    default:
        return store<uint64_t>(to, field.defaultValue);
    }
}

int32_t visualizeScalar(const Field& field, const char* record, const Line& line) {
    const uint64_t bits = loadScalar(field, record);
    if (field.width == 1) {
        return hexLine(line, static_cast<uint32_t>(bits));
    }
    if (field.isSigned) {
        return signedLine(line, static_cast<int32_t>(bits));
    }
    return unsignedLine(line, bits);
}

int32_t visualizeBytes(const char* bytes, uint64_t count, const Line& line) {
    if (const int32_t result = arrayOpening(line, static_cast<int64_t>(count))) {
        return result;
    }
    const auto* items = reinterpret_cast<const uint8_t*>(bytes);
    if (const int32_t result = byteItems(line.buf, items, static_cast<size_t>(count))) {
        return result;
    }
    return line.buf.writeCharWithNull(line.sep);
}

int32_t visualizeString(const Field& field, const char* text, const Line& line) {
    const void* end = std::memchr(text, '\0', field.bound);
    const size_t length =
        end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : field.bound;
    return textLine(line, text, length);
}

int32_t visualizeElements(const Field& field, const char* elements, uint64_t count, const Line& line) {
    for (uint32_t i = 0; i < count; ++i) {
        if (const int32_t result = elementLine(line, i, true)) {
            return result;
        }
        const char* const element = elements + static_cast<size_t>(i) * field.width;
        if (const int32_t result = visualize(*field.type, element, line.buf, deeper(line.indent), line.sep)) {
            return result;
        }
    }
    return Korvan::BIX_OK;
}

int32_t visualizeField(const Type& type, const Field& field, const char* record, const Line& line) {
    const char* const member = record + field.offset;
    if (field.kind == Kind::Scalar) {
        return visualizeScalar(field, record, line);
    }
    if (field.kind == Kind::String) {
        return visualizeString(field, member, line);
    }
    if (field.kind == Kind::Record) {
        if (const int32_t result = headerLine(line, true)) {
            return result;
        }
        return visualize(*field.type, member, line.buf, deeper(line.indent), line.sep);
    }
    const uint64_t count = loadScalar(type.fields[field.countField], record);
    if (count > field.bound) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    return field.kind == Kind::Bytes ? visualizeBytes(member, count, line)
                                     : visualizeElements(field, member, count, line);
}

} // namespace

int deeper(int indent) noexcept {
    return indent < 0 || indent == INT_MAX ? indent : indent + 1;
}

void construct(const Type& type, char* record) noexcept {
    if (type.zeroDefault) {
        std::memset(record, 0, type.size);
        return;
    }
    for (const Field& field : type) {
        char* const member = record + field.offset;
        if (field.kind == Kind::Scalar) {
            storeDefault(field, member);
        } else if (field.kind == Kind::String) {
            *member = '\0';
        } else if (field.kind == Kind::Bytes) {
            std::memset(member, 0, field.size());
        } else {
            for (size_t i = 0; i < field.bound; ++i) {
                construct(*field.type, member + i * field.width);
            }
        }
    }
}

int32_t visualize(const Type& type, const char* record, BixWriteBuf& buffer, int indent, char sep) noexcept {
    for (const Field& field : type) {
        const Line line{buffer, indent, sep, field.label, field.labelLength};
        if (const int32_t result = visualizeField(type, field, record, line)) {
            return result;
        }
    }
    return Korvan::BIX_OK;
}

int32_t visualizeHeader(const char* label, size_t labelLength, BixWriteBuf& buffer, int indent,
                        char sep) noexcept {
    return headerLine(Line{buffer, indent, sep, label, labelLength}, true);
}

} // namespace cs_relay_msg::walk
