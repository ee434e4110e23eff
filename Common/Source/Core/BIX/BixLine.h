/// @file
/// Private: the line writer behind the text-dump helpers, for callers that know the type of the value and the
/// length of the label. What each function writes, and what it leaves after -1, is told in BixBufUtil.h.
#ifndef KORVAN_BIX_LINE_H
#define KORVAN_BIX_LINE_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstddef>
#include <cstdint>

namespace Korvan::detail {

/// What every line needs: where it goes and how it begins and ends.
struct Line {
    BixWriteBuf& buf;
    int indent;
    char sep;
    const char* label;
    size_t labelLength;
};

int32_t headerLine(const Line& line, bool closed) noexcept;
int32_t elementLine(const Line& line, uint32_t index, bool closed) noexcept;
int32_t hexLine(const Line& line, uint32_t value) noexcept;      ///< as "0x%02x" prints it
int32_t signedLine(const Line& line, int64_t value) noexcept;    ///< as "%d" prints it
int32_t unsignedLine(const Line& line, uint64_t value) noexcept; ///< as "%u" and "%lu" print it
int32_t textLine(const Line& line, const char* text, size_t length) noexcept;
int32_t arrayOpening(const Line& line, int64_t count) noexcept;

/// Appends the items of a byte array, each as " 0x%02x" prints it and each a piece of text of its own: after
/// -1 the cursor stands behind the last byte that fitted.
int32_t byteItems(BixWriteBuf& buf, const uint8_t* bytes, size_t count) noexcept;

} // namespace Korvan::detail

#endif
