#include "protocol/Plain.h"

#include "protocol/Codec.h"
#include "protocol/Scalar.h"

#include <cstring>

namespace cs_relay_msg::plain {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

/// The count of @p array, or one more than its bound if it is above that.
size_t countOf(const Type& type, const Field& array, const char* record) {
    const uint64_t count = scalar::load(type.fields[array.countField], record);
    return count <= array.bound ? static_cast<size_t>(count) : array.bound + size_t{1};
}

// ---- Pack ----

int32_t packScalar(const Field& field, const char* record, BixWriteBuf& buffer) {
    const uint64_t bits = scalar::load(field, record);
    switch (field.width) {
    case 1:
        return buffer.writeUInt8(static_cast<uint8_t>(bits));
    case 2:
        return buffer.writeUInt16(static_cast<uint16_t>(bits));
    case 4:
        return field.isSigned ? buffer.writeInt32(static_cast<int32_t>(bits))
                              : buffer.writeUInt32(static_cast<uint32_t>(bits));
    default:
        return buffer.writeUInt64(bits);
    }
}

/// Writes the text before its length, for which it leaves room.
int32_t packString(const char* text, size_t capacity, BixWriteBuf& buffer) {
    const size_t start = buffer.getUsedSize();
    if (const int32_t result = buffer.reserve(sizeof(uint32_t))) {
        return result;
    }
    codec::terminate(text, capacity);
    const size_t count = std::strlen(text) + 1;
    if (const int32_t result = buffer.writeBytes(text, count)) {
        return result;
    }
    return buffer.writeUInt32(static_cast<uint32_t>(count), start);
}

int32_t packElements(const Field& field, size_t count, const char* element, BixWriteBuf& buffer,
                     uint32_t version) {
    for (size_t i = 0; i < count; ++i, element += field.width) {
        if (const int32_t result = field.type->pack(element, buffer, version)) {
            return result;
        }
    }
    return Korvan::BIX_OK;
}

int32_t packField(const Type& type, const Field& field, const char* record, BixWriteBuf& buffer,
                  uint32_t version) {
    const char* const member = record + field.offset;
    switch (field.kind) {
    case Kind::Scalar:
        return packScalar(field, record, buffer);
    case Kind::String:
        return packString(member, field.bound, buffer);
    case Kind::Record:
        return packElements(field, 1, member, buffer, version);
    default:
        const size_t count = countOf(type, field, record);
        return count > field.bound         ? Korvan::BIX_ERR_COUNT_OUT_OF_RANGE
               : field.kind == Kind::Bytes ? buffer.writeBytes(member, count)
                                           : packElements(field, count, member, buffer, version);
    }
}

// ---- Unpack ----

/// Reads by @p read. A failed read leaves the record alone.
template <class T>
int32_t unpackAs(const Field& field, char* record, BixReadBuf& buffer, int32_t (BixReadBuf::*read)(T&)) {
    T value = 0;
    const int32_t result = (buffer.*read)(value);
    if (result == Korvan::BIX_OK) {
        scalar::store(field, record, static_cast<uint64_t>(value));
    }
    return result;
}

int32_t unpackScalar(const Field& field, char* record, BixReadBuf& buffer) {
    switch (field.width) {
    case 1:
        return unpackAs<uint8_t>(field, record, buffer, &BixReadBuf::readUInt8);
    case 2:
        return unpackAs<uint16_t>(field, record, buffer, &BixReadBuf::readUInt16);
    case 4:
        return field.isSigned ? unpackAs<int32_t>(field, record, buffer, &BixReadBuf::readInt32)
                              : unpackAs<uint32_t>(field, record, buffer, &BixReadBuf::readUInt32);
    default:
        return unpackAs<uint64_t>(field, record, buffer, &BixReadBuf::readUInt64);
    }
}

/// A text is looked at where it was received. If it is malformed its bytes are stored all the same.
int32_t unpackString(char* text, size_t capacity, BixReadBuf& buffer) {
    uint32_t length = 0;
    if (const int32_t result = buffer.readUInt32(length)) {
        return result;
    }
    if (length > buffer.getLeftSize()) {
        return Korvan::BIX_ERR_READ_UNDERFLOW;
    }
    if (length > capacity) {
        return Korvan::BIX_ERR_STRING_TOO_LONG;
    }
    if (length == 0) {
        return Korvan::BIX_ERR_STRING_EMPTY;
    }
    const char* const received = buffer.beginPtr + buffer.position;
    const bool wellFormed = std::memchr(received, '\0', length) == received + length - 1;
    if (const int32_t result = buffer.readBytes(text, length)) {
        return result;
    }
    return wellFormed ? Korvan::BIX_OK : Korvan::BIX_ERR_STRING_MALFORMED;
}

int32_t unpackElements(const Field& field, size_t count, char* element, BixReadBuf& buffer,
                       uint32_t version) {
    for (size_t i = 0; i < count; ++i, element += field.width) {
        if (const int32_t result = field.type->unpack(element, buffer, version)) {
            return result;
        }
    }
    return Korvan::BIX_OK;
}

int32_t unpackField(const Type& type, const Field& field, char* record, BixReadBuf& buffer,
                    uint32_t version) {
    char* const member = record + field.offset;
    switch (field.kind) {
    case Kind::Scalar:
        return unpackScalar(field, record, buffer);
    case Kind::String:
        return unpackString(member, field.bound, buffer);
    case Kind::Record:
        return unpackElements(field, 1, member, buffer, version);
    default:
        const size_t count = countOf(type, field, record);
        return count > field.bound         ? Korvan::BIX_ERR_COUNT_OUT_OF_RANGE
               : field.kind == Kind::Bytes ? buffer.readBytes(member, count)
                                           : unpackElements(field, count, member, buffer, version);
    }
}

} // namespace

int32_t pack(const Type& type, const char* record, BixWriteBuf& buffer, uint32_t version) noexcept {
    for (const Field& field : type) {
        if (version >= field.since) {
            if (const int32_t result = packField(type, field, record, buffer, version)) {
                return result;
            }
        }
    }
    return Korvan::BIX_OK;
}

int32_t unpack(const Type& type, char* record, BixReadBuf& buffer, uint32_t version) noexcept {
    for (const Field& field : type) {
        if (version >= field.since) {
            if (const int32_t result = unpackField(type, field, record, buffer, version)) {
                return result;
            }
        } else if (field.kind == Kind::Scalar) {
            scalar::store(field, record, field.defaultValue);
        }
    }
    return Korvan::BIX_OK;
}

} // namespace cs_relay_msg::plain
