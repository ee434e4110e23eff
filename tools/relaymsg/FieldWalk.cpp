#include "tools/relaymsg/FieldWalk.h"

#include "protocol/cs_relay_msg.h"

#include <utility>

namespace relaymsg {

using namespace cs_relay_msg;
using schema::Field;
using schema::Kind;
using schema::Type;

void FieldPath::appendTo(std::string& text) const {
    for (const Step& step : steps_) {
        if (&step != &steps_.front()) {
            text += '.';
        }
        text += step.name;
        if (step.index != NO_INDEX) {
            text += '[' + std::to_string(step.index) + ']';
        }
    }
}

std::string FieldPath::text() const {
    std::string text;
    appendTo(text);
    return text;
}

namespace {

/// Where in every message its version and its command stand: the head has no field of variable size.
constexpr size_t VERSION_AT = offsetof(CSRelayMsgHead, bVersion);
constexpr size_t COMMAND_AT = offsetof(CSRelayMsgHead, bCmdId);

const Type& messageType() {
    const auto types = schema::types();
    return *types[types.size - 1];
}

class Walk {
public:
    Walk(std::string_view bytes, FieldVisitor& visitor) : bytes_(bytes), visitor_(visitor) {}

    Stop message() {
        if (versionIsGood()) {
            record(messageType(), byteAt(VERSION_AT), 0);
        }
        stop_.end = at_;
        return std::move(stop_);
    }

private:
    /// A field of the record under way that is already read.
    struct Read {
        uint64_t value;
        size_t offset;
    };

    uint8_t byteAt(size_t offset) const { return static_cast<uint8_t>(bytes_[offset]); }
    size_t left() const { return bytes_.size() - at_; }

    bool fail(int32_t code, size_t offset) {
        stop_.code = code;
        stop_.offset = offset;
        stop_.path = path_.text();
        return false;
    }

    bool failRange(int32_t code, size_t offset, uint64_t value, uint64_t most) {
        stop_.value = value;
        stop_.most = most;
        return fail(code, offset);
    }

    bool underflow(size_t offset, uint64_t needed) {
        stop_.needed = needed;
        return fail(BIX_ERR_READ_UNDERFLOW, offset);
    }

    /// The message's own first step: its version byte is looked at before anything is read.
    bool versionIsGood() {
        path_.push("stHead");
        path_.push("bVersion");
        if (left() <= VERSION_AT) {
            return underflow(VERSION_AT, VERSION_AT + 1);
        }
        const uint8_t version = byteAt(VERSION_AT);
        const uint32_t latest = messageType().currentVersion;
        if (version < schema::BASE_VERSION || version > latest) {
            return failRange(BIX_ERR_VERSION_OUT_OF_RANGE, VERSION_AT, version, latest);
        }
        path_.pop();
        path_.pop();
        return true;
    }

    bool record(const Type& type, uint32_t cutVer, int depth) {
        const uint32_t version = type.effectiveVersion(cutVer);
        const size_t first = reads_.size();
        reads_.resize(first + type.fieldCount);
        for (size_t i = 0; i < type.fieldCount; ++i) {
            if (version < type.fields[i].since) {
                continue;
            }
            path_.push(type.fields[i].name);
            if (!field(type, i, first, version, depth)) {
                return false;
            }
            path_.pop();
        }
        reads_.resize(first);
        return true;
    }

    bool field(const Type& type, size_t i, size_t first, uint32_t version, int depth) {
        const Field& field = type.fields[i];
        switch (field.kind) {
        case Kind::Scalar:
            return scalar(field, reads_[first + i], depth);
        case Kind::String:
            return string(field, depth);
        case Kind::Record:
            return group(Shape::Record, field.name, field.label, 0, *field.type, version, depth);
        case Kind::Union:
            return body(field, version, depth);
        case Kind::Bytes:
        case Kind::RecordArray:
            break;
        }
        const size_t countIndex = static_cast<uint8_t>(field.countField);
        const Read count = reads_[first + countIndex];
        if (count.value > field.bound) {
            stop_.array = field.name;
            path_.rename(type.fields[countIndex].name);
            return failRange(BIX_ERR_COUNT_OUT_OF_RANGE, count.offset, count.value, field.bound);
        }
        const size_t elements = static_cast<size_t>(count.value);
        return field.kind == Kind::Bytes ? byteArray(field, elements, depth)
                                         : recordArray(field, elements, version, depth);
    }

    bool scalar(const Field& field, Read& read, int depth) {
        if (left() < field.width) {
            return underflow(at_, at_ + field.width);
        }
        read = {0, at_};
        for (uint32_t i = 0; i < field.width; ++i) {
            read.value = read.value << 8 | byteAt(at_ + i);
        }
        at_ += field.width;
        visitor_.leaf({field, read.offset, field.width, read.value, {}, depth, path_});
        return true;
    }

    bool byteArray(const Field& field, size_t count, int depth) {
        if (left() < count) {
            return underflow(at_, at_ + count);
        }
        const size_t start = at_;
        at_ += count;
        visitor_.leaf({field, start, count, 0, bytes_.substr(start, count), depth, path_});
        return true;
    }

    bool string(const Field& field, int depth) {
        constexpr size_t PREFIX = sizeof(uint32_t);
        const size_t start = at_;
        if (left() < PREFIX) {
            return underflow(start, start + PREFIX);
        }
        uint32_t length = 0;
        for (size_t i = 0; i < PREFIX; ++i) {
            length = length << 8 | byteAt(at_ + i);
        }
        at_ += PREFIX;
        if (length > left()) {
            stop_.needed = static_cast<uint64_t>(at_) + length;
            return failRange(BIX_ERR_READ_UNDERFLOW, start, length, field.bound);
        }
        if (length > field.bound) {
            return failRange(BIX_ERR_STRING_TOO_LONG, start, length, field.bound);
        }
        if (length == 0) {
            return failRange(BIX_ERR_STRING_EMPTY, start, length, field.bound);
        }
        const std::string_view text = bytes_.substr(at_, length);
        at_ += length;
        if (text.find('\0') != length - 1) {
            return failRange(BIX_ERR_STRING_MALFORMED, start, length, field.bound);
        }
        visitor_.leaf({field, start, PREFIX + length, 0, text.substr(0, length - 1), depth, path_});
        return true;
    }

    /// A record inside the message, with the fields one level deeper than its header.
    bool group(Shape shape, const char* name, const char* label, size_t index, const Type& type,
               uint32_t version, int depth) {
        const Group group{shape, name, label, index, depth, path_};
        visitor_.open(group);
        if (!record(type, version, depth + 1)) {
            return false;
        }
        visitor_.close(group);
        return true;
    }

    bool recordArray(const Field& field, size_t count, uint32_t version, int depth) {
        const Group array{Shape::Array, field.name, field.label, 0, depth, path_};
        visitor_.open(array);
        for (size_t i = 0; i < count; ++i) {
            path_.setIndex(i);
            if (!group(Shape::Element, field.name, field.label, i, *field.type, version, depth)) {
                return false;
            }
        }
        path_.clearIndex();
        visitor_.close(array);
        return true;
    }

    /// The union: the member that the command selects, or nothing.
    bool body(const Field& field, uint32_t version, int depth) {
        const Group body{Shape::Union, field.name, field.label, 0, depth, path_};
        visitor_.open(body);
        if (const schema::Command* command = schema::findCommand(byteAt(COMMAND_AT))) {
            path_.push(command->name);
            if (!group(Shape::Member, command->name, command->label, 0, *command->type, version, depth + 1)) {
                return false;
            }
            path_.pop();
        }
        visitor_.close(body);
        return true;
    }

    std::string_view bytes_;
    FieldVisitor& visitor_;
    size_t at_ = 0;
    FieldPath path_;
    std::vector<Read> reads_; // of the records under way, one behind the other
    Stop stop_;
};

} // namespace

Stop walkMessage(std::string_view bytes, FieldVisitor& visitor) {
    return Walk(bytes, visitor).message();
}

Stop walkMessage(std::string_view bytes) {
    FieldVisitor nobody;
    return walkMessage(bytes, nobody);
}

} // namespace relaymsg
