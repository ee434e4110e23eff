/// @file
/// Bytes as hexadecimal digits, two each.
#ifndef KORVAN_TOOLS_RELAYMSG_HEX_DIGITS_H
#define KORVAN_TOOLS_RELAYMSG_HEX_DIGITS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace relaymsg {

/// The value of a digit; negative if it is none.
constexpr int digitValue(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

inline void appendHex(std::string& to, std::string_view bytes) {
    constexpr char DIGITS[] = "0123456789abcdef";
    for (const char byte : bytes) {
        to += DIGITS[static_cast<uint8_t>(byte) >> 4];
        to += DIGITS[static_cast<uint8_t>(byte) & 15];
    }
}

/// Puts the bytes that @p digits stand for to @p bytes; false if these are not pairs of digits.
inline bool parseHex(std::string_view digits, std::string& bytes) {
    bytes.clear();
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        const int high = digitValue(digits[i]);
        const int low = digitValue(digits[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes += static_cast<char>(static_cast<unsigned char>(high << 4 | low));
    }
    return digits.size() % 2 == 0;
}

} // namespace relaymsg

#endif
