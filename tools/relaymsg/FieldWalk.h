/// @file
/// The one walk over the bytes of a message: which field lies where, what it holds, and where decoding stops.
///
/// It goes by the tables of Schema.h and agrees with `CSRelayMsg::unpack` in result and place; unlike it, it
/// tells the fields one by one.
#ifndef KORVAN_TOOLS_RELAYMSG_FIELD_WALK_H
#define KORVAN_TOOLS_RELAYMSG_FIELD_WALK_H

#include "protocol/Schema.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace relaymsg {

/// The way from the message to a field, such as stBody.stRelayLockStep.astRelayData[2].wRelayLen.
class FieldPath {
public:
    void push(const char* name) { steps_.push_back({name, NO_INDEX}); }
    void pop() { steps_.pop_back(); }
    void setIndex(size_t index) { steps_.back().index = index; }
    void clearIndex() { steps_.back().index = NO_INDEX; }
    void rename(const char* name) { steps_.back() = {name, NO_INDEX}; }

    void appendTo(std::string& text) const;
    std::string text() const;

private:
    static constexpr size_t NO_INDEX = static_cast<size_t>(-1);
    struct Step {
        const char* name;
        size_t index;
    };
    std::vector<Step> steps_;
};

/// What a group of fields is.
enum class Shape { Record, Array, Element, Union, Member };

/// A group of fields.
struct Group {
    Shape shape;
    const char* name;
    const char* label; ///< the name in square brackets
    size_t index;      ///< Element: its number
    int depth; ///< how deep its header line stands; its fields stand one deeper. An array has no header
    const FieldPath& path;
};

/// A field that holds a value and is on the wire.
struct Leaf {
    const cs_relay_msg::schema::Field& field;
    size_t offset;          ///< of its first byte in the message; for a string, of its length
    size_t size;            ///< in bytes on the wire; of a string with its length and its NUL
    uint64_t value;         ///< Scalar: its bits
    std::string_view bytes; ///< Bytes: the counted ones. String: the text; a NUL follows it
    int depth;
    const FieldPath& path;
};

/// What looks at the fields, in the order of the wire. A field that could not be read is not shown, and the
/// groups around it are not closed.
class FieldVisitor {
public:
    virtual ~FieldVisitor() = default;
    virtual void open(const Group&) {}
    virtual void close(const Group&) {}
    virtual void leaf(const Leaf&) {}
};

/// How a walk ended.
struct Stop {
    int32_t code = 0;    ///< as `unpack` returns it for the same bytes
    size_t end = 0;      ///< bytes that `unpack` consumes
    std::string path;    ///< the field that failed; for a count out of range, the count
    std::string array;   ///< for a count out of range, the array that it counts
    size_t offset = 0;   ///< where in the message the failed field begins
    uint64_t needed = 0; ///< for an underflow: bytes of the message up to the end of the failed field
    uint64_t value = 0;  ///< what the message says: a string's length, a count, a version
    uint64_t most = 0;   ///< what it may say at most; 0 if no value was read
};

/// Walks over the message at the start of @p bytes.
Stop walkMessage(std::string_view bytes, FieldVisitor& visitor);
Stop walkMessage(std::string_view bytes);

} // namespace relaymsg

#endif
