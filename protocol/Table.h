/// @file
/// Private: how a record's table is written, one line per field, and the proofs that table and struct agree.
///
///     KORVAN_TABLE(CSRelayFrame,
///                  FIELD(dwFrameId),
///                  FIELD(bCount),
///                  COUNTED(astRelayData, bCount),
///                  FIELD(dwLastHasDataFrameId).addedIn(3))
///
/// Only what the member's C++ type cannot say is written: the count field, the version, a default that is not
/// 0. A field that is forgotten, doubled, swapped or of a type that its name denies does not compile.
#ifndef KORVAN_PROTOCOL_TABLE_H
#define KORVAN_PROTOCOL_TABLE_H

#include "protocol/Schema.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace cs_relay_msg::table {

using schema::Command;
using schema::Field;
using schema::Kind;
using schema::Span;
using schema::Type;
using schema::WireSize;

/// The table of @p T: its name and its fields. KORVAN_TABLE specialises it.
template <class T>
struct Table;

constexpr size_t NO_COUNT = static_cast<size_t>(-1);

/// One line of a table: the field, and where in the record its count field lies.
struct Line {
    Field field;
    size_t countOffset;

    constexpr Line addedIn(uint8_t version) const {
        Line line = *this;
        line.field.since = version;
        return line;
    }
    constexpr Line startsAt(uint64_t value) const {
        Line line = *this;
        line.field.defaultValue = value;
        return line;
    }
};

// ---- What is derived from the fields ----

constexpr uint32_t maximum(uint32_t a, uint32_t b) {
    return a < b ? b : a;
}

/// Asked of the kind: with a sanitizer g++ does not know of an address whether it is null.
constexpr bool holdsRecords(const Field& field) {
    return field.kind == Kind::Record || field.kind == Kind::RecordArray;
}

constexpr uint32_t latestVersion(Span<Command> members) {
    uint32_t latest = schema::BASE_VERSION;
    for (const Command& member : members) {
        latest = maximum(latest, member.type->currentVersion);
    }
    return latest;
}

constexpr uint32_t latestVersion(Span<Field> fields, Span<Command> members) {
    uint32_t latest = schema::BASE_VERSION;
    for (const Field& field : fields) {
        latest = maximum(latest, field.since);
        if (holdsRecords(field)) {
            latest = maximum(latest, field.type->currentVersion);
        }
        if (field.kind == Kind::Union) {
            latest = maximum(latest, latestVersion(members));
        }
    }
    return latest;
}

constexpr bool allDefaultsZero(Span<Field> fields) {
    for (const Field& field : fields) {
        const bool zero = field.kind == Kind::Scalar  ? field.defaultValue == 0
                          : field.kind == Kind::Bytes ? true
                          : holdsRecords(field)       ? field.type->zeroDefault
                                                      : false;
        if (!zero) {
            return false;
        }
    }
    return true;
}

constexpr WireSize wireSize(const Type& type, uint32_t cutVer, Span<Command> members);

constexpr WireSize wireSize(const Field& field, uint32_t version, Span<Command> members) {
    switch (field.kind) {
    case Kind::Scalar:
        return {field.width, field.width};
    case Kind::Bytes:
        return {0, field.bound};
    case Kind::String:
        return {sizeof(uint32_t) + 1, sizeof(uint32_t) + field.bound};
    case Kind::Record:
        return wireSize(*field.type, version, members);
    case Kind::RecordArray:
        return {0, field.bound * wireSize(*field.type, version, members).max};
    case Kind::Union:
        break;
    }
    WireSize size{0, 0}; // an unassigned command has no body
    for (const Command& member : members) {
        const size_t max = wireSize(*member.type, version, members).max;
        size.max = size.max < max ? max : size.max;
    }
    return size;
}

constexpr WireSize wireSize(const Type& type, uint32_t cutVer, Span<Command> members) {
    const uint32_t version = type.effectiveVersion(cutVer);
    WireSize size{0, 0};
    for (const Field& field : type) {
        if (version >= field.since) {
            const WireSize part = wireSize(field, version, members);
            size.min += part.min;
            size.max += part.max;
        }
    }
    return size;
}

// ---- Proofs ----

/// Whether the lines lie back to back, in order, from the first byte of the struct to the last.
constexpr bool tiles(Span<Field> fields, size_t size) {
    size_t end = 0;
    for (const Field& field : fields) {
        if (field.offset != end) {
            return false;
        }
        end += field.size();
    }
    return end == size;
}

/// Whether bytes and record arrays, and they alone, have a count field, an unsigned integer right before
/// them: so who takes a message byte by byte knows at once when the count is too large, and remembers no
/// integer but the last.
constexpr bool countsAgree(Span<Field> fields) {
    for (const Field& field : fields) {
        if ((field.kind == Kind::Bytes || field.kind == Kind::RecordArray) != (field.countField >= 0)) {
            return false;
        }
        if (field.countField >= 0) {
            const Field& count = fields[static_cast<size_t>(field.countField)];
            if (count.kind != Kind::Scalar || count.isSigned || count.since != field.since) {
                return false;
            }
        }
    }
    return true;
}

/// Whether only scalars were added in a later version: `unpack` must give an absent field its default.
constexpr bool gatesAgree(Span<Field> fields) {
    for (const Field& field : fields) {
        if (field.since != schema::BASE_VERSION && field.kind != Kind::Scalar) {
            return false;
        }
    }
    return true;
}

/// Whether the name begins with exactly this prefix, which ends before the first capital letter.
constexpr bool hasPrefix(const char* name, const char* prefix) {
    while (*prefix != '\0' && *name == *prefix) {
        ++name;
        ++prefix;
    }
    return *prefix == '\0' && *name >= 'A' && *name <= 'Z';
}

constexpr bool nameTellsType(const Field& field) {
    switch (field.kind) {
    case Kind::Scalar:
        return hasPrefix(field.name, field.isSigned     ? (field.width == 4 ? "i" : "?")
                                     : field.width == 1 ? "b"
                                     : field.width == 2 ? "w"
                                     : field.width == 4 ? "dw"
                                                        : "ull");
    case Kind::Bytes:
    case Kind::String:
        return hasPrefix(field.name, "sz");
    case Kind::Record:
    case Kind::Union:
        return hasPrefix(field.name, "st");
    case Kind::RecordArray:
        break;
    }
    return hasPrefix(field.name, "ast");
}

constexpr bool namesTellTypes(Span<Field> fields) {
    for (const Field& field : fields) {
        if (!nameTellsType(field)) {
            return false;
        }
    }
    return true;
}

/// The operations of @p T, one out-of-line function each: those that schema::Type points to.
template <class T>
struct Operations {
    static int32_t construct(void* record);
    static schema::Progress pack(const void* record, char* begin, size_t position, size_t length,
                                 uint32_t cutVer);
    static schema::Progress unpack(void* record, const char* begin, size_t position, size_t length,
                                   uint32_t cutVer);
    static schema::Progress visualize(const void* record, char* begin, size_t position, size_t length,
                                      int indent, char sep);
};

/// Describes @p T from its table and proves that the two agree. @p members is for a record that holds the
/// union.
template <class T>
constexpr Type describe(Span<Command> members = {nullptr, 0}) {
    constexpr Span<Field> fields{Table<T>::fields.data(), Table<T>::fields.size()};
    static_assert(std::is_standard_layout_v<T> && std::is_trivially_copyable_v<T> &&
                      std::is_trivially_default_constructible_v<T> && alignof(T) == 1,
                  "a record is a plain packed struct");
    static_assert(tiles(fields, sizeof(T)), "a field is missing, doubled or out of order in the table");
    static_assert(countsAgree(fields), "bytes and record arrays stand right behind their count field");
    static_assert(gatesAgree(fields), "only integers can be added in a later version");
    static_assert(namesTellTypes(fields), "a field's prefix does not agree with its type");
    return {Table<T>::name,
            sizeof(T),
            fields.data,
            fields.size,
            latestVersion(fields, members),
            allDefaultsZero(fields),
            &Operations<T>::construct,
            &Operations<T>::pack,
            &Operations<T>::unpack,
            &Operations<T>::visualize};
}

/// The description of @p T.
template <class T>
inline constexpr Type typeOf = describe<T>();

// ---- Lines ----

template <class Member>
constexpr Kind kindOf() {
    using Element = std::remove_all_extents_t<Member>;
    if constexpr (std::is_union_v<Element>) {
        return Kind::Union;
    } else if constexpr (std::is_class_v<Element>) {
        return (std::is_array_v<Member>) ? Kind::RecordArray : Kind::Record;
    } else if constexpr (std::is_array_v<Member>) {
        static_assert(sizeof(Element) == 1, "an array holds records, bytes (uint8_t) or text (char)");
        return (std::is_same_v<Element, char>) ? Kind::String : Kind::Bytes;
    } else {
        static_assert(std::is_integral_v<Member>, "a field is an integer, an array or a record");
        return Kind::Scalar;
    }
}

/// The line for a member of type @p Member. The label is the name in brackets.
template <class Member, size_t LabelSize>
constexpr Line line(const char* name, const char (&label)[LabelSize], size_t offset,
                    size_t countOffset = NO_COUNT) {
    using Element = std::remove_all_extents_t<Member>;
    Field field{};
    field.name = name;
    field.label = label;
    field.kind = kindOf<Member>();
    field.isSigned = std::is_signed_v<Member>;
    field.labelLength = static_cast<uint8_t>(LabelSize - 1);
    field.since = schema::BASE_VERSION;
    field.countField = -1;
    field.offset = static_cast<uint32_t>(offset);
    field.width = sizeof(Element);
    field.bound = sizeof(Member) / sizeof(Element);
    if constexpr (std::is_class_v<Element>) {
        field.type = &typeOf<Element>;
    }
    return {field, countOffset};
}

/// The fields of the lines, each array with its count field if that is the line before.
template <class... Lines>
constexpr std::array<Field, sizeof...(Lines)> makeFields(Lines... line) {
    std::array<Field, sizeof...(Lines)> fields{line.field...};
    const std::array<size_t, sizeof...(Lines)> countOffsets{line.countOffset...};
    for (size_t i = 1; i < fields.size(); ++i) {
        if (fields[i - 1].offset == countOffsets[i]) {
            fields[i].countField = static_cast<int16_t>(i - 1);
        }
    }
    return fields;
}

} // namespace cs_relay_msg::table

/// Writes the table of the record type @p T, to be used in the namespace `cs_relay_msg::table`.
#define KORVAN_TABLE(T, ...)                                                                                 \
    template <>                                                                                              \
    struct Table<T> {                                                                                        \
        using Self = T;                                                                                      \
        static constexpr const char* name = #T;                                                              \
        static constexpr auto fields = makeFields(__VA_ARGS__);                                              \
    };

#define FIELD(member) line<decltype(Self::member)>(#member, "[" #member "]", offsetof(Self, member))
#define COUNTED(member, count)                                                                               \
    line<decltype(Self::member)>(#member, "[" #member "]", offsetof(Self, member), offsetof(Self, count))

#endif
