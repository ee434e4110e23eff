#include "tools/relaymsg/MessageJson.h"

#include "protocol/Schema.h"
#include "tools/relaymsg/HexDigits.h"
#include "tools/relaymsg/JsonParse.h"
#include "tools/relaymsg/JsonText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace relaymsg {

using namespace cs_relay_msg;
using nlohmann::json;
using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

[[noreturn]] void refuse(const std::string& path, std::string sentence) {
    throw JsonFault{path, std::move(sentence)};
}

/// A value and where it stands.
struct Value {
    const json& value;
    std::string path;

    [[noreturn]] void mustBe(const std::string& what) const {
        refuse(path, "is " + kind() + "; it must be " + what + ".");
    }

private:
    std::string kind() const {
        return value.is_object()           ? "an object"
               : value.is_array()          ? "an array"
               : value.is_string()         ? "a string"
               : value.is_null()           ? "null"
               : value.is_boolean()        ? "true or false"
               : value.is_number_integer() ? "the number " + value.dump()
                                           : "a number with a fraction or an exponent, or a very large one";
    }
};

uint64_t mostOf(const Field& field) {
    const uint64_t all = std::numeric_limits<uint64_t>::max() >> (64 - 8 * field.width);
    return field.isSigned ? all >> 1 : all;
}

/// The bits of an integer.
uint64_t integer(const Value& at, const Field& field) {
    if (field.width == sizeof(uint64_t)) {
        const std::string what =
            "a string of the digits of a number from 0 to " + std::to_string(mostOf(field));
        if (!at.value.is_string()) {
            at.mustBe(what);
        }
        const auto& digits = at.value.get_ref<const std::string&>();
        uint64_t number = 0;
        const char* const end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, number);
        if (read.ec != std::errc() || read.ptr != end) {
            refuse(at.path, "must be " + what + ".");
        }
        return number;
    }
    const uint64_t most = mostOf(field);
    const int64_t least = field.isSigned ? -static_cast<int64_t>(most) - 1 : 0;
    const bool good = at.value.is_number_unsigned()
                          ? at.value.get<uint64_t>() <= most
                          : at.value.is_number_integer() && at.value.get<int64_t>() >= least &&
                                at.value.get<int64_t>() <= static_cast<int64_t>(most);
    if (!good) {
        at.mustBe("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return at.value.is_number_unsigned() ? at.value.get<uint64_t>()
                                         : static_cast<uint64_t>(at.value.get<int64_t>());
}

std::string bytesOf(const Value& at) {
    if (!at.value.is_string()) {
        at.mustBe("a string of hexadecimal digits, two for each byte");
    }
    std::string bytes;
    if (!parseHex(at.value.get_ref<const std::string&>(), bytes)) {
        refuse(at.path, "must be a string of hexadecimal digits, two for each byte.");
    }
    return bytes;
}

std::string textOf(const Value& at) {
    if (at.value.is_string()) {
        return at.value.get<std::string>();
    }
    if (at.value.is_object() && at.value.size() == 1 && at.value.contains("hex")) {
        return bytesOf({at.value["hex"], memberPath(at.path, "hex")});
    }
    at.mustBe("a string, or an object {\"hex\": \"...\"} of a text that is no UTF-8");
}

template <class Integer>
void store(char* to, uint64_t bits) {
    const auto value = static_cast<Integer>(bits);
    std::memcpy(to, &value, sizeof(value));
}

void storeInteger(char* to, uint32_t width, uint64_t bits) {
    width == 1   ? store<uint8_t>(to, bits)
    : width == 2 ? store<uint16_t>(to, bits)
    : width == 4 ? store<uint32_t>(to, bits)
                 : store<uint64_t>(to, bits);
}

/// Reads one record.
class RecordReader {
public:
    RecordReader(const Value& at, const Type& type, uint32_t cutVer, char* record)
        : at_(at), type_(type), version_(type.effectiveVersion(cutVer)), record_(record) {}

    void read() {
        mustBeObject(at_);
        for (const auto& member : at_.value.items()) {
            if (!at_.path.empty() || (member.key() != PACKET_KEY && member.key() != GUESS_KEY)) {
                fieldNamed(member.key());
            }
        }
        for (const Field& field : type_) {
            if (field.kind == Kind::Union) {
                readBody(field);
            } else if (field.since <= version_) {
                readField(field);
            }
        }
    }

private:
    static void mustBeObject(const Value& at) {
        if (!at.value.is_object()) {
            at.mustBe("an object");
        }
    }

    void fieldNamed(const std::string& name) const {
        for (const Field& field : type_) {
            if (name == field.name) {
                if (field.since > version_) {
                    refuse(memberPath(at_.path, name), "came with version " + std::to_string(field.since) +
                                                           "; a message of version " +
                                                           std::to_string(version_) + " does not carry it.");
                }
                return;
            }
        }
        refuse(memberPath(at_.path, name), std::string("is no field of ") + type_.name + ".");
    }

    Value member(const char* name) const {
        const std::string path = memberPath(at_.path, name);
        const auto found = at_.value.find(name);
        if (found == at_.value.end()) {
            refuse(path, "is missing.");
        }
        return {*found, path};
    }

    /// The array that the field counts, or null.
    const Field* countedBy(const Field& count) const {
        for (const Field& field : type_) {
            if (field.countField >= 0 && &type_.fields[field.countField] == &count) {
                return &field;
            }
        }
        return nullptr;
    }

    void readField(const Field& field) {
        if (field.kind == Kind::Scalar && countedBy(field) != nullptr && !at_.value.contains(field.name)) {
            return; // its array sets it
        }
        const Value at = member(field.name);
        char* const to = record_ + field.offset;
        switch (field.kind) {
        case Kind::Scalar:
            return storeInteger(to, field.width, integer(at, field));
        case Kind::Record:
            return RecordReader(at, *field.type, version_, to).read();
        case Kind::String: {
            const std::string text = textOf(at);
            limit(at, text.size(), field.bound - 1, "bytes of text");
            if (text.find('\0') != std::string::npos) {
                refuse(at.path, "holds a NUL, which no text can.");
            }
            std::memcpy(to, text.c_str(), text.size() + 1);
            return;
        }
        case Kind::Bytes: {
            const std::string bytes = bytesOf(at);
            limit(at, bytes.size(), field.bound, "bytes");
            std::copy(bytes.begin(), bytes.end(), to);
            return count(field, bytes.size(), "bytes");
        }
        case Kind::RecordArray: {
            if (!at.value.is_array()) {
                at.mustBe("an array");
            }
            limit(at, at.value.size(), field.bound, "elements");
            for (size_t i = 0; i < at.value.size(); ++i) {
                RecordReader({at.value[i], elementPath(at.path, i)}, *field.type, version_,
                             to + i * field.width)
                    .read();
            }
            return count(field, at.value.size(), "elements");
        }
        case Kind::Union:
            break;
        }
    }

    static void limit(const Value& at, size_t size, size_t most, const char* what) {
        if (size > most) {
            refuse(at.path, "has " + std::to_string(size) + " " + what + "; it holds at most " +
                                std::to_string(most) + ".");
        }
    }

    /// Sets the count of @p array, or checks the one that is given.
    void count(const Field& array, size_t size, const char* what) {
        const Field& count = type_.fields[array.countField];
        const auto given = at_.value.find(count.name);
        if (given == at_.value.end()) {
            storeInteger(record_ + count.offset, count.width, size);
            return;
        }
        const Value at{*given, memberPath(at_.path, count.name)};
        if (integer(at, count) != size) {
            refuse(at.path, "is " + given->dump() + ", but " + array.name + " has " + std::to_string(size) +
                                " " + what + ". Leave the count out, and it is right.");
        }
    }

    /// The member that the command selects. The message's own record is read here, behind its head.
    void readBody(const Field& field) {
        auto& message = *reinterpret_cast<CSRelayMsg*>(record_);
        const uint8_t version = message.stHead.bVersion;
        if (version < schema::BASE_VERSION || version > type_.currentVersion) {
            refuse(".stHead.bVersion", "is " + std::to_string(version) + "; versions are " +
                                           std::to_string(schema::BASE_VERSION) + " to " +
                                           std::to_string(type_.currentVersion) + ".");
        }
        const schema::Command* command = schema::findCommand(message.stHead.bCmdId);
        if (command == nullptr) {
            if (at_.value.contains(field.name)) {
                refuse(memberPath(at_.path, field.name),
                       "belongs to no command: " + std::to_string(message.stHead.bCmdId) +
                           " in .stHead.bCmdId is unknown, and such a message is a head without a body.");
            }
            return;
        }
        const Value body = member(field.name);
        mustBeObject(body);
        for (const auto& entry : body.value.items()) {
            if (entry.key() != command->name) {
                refuse(memberPath(body.path, entry.key()), "is not the body of command " +
                                                               std::to_string(command->id) + ", which is " +
                                                               command->name + ".");
            }
        }
        const std::string path = memberPath(body.path, command->name);
        if (body.value.empty()) {
            refuse(path, "is missing.");
        }
        char* const to = record_ + field.offset;
        command->type->construct(to);
        RecordReader({*body.value.begin(), path}, *command->type, version, to).read();
    }

    const Value& at_;
    const Type& type_;
    uint32_t version_;
    char* record_;
};

} // namespace

void readMessage(std::string_view text, CSRelayMsg& message) {
    const json value = parseJson(text);
    const auto types = schema::types();
    message.construct();
    RecordReader({value, ""}, *types[types.size - 1], 0, reinterpret_cast<char*>(&message)).read();
}

} // namespace relaymsg
