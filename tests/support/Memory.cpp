#include "tests/support/Memory.h"

#include <cstring>

namespace tests {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

namespace {

template <class T>
uint64_t loadAs(const char* at) {
    T value;
    std::memcpy(&value, at, sizeof(value));
    return value;
}

template <class T>
void storeAs(char* at, uint64_t bits) {
    const T value = static_cast<T>(bits);
    std::memcpy(at, &value, sizeof(value));
}

unsigned unsignedByte(char byte) {
    return static_cast<unsigned char>(byte);
}

} // namespace

uint64_t loadScalar(const Field& field, const char* at) {
    switch (field.width) {
    case 1:
        return loadAs<uint8_t>(at);
    case 2:
        return loadAs<uint16_t>(at);
    case 4:
        return loadAs<uint32_t>(at);
    default:
        return loadAs<uint64_t>(at);
    }
}

void storeScalar(const Field& field, char* at, uint64_t bits) {
    switch (field.width) {
    case 1:
        return storeAs<uint8_t>(at, bits);
    case 2:
        return storeAs<uint16_t>(at, bits);
    case 4:
        return storeAs<uint32_t>(at, bits);
    default:
        return storeAs<uint64_t>(at, bits);
    }
}

uint64_t largestValue(const Field& field) {
    return UINT64_MAX >> (64 - 8 * field.width);
}

void storeBigEndian(char* at, uint64_t bits, size_t width) {
    for (size_t i = 0; i < width; ++i) {
        at[i] = static_cast<char>(bits >> (8 * (width - 1 - i)) & 0xFF);
    }
}

bool isMessage(const Type& type) {
    for (const Field& field : type) {
        if (field.kind == Kind::Union) {
            return true;
        }
    }
    return false;
}

::testing::AssertionResult sameBytes(const char* a, const char* b, size_t size) {
    if (size == 0 || std::memcmp(a, b, size) == 0) {
        return ::testing::AssertionSuccess();
    }
    size_t first = 0;
    while (a[first] == b[first]) {
        ++first;
    }
    return ::testing::AssertionFailure()
           << "byte " << first << " of " << size << " is " << unsignedByte(a[first]) << " on one side and "
           << unsignedByte(b[first]) << " on the other";
}

::testing::AssertionResult allBytes(const char* bytes, size_t size, char value) {
    for (size_t i = 0; i < size; ++i) {
        if (bytes[i] != value) {
            return ::testing::AssertionFailure()
                   << "byte " << i << " of " << size << " is " << unsignedByte(bytes[i]);
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace tests
