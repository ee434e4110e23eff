/// @file
/// The text-dump helpers: one line of text per field, appended to a write buffer.
///
/// The shape of a line is an interface, since people search their logs with it:
///
///     [dwUserID]: 1001                  a value, or a string
///     [stHead]                          a header: the lines of the record follow, one level deeper
///     [astRelayData][0]                 the header of one element
///     [szRelayBuf](3): 0x0a 0x0b 0x0c   a byte array; printArray writes it up to the colon
///
/// Each level of indentation is two blanks; a negative level is none. Every line ends with the separator and
/// nothing else, except the opening of a byte array. The separator may be any character, NUL included.
///
/// Every helper returns 0, or -1 (`BIX_ERR_WRITE_OVERFLOW`) if its text and a NUL do not fit. The NUL is left
/// behind the text and does not count as written. After -1 the cursor stands where the text would have begun,
/// and what room there is holds the truncated text and a NUL.
#ifndef KORVAN_BIX_BUF_UTIL_H
#define KORVAN_BIX_BUF_UTIL_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstdint>

/// The text-dump helpers: one line of text per field.
namespace Korvan::BixBufUtil {

/// Writes a value line: indentation, label, value, separator.
///
/// @param indent the indentation level
/// @param sep the character that ends the line
/// @param label the field's name in square brackets, NUL-terminated
/// @param format a `printf` format for the one value that follows. "%lu" stands for a 64-bit unsigned value
///        (`uint64_t`) on every platform, also where `unsigned long` has 32 bits.
KORVAN_API int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label,
                                 const char* format, ...) noexcept;

/// Writes the header line of a nested record. With @p flag false the separator is left out.
KORVAN_API int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label,
                                 bool flag) noexcept;

/// Writes the header line of element @p index of a record array. With @p flag false the separator is left
/// out.
KORVAN_API int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, uint32_t index,
                                 bool flag) noexcept;

/// Writes a value line whose value is the NUL-terminated text @p value, byte for byte.
KORVAN_API int32_t printString(BixWriteBuf& buf, int indent, char sep, const char* label,
                               const char* value) noexcept;

/// Opens the line of a byte array of @p count bytes. The caller appends each byte with `textize(" 0x%02x",
/// byte)` and closes the line with `writeCharWithNull(sep)`.
KORVAN_API int32_t printArray(BixWriteBuf& buf, int indent, char sep, const char* label,
                              int64_t count) noexcept;

} // namespace Korvan::BixBufUtil

#endif
