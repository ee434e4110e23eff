/// @file
/// The nine operations that every record type offers.
#ifndef KORVAN_PROTOCOL_RECORD_H
#define KORVAN_PROTOCOL_RECORD_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstddef>
#include <cstdint>

/// On every record type: its members are exported, and its fields lie back to back.
#define KORVAN_RECORD KORVAN_API KORVAN_PACKED

/// The relay protocol: its records, its commands, and what works on them.
namespace cs_relay_msg {

// The result codes, by their bare names.
using Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
using Korvan::BIX_ERR_NULL_ARGUMENT;
using Korvan::BIX_ERR_NULL_POINTER;
using Korvan::BIX_ERR_READ_UNDERFLOW;
using Korvan::BIX_ERR_STRING_EMPTY;
using Korvan::BIX_ERR_STRING_MALFORMED;
using Korvan::BIX_ERR_STRING_TOO_LONG;
using Korvan::BIX_ERR_VERSION_FIELD_CUT;
using Korvan::BIX_ERR_VERSION_OUT_OF_RANGE;
using Korvan::BIX_ERR_VERSION_TOO_OLD;
using Korvan::BIX_ERR_WRITE_OVERFLOW;
using Korvan::BIX_OK;

/// The nine operations of the record type @p T, which derives from `Record<T>`.
///
/// A record is a plain struct: no constructor, no padding, every array at its full capacity inside the
/// record, only the counted part of it on the wire. The operations work on the record and on the buffer
/// given, keep no state, allocate nothing and throw nothing. All return a result code (BixResult.h), except
/// `visualize_ex`.
///
/// What is common to all of them:
///
/// - The first step that fails ends the operation with its code. Nothing is undone: bytes already written
///   stay in the buffer and fields already read stay in the record.
/// - Where an operation takes a plain buffer, a null @p buffer gives -19 (`BIX_ERR_NULL_ARGUMENT`) and leaves
///   @p usedSize alone. Otherwise @p usedSize, unless null, receives the number of bytes used, on success and
///   on failure: after a failure it tells how far the operation got. All sizes are in bytes. A size of 0 is
///   not refused as such; the first write or read then fails.
/// - The overload over a `BixWriteBuf` or `BixReadBuf` goes on at that buffer's cursor and advances it.
/// - @p cutVer is the version to pack or unpack for. 0, and any version above the type's current one, stand
///   for the current one. A field added in a later version than @p cutVer is not on the wire. A record
///   contained in this one is handled at the same version, or at its own current one if that is lower.
template <class T>
struct KORVAN_API Record {
    /// Sets every field to its default, over the whole capacity of byte arrays and record arrays. A string
    /// becomes empty: its first character becomes NUL, the others stay as they were.
    ///
    /// @return always 0
    int32_t construct() noexcept;

    /// Writes the record's wire form to @p buffer, in field order, integers most significant byte first.
    ///
    /// Reads the record only, but for one byte per string: if the last character of a string's array is not
    /// NUL, it becomes NUL in the record, and the text on the wire is cut to capacity - 1 characters. A
    /// record whose string arrays all have a NUL in their last character is not written to at all.
    ///
    /// No byte at or behind the used size is written.
    ///
    /// @return 0; -1 (`BIX_ERR_WRITE_OVERFLOW`) if the next field does not fit; -7
    ///         (`BIX_ERR_COUNT_OUT_OF_RANGE`) if a count, which is then already written, is above the bound
    ///         of its array; -19 as above; -9 (`BIX_ERR_VERSION_TOO_OLD`) if @p cutVer is below the type's
    ///         oldest version, which no @p cutVer is in this protocol.
    int32_t pack(char* buffer, size_t size, size_t* usedSize = nullptr, uint32_t cutVer = 0) const noexcept;
    /// The same at the cursor of @p buffer.
    int32_t pack(Korvan::BixWriteBuf& buffer, uint32_t cutVer = 0) const noexcept;

    /// Fills the record from its wire form at the start of @p buffer; bytes behind that form are not
    /// looked at.
    ///
    /// The caller says with @p cutVer which version the bytes have, since a record does not carry it; only
    /// `CSRelayMsg` does. A field that this version does not have gets its default. Array elements behind the
    /// counted ones, and the characters behind a string's NUL, stay as they were.
    ///
    /// @return 0; -2 (`BIX_ERR_READ_UNDERFLOW`) if the bytes end before the field, or before the end of a
    ///         string; -3 (`BIX_ERR_STRING_TOO_LONG`) if a string's length is above its capacity; -4
    ///         (`BIX_ERR_STRING_EMPTY`) if it is 0; -5 (`BIX_ERR_STRING_MALFORMED`) if the string does not
    ///         end in NUL or holds a NUL earlier: its bytes are then in the field all the same; -7
    ///         (`BIX_ERR_COUNT_OUT_OF_RANGE`) if a count, which is then already in the record, is above the
    ///         bound of its array; -9 as for `pack`; -19 as above.
    int32_t unpack(const char* buffer, size_t size, size_t* usedSize = nullptr, uint32_t cutVer = 0) noexcept;
    /// The same at the cursor of @p buffer.
    int32_t unpack(Korvan::BixReadBuf& buffer, uint32_t cutVer = 0) noexcept;

    /// Writes the record as text, one line per field in field order, in the shape that BixBufUtil.h shows.
    /// All fields are written, whatever version the record came from. A NUL is left behind the text and does
    /// not count as used. A string is rendered up to its first NUL, and never beyond its array.
    ///
    /// @param indent the indentation level, two blanks each; contained records are rendered one level
    ///        deeper. A negative level means no indentation, for contained records too.
    /// @param sep the character that ends each line
    /// @return 0; -1 (`BIX_ERR_WRITE_OVERFLOW`) if a line and the NUL behind it do not fit: the text before
    ///         that line stays, and behind it the line stands as far as there was room, followed by a NUL; -7
    ///         (`BIX_ERR_COUNT_OUT_OF_RANGE`) if a count, whose line is then already written, is above the
    ///         bound of its array; -19 as above.
    int32_t visualize(char* buffer, size_t size, size_t* usedSize = nullptr, int indent = 0,
                      char sep = '\n') const noexcept;
    /// The same at the cursor of @p buffer.
    int32_t visualize(Korvan::BixWriteBuf& buffer, int indent = 0, char sep = '\n') const noexcept;

    /// Writes the record as `visualize` does, drops its result, and returns the text, always NUL-terminated.
    ///
    /// A text that did not fit ends where the line that did not fit would have begun. Over a `BixWriteBuf`
    /// the text returned begins at the start of the whole buffer, so it includes what the buffer held before.
    ///
    /// @return @p buffer, or the memory of the `BixWriteBuf`; an empty text, which is not in the buffer, if
    ///         there is no buffer or if its size is 0. @p usedSize is then left alone.
    const char* visualize_ex(char* buffer, size_t size, size_t* usedSize = nullptr, int indent = 0,
                             char sep = '\n') const noexcept;
    /// The same at the cursor of @p buffer.
    const char* visualize_ex(Korvan::BixWriteBuf& buffer, int indent = 0, char sep = '\n') const noexcept;
};

} // namespace cs_relay_msg

#endif
