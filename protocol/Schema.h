/// @file
/// The protocol as data: every record type with its fields, and every command, for tools that work on all
/// of them.
///
/// These tables are the protocol's one home: `pack`, `unpack`, `construct` and `visualize` are made from
/// them.
#ifndef KORVAN_PROTOCOL_SCHEMA_H
#define KORVAN_PROTOCOL_SCHEMA_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstddef>
#include <cstdint>

/// The protocol as data.
namespace cs_relay_msg::schema {

struct Type;

/// The oldest version of every type.
inline constexpr uint32_t BASE_VERSION = 1;

/// The version that @p cutVer stands for: itself, or @p currentVersion if it is 0 or above that.
constexpr uint32_t effectiveVersion(uint32_t cutVer, uint32_t currentVersion) noexcept {
    return cutVer == 0 || cutVer > currentVersion ? currentVersion : cutVer;
}

/// What a field is, in memory and on the wire.
enum class Kind : uint8_t {
    Scalar,      ///< one integer, most significant byte first
    Bytes,       ///< an array of bytes: as many as the count field says
    String,      ///< 4 bytes of length, then the text and its NUL, which the length counts
    Record,      ///< one record, its wire form inline
    RecordArray, ///< an array of records: as many as the count field says
    Union,       ///< the member of the body union that the head's command id selects
};

/// One field of a record type.
struct Field {
    const char* name;      ///< the member's name
    const char* label;     ///< the name in square brackets, as it stands in text
    Kind kind;             ///< decides which of the members below have a meaning
    bool isSigned;         ///< Scalar: two's complement
    uint8_t labelLength;   ///< characters in the label
    uint8_t since;         ///< the version that added the field
    int16_t countField;    ///< Bytes, RecordArray: index of the count field in the same record; otherwise -1
    uint32_t offset;       ///< bytes before the field in the record's memory
    uint32_t width;        ///< bytes in memory of the scalar, or of one element of an array or string
    uint32_t bound;        ///< elements of an array, capacity of a string with its NUL; otherwise 1
    uint64_t defaultValue; ///< Scalar: what `construct` sets, and `unpack` where the field is not on the wire
    const Type* type;      ///< Record, RecordArray: the type of the record or element; otherwise null

    /// Bytes in memory.
    constexpr size_t size() const noexcept { return static_cast<size_t>(width) * bound; }

    /// Scalar: the `printf` format of its text; otherwise null.
    constexpr const char* format() const noexcept {
        return kind != Kind::Scalar ? nullptr
               : width == 1         ? "0x%02x"
               : width == 8         ? "%lu"
               : width == 2         ? "%d"
               : isSigned           ? "%d"
                                    : "%u";
    }
};

/// How far an operation got in its buffer, and its result.
struct Progress {
    size_t position; ///< of the cursor
    int32_t result;  ///< the result code
};

/// One record type. The operations are those of Record.h, on a record given by its address.
struct Type {
    const char* name;        ///< as in C++, without the namespace
    size_t size;             ///< bytes in memory
    const Field* fields;     ///< in the order of the wire
    size_t fieldCount;       ///< how many they are
    uint32_t currentVersion; ///< the newest version that the type knows
    bool zeroDefault;        ///< whether `construct` sets every byte of the record to 0

    /// What the operations call: the buffer's fields are given, and come back, in registers.
    /// @{
    int32_t (*construct)(void* record);
    Progress (*packAt)(const void* record, char* begin, size_t position, size_t length, uint32_t cutVer);
    Progress (*unpackAt)(void* record, const char* begin, size_t position, size_t length, uint32_t cutVer);
    Progress (*visualizeAt)(const void* record, char* begin, size_t position, size_t length, int indent,
                            char sep);
    /// @}

    /// The operations of Record.h, at the cursor of @p buffer.
    /// @{
    int32_t pack(const void* record, Korvan::BixWriteBuf& buffer, uint32_t cutVer = 0) const noexcept {
        return done(buffer, packAt(record, buffer.beginPtr, buffer.position, buffer.length, cutVer));
    }
    int32_t unpack(void* record, Korvan::BixReadBuf& buffer, uint32_t cutVer = 0) const noexcept {
        return done(buffer, unpackAt(record, buffer.beginPtr, buffer.position, buffer.length, cutVer));
    }
    int32_t visualize(const void* record, Korvan::BixWriteBuf& buffer, int indent = 0,
                      char sep = '\n') const noexcept {
        return done(buffer,
                    visualizeAt(record, buffer.beginPtr, buffer.position, buffer.length, indent, sep));
    }
    /// @}

    /// The fields, for a loop.
    /// @{
    constexpr const Field* begin() const noexcept { return fields; }
    constexpr const Field* end() const noexcept { return fields + fieldCount; }
    /// @}

    /// The version that @p cutVer stands for.
    constexpr uint32_t effectiveVersion(uint32_t cutVer) const noexcept {
        return schema::effectiveVersion(cutVer, currentVersion);
    }

private:
    template <class Buffer>
    static int32_t done(Buffer& buffer, Progress progress) noexcept {
        buffer.position = progress.position;
        return progress.result;
    }
};

/// One command: a member of the body union and the id that selects it.
struct Command {
    uint8_t id;          ///< as in the head's `bCmdId`
    const char* name;    ///< the union member's name
    const char* label;   ///< the name in square brackets
    uint8_t labelLength; ///< characters in the label
    const Type* type;    ///< the record type of the member
};

/// A table: so many entries one behind the other, constant and always there.
template <class T>
struct Span {
    const T* data; ///< the first entry
    size_t size;   ///< how many they are

    /// The entries, for a loop or by their index.
    /// @{
    constexpr const T* begin() const noexcept { return data; }
    constexpr const T* end() const noexcept { return data + size; }
    constexpr const T& operator[](size_t i) const noexcept { return data[i]; }
    /// @}
};

/// Every record type, `CSRelayMsg` last; a type stands behind those that it contains.
KORVAN_API Span<const Type*> types() noexcept;

/// The record type @p T, one of those in cs_relay_msg.h; another does not link.
template <class T>
KORVAN_API const Type& typeOf() noexcept;

/// The most records that lie inside each other in a message: `CSRelayMsg`, a member, a frame, a datum.
inline constexpr size_t MAX_DEPTH = 4;

/// Which bytes of a message tell its version and its command.
/// @{
inline constexpr size_t VERSION_BYTE = 8;
inline constexpr size_t COMMAND_BYTE = 11;
/// @}

/// Every command in the order of its id.
KORVAN_API Span<Command> commands() noexcept;

/// The command with this id, or null for an id that is not assigned.
KORVAN_API const Command* findCommand(long long id) noexcept;

/// The smallest and the largest number of bytes that a valid record takes on the wire.
struct WireSize {
    size_t min; ///< the smallest
    size_t max; ///< the largest
};

/// The wire size at the version that @p cutVer stands for. A message with an unassigned command id is valid:
/// it is a head alone.
KORVAN_API WireSize wireSize(const Type& type, uint32_t cutVer) noexcept;

} // namespace cs_relay_msg::schema

#endif
