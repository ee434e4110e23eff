/// @file
/// Bytes as tests write and read them: typed in hex, printed in hex.
#ifndef KORVAN_TESTS_BYTES_H
#define KORVAN_TESTS_BYTES_H

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>

namespace korvan_test {

/// A run of bytes that GoogleTest prints in hex.
struct Bytes : std::string {
    using std::string::string;
    Bytes(const std::string& bytes) : std::string(bytes) {}
};

inline void PrintTo(const Bytes& bytes, std::ostream* out) {
    *out << bytes.size() << " bytes";
    for (const char byte : bytes) {
        char text[4];
        std::snprintf(text, sizeof(text), " %02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        *out << text;
    }
}

/// The bytes whose hexadecimal digits stand in @p text; anything that is no digit separates nothing.
inline Bytes hex(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c)) != 0) {
            digits += c;
        }
    }
    Bytes bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

/// A record on the heap with every byte set to @p fill. Records can be large; keep them off the stack.
template <class T>
std::unique_ptr<T> filled(char fill) {
    static_assert(std::is_trivially_copyable_v<T>);
    auto record = std::make_unique<T>();
    auto* bytes = reinterpret_cast<char*>(record.get());
    for (size_t i = 0; i < sizeof(T); ++i) {
        bytes[i] = fill;
    }
    return record;
}

/// A record with its defaults. All bytes that `construct` leaves alone are 0.
template <class T>
std::unique_ptr<T> constructed() {
    auto record = std::make_unique<T>();
    record->construct();
    return record;
}

/// A record's memory.
template <class T>
Bytes image(const T& record) {
    return Bytes(std::string(reinterpret_cast<const char*>(&record), sizeof(T)));
}

/// What `pack` or another operation over a plain buffer gave: its result and the bytes it used.
struct Outcome {
    int32_t result;
    Bytes bytes;

    bool operator==(const Outcome& other) const { return result == other.result && bytes == other.bytes; }
};

inline void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << "result " << outcome.result << ", ";
    PrintTo(outcome.bytes, out);
}

/// Packs into @p room bytes; by default more than any test record needs.
template <class T>
Outcome packed(const T& record, uint32_t cutVer = 0, size_t room = T::maxWireSize + 16) {
    Bytes buffer(std::string(room + 1, '\x5a')); // never a null or empty string's storage
    size_t used = 0;
    const int32_t result = record.pack(buffer.data(), room, &used, cutVer);
    buffer.resize(used);
    return {result, buffer};
}

/// Unpacks and tells the result; @p used receives the bytes consumed.
template <class T>
int32_t unpacked(T& record, const std::string& wire, uint32_t cutVer = 0, size_t* used = nullptr) {
    return record.unpack(wire.data(), wire.size(), used, cutVer);
}

/// The text of a record that is known to fit.
template <class T>
std::string text(const T& record, int indent = 0, char sep = '\n') {
    std::string buffer(1 << 16, '\0');
    size_t used = 0;
    const int32_t result = record.visualize(buffer.data(), buffer.size(), &used, indent, sep);
    buffer.resize(used);
    return result == 0 ? buffer : "failed with " + std::to_string(result) + " after: " + buffer;
}

} // namespace korvan_test

#endif
