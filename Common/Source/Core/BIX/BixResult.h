/// @file
/// The result codes: what every operation of the library returns.
#ifndef KORVAN_BIX_RESULT_H
#define KORVAN_BIX_RESULT_H

#include <cstdint>

/// What knows nothing of the protocol: buffers, text lines, result codes.
namespace Korvan {

/// Success. Every failure is one of the negative codes below; no other value is ever returned.
inline constexpr int32_t BIX_OK = 0;

/// A failure; `BIX_RESULTS` says of which kind.
/// @{
inline constexpr int32_t BIX_ERR_WRITE_OVERFLOW = -1;
inline constexpr int32_t BIX_ERR_READ_UNDERFLOW = -2;
inline constexpr int32_t BIX_ERR_STRING_TOO_LONG = -3;
inline constexpr int32_t BIX_ERR_STRING_EMPTY = -4;
inline constexpr int32_t BIX_ERR_STRING_MALFORMED = -5;
inline constexpr int32_t BIX_ERR_COUNT_OUT_OF_RANGE = -7;
inline constexpr int32_t BIX_ERR_NULL_POINTER = -8;
inline constexpr int32_t BIX_ERR_VERSION_TOO_OLD = -9;
inline constexpr int32_t BIX_ERR_VERSION_FIELD_CUT = -10;
inline constexpr int32_t BIX_ERR_NULL_ARGUMENT = -19;
inline constexpr int32_t BIX_ERR_VERSION_OUT_OF_RANGE = -20;
/// @}

/// One result code with the words for it.
struct BixResult {
    int32_t code;         ///< the constant's value
    const char* name;     ///< the constant's name
    const char* sentence; ///< what happened, in one sentence
};

/// Every code that the library returns, success first.
inline constexpr BixResult BIX_RESULTS[] = {
    {BIX_OK, "BIX_OK", "The operation succeeded."},
    {BIX_ERR_WRITE_OVERFLOW, "BIX_ERR_WRITE_OVERFLOW",
     "The bytes or the text do not fit into the room left in the output buffer."},
    {BIX_ERR_READ_UNDERFLOW, "BIX_ERR_READ_UNDERFLOW",
     "The input ends before the field that was being read."},
    {BIX_ERR_STRING_TOO_LONG, "BIX_ERR_STRING_TOO_LONG",
     "A received string is longer than its field can hold."},
    {BIX_ERR_STRING_EMPTY, "BIX_ERR_STRING_EMPTY",
     "A received string has length 0, which leaves no room for its terminating NUL."},
    {BIX_ERR_STRING_MALFORMED, "BIX_ERR_STRING_MALFORMED",
     "A received string does not end in NUL, or holds a NUL before its last byte."},
    {BIX_ERR_COUNT_OUT_OF_RANGE, "BIX_ERR_COUNT_OUT_OF_RANGE",
     "A count field is larger than the bound of the array that it sizes."},
    {BIX_ERR_NULL_POINTER, "BIX_ERR_NULL_POINTER",
     "A null pointer was given as the source or target of bytes."},
    {BIX_ERR_VERSION_TOO_OLD, "BIX_ERR_VERSION_TOO_OLD", "The version asked for is older than the type."},
    {BIX_ERR_VERSION_FIELD_CUT, "BIX_ERR_VERSION_FIELD_CUT",
     "The version asked for is older than the message's version byte."},
    {BIX_ERR_NULL_ARGUMENT, "BIX_ERR_NULL_ARGUMENT", "The buffer given is a null pointer."},
    {BIX_ERR_VERSION_OUT_OF_RANGE, "BIX_ERR_VERSION_OUT_OF_RANGE",
     "The version byte of a received message is not one of 1, 2 or 3."},
};

/// The entry for @p code, or a null pointer for a value that the library never returns.
constexpr const BixResult* findResult(int32_t code) noexcept {
    for (const BixResult& result : BIX_RESULTS) {
        if (result.code == code) {
            return &result;
        }
    }
    return nullptr;
}

/// The name of a code, such as "BIX_ERR_STRING_EMPTY"; "BIX_ERR_UNKNOWN" for a value never returned.
constexpr const char* resultName(int32_t code) noexcept {
    const BixResult* result = findResult(code);
    return result != nullptr ? result->name : "BIX_ERR_UNKNOWN";
}

/// One sentence that says what the code means.
constexpr const char* resultSentence(int32_t code) noexcept {
    const BixResult* result = findResult(code);
    return result != nullptr ? result->sentence : "This is no result code of this library.";
}

} // namespace Korvan

#endif
