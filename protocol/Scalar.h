/// @file
/// Private: an integer field of a record, by its line in the table.
#ifndef KORVAN_PROTOCOL_SCALAR_H
#define KORVAN_PROTOCOL_SCALAR_H

#include "protocol/Schema.h"

#include <cstdint>
#include <cstring>

namespace cs_relay_msg::scalar {

template <class T>
uint64_t loadAs(const char* from) noexcept {
    T value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

template <class T>
void storeAs(char* to, uint64_t bits) noexcept {
    const T value = static_cast<T>(bits);
    std::memcpy(to, &value, sizeof(value));
}

/// The bits of the field.
inline uint64_t load(const schema::Field& field, const char* record) noexcept {
    const char* const from = record + field.offset;
    switch (field.width) {
    case 1:
        return loadAs<uint8_t>(from);
    case 2:
        return loadAs<uint16_t>(from);
    case 4:
        return loadAs<uint32_t>(from);
    default:
        return loadAs<uint64_t>(from);
    }
}

/// Sets the field to the low bits of @p value.
inline void store(const schema::Field& field, char* record, uint64_t value) noexcept {
    char* const to = record + field.offset;
    switch (field.width) {
    case 1:
        return storeAs<uint8_t>(to, value);
    case 2:
        return storeAs<uint16_t>(to, value);
    case 4:
        return storeAs<uint32_t>(to, value);
    default:
        return storeAs<uint64_t>(to, value);
    }
}

} // namespace cs_relay_msg::scalar

#endif
