#include "vectors/VectorJson.h"

#include "protocol/Scalar.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <stdexcept>

namespace vectors {

namespace {

using namespace cs_relay_msg::schema;
namespace scalar = cs_relay_msg::scalar;

constexpr size_t WORTH_SHORTENING = 64; // characters

Json scalarJson(const Field& field, const char* record) {
    const uint64_t bits = scalar::load(field, record);
    if (field.width == 8) {
        return std::to_string(bits);
    }
    if (field.isSigned) {
        return static_cast<int32_t>(bits);
    }
    return bits;
}

uint64_t scalarFrom(const Field& field, const Json& value) {
    if (field.width == 8) {
        return std::stoull(value.get<std::string>());
    }
    const int64_t number = value.get<int64_t>();
    const int64_t limit = int64_t{1} << (8 * field.width);
    const int64_t low = field.isSigned ? -limit / 2 : 0;
    if (number < low || number >= low + limit) {
        throw std::runtime_error(std::string(field.name) + " does not hold " + value.dump());
    }
    return static_cast<uint64_t>(number);
}

bool isAscii(const std::string& text, size_t from, size_t count) {
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(from),
                       text.begin() + static_cast<std::ptrdiff_t>(from + count),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

size_t repeats(const std::string& text, size_t from, size_t unit) {
    size_t times = 1;
    while (from + (times + 1) * unit <= text.size() &&
           text.compare(from, unit, text, from + times * unit, unit) == 0) {
        ++times;
    }
    return times;
}

/// A string, or its parts where one of them is a unit repeated.
Json shorten(const std::string& text, std::initializer_list<size_t> units) {
    Json parts = Json::array();
    std::string plain;
    for (size_t at = 0; at < text.size();) {
        size_t taken = 0;
        for (const size_t unit : units) {
            if (at + unit > text.size() || !isAscii(text, at, unit)) {
                continue;
            }
            const size_t times = repeats(text, at, unit);
            if (times * unit >= WORTH_SHORTENING) {
                if (!plain.empty()) {
                    parts.push_back(plain);
                    plain.clear();
                }
                parts.push_back({{"repeat", text.substr(at, unit)}, {"times", times}});
                taken = times * unit;
                break;
            }
        }
        if (taken == 0) {
            // Hexadecimal digits are taken in pairs.
            taken = std::min(*units.begin(), text.size() - at);
            plain += text.substr(at, taken);
        }
        at += taken;
    }
    if (parts.empty()) {
        return plain;
    }
    if (!plain.empty()) {
        parts.push_back(plain);
    }
    return parts;
}

bool isUtf8(const std::string& text) {
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

/// What a string field holds, the NUL that ends it included where there is one.
Json stringJson(const std::string& held) {
    if (held.empty() || held.find('\0') != held.size() - 1) {
        return {{"raw", hexJson(held)}};
    }
    return textJson(held.substr(0, held.size() - 1));
}

std::string stringFrom(const Json& value) {
    if (value.is_object() && value.contains("raw")) {
        return fromHex(value.at("raw"));
    }
    return fromText(value) + '\0';
}

size_t equalBytes(const char* one, const char* other, size_t most) {
    return static_cast<size_t>(std::mismatch(one, one + most, other).first - one);
}

/// Turns a record into JSON: the fields that hold the same in both.
struct Writer {
    bool complete; ///< empty lists and objects are written
    bool whole;    ///< the two are one record: a text ends at its NUL

    Json record(const Type& type, const char* one, const char* other) const {
        Json result = Json::object();
        for (const Field& field : type) {
            Json value = member(type, field, one, other);
            const bool isEmpty = value.is_null() || (value.is_structured() && value.empty());
            if (!isEmpty || (complete && !value.is_null())) {
                result[field.name] = std::move(value);
            }
        }
        return result;
    }

    Json member(const Type& type, const Field& field, const char* one, const char* other) const {
        const char* const a = one + field.offset;
        const char* const b = other + field.offset;
        switch (field.kind) {
        case Kind::Scalar:
            return std::memcmp(a, b, field.width) == 0 ? scalarJson(field, one) : Json();
        case Kind::String:
            return text(a, equalBytes(a, b, field.bound));
        case Kind::Record:
            return record(*field.type, a, b);
        case Kind::Union:
            return selected(a, b, one, other);
        default:
            return counted(type, field, one, other);
        }
    }

    Json text(const char* held, size_t count) const {
        if (whole) {
            const char* const end = std::find(held, held + count, '\0');
            count = std::min(count, static_cast<size_t>(end - held) + 1);
        }
        return count > 0 ? stringJson(std::string(held, count)) : Json();
    }

    Json selected(const char* a, const char* b, const char* one, const char* other) const {
        const Command* const command = findCommand(static_cast<uint8_t>(one[COMMAND_BYTE]));
        Json result = Json::object();
        if (one[COMMAND_BYTE] == other[COMMAND_BYTE] && command != nullptr) {
            Json body = record(*command->type, a, b);
            if (complete || !body.empty()) {
                result[command->name] = std::move(body);
            }
        }
        return result;
    }

    Json counted(const Type& type, const Field& field, const char* one, const char* other) const {
        const Field& counter = type.fields[field.countField];
        const uint64_t loaded = scalar::load(counter, one);
        if (loaded != scalar::load(counter, other) || loaded > field.bound) {
            return {};
        }
        const auto count = static_cast<size_t>(loaded);
        const char* const a = one + field.offset;
        const char* const b = other + field.offset;
        if (field.kind == Kind::Bytes) {
            const size_t written = equalBytes(a, b, count);
            return written > 0 || complete ? hexJson(std::string(a, written)) : Json();
        }
        Json result = Json::array();
        for (size_t i = 0; i < count; ++i) {
            Json element = record(*field.type, a + i * field.width, b + i * field.width);
            if (element.empty()) {
                break;
            }
            result.push_back(std::move(element));
        }
        return result;
    }
};

void applyList(const Field& field, char* to, const Json& list) {
    if (list.size() > field.bound) {
        throw std::runtime_error(std::string(field.name) + " has too many elements");
    }
    for (size_t i = 0; i < list.size(); ++i) {
        apply(*field.type, to + i * field.width, list[i]);
    }
}

void applyBytes(const Field& field, char* to, const std::string& bytes) {
    if (bytes.size() > field.bound) {
        throw std::runtime_error(std::string(field.name) + " has too many bytes");
    }
    std::copy(bytes.begin(), bytes.end(), to);
}

void applyMember(const Field& field, char* record, const Json& value) {
    char* const to = record + field.offset;
    switch (field.kind) {
    case Kind::Scalar:
        return scalar::store(field, record, scalarFrom(field, value));
    case Kind::Bytes:
        return applyBytes(field, to, fromHex(value));
    case Kind::String:
        return applyBytes(field, to, stringFrom(value));
    case Kind::Record:
        return apply(*field.type, to, value);
    case Kind::RecordArray:
        return applyList(field, to, value);
    case Kind::Union:
        for (const Command& command : commands()) {
            if (value.contains(command.name)) {
                return apply(*command.type, to, value.at(command.name));
            }
        }
        if (!value.empty()) {
            throw std::runtime_error("no such body: " + value.dump());
        }
    }
}

} // namespace

const Type& typeNamed(const std::string& name) {
    for (const Type* type : types()) {
        if (name == type->name) {
            return *type;
        }
    }
    throw std::runtime_error("no such record: " + name);
}

std::string expand(const Json& text) {
    if (text.is_string()) {
        return text.get<std::string>();
    }
    std::string result;
    for (const Json& part : text) {
        const bool isRepeat = part.is_object();
        const std::string unit = isRepeat ? part.at("repeat").get<std::string>() : part.get<std::string>();
        for (size_t i = isRepeat ? part.at("times").get<size_t>() : 1; i > 0; --i) {
            result += unit;
        }
    }
    return result;
}

Json textJson(const std::string& text) {
    return isUtf8(text) ? shorten(text, {1, 5}) : Json{{"hex", hexJson(text)}};
}

std::string fromText(const Json& text) {
    return text.is_object() ? fromHex(text.at("hex")) : expand(text);
}

Json hexJson(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes) {
        digits += "0123456789abcdef"[static_cast<uint8_t>(byte) >> 4];
        digits += "0123456789abcdef"[byte & 0x0f];
    }
    return shorten(digits, {2});
}

std::string fromHex(const Json& hex) {
    const std::string digits = expand(hex);
    if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789abcdef") != std::string::npos) {
        throw std::runtime_error("not hexadecimal: " + digits);
    }
    std::string result;
    for (size_t i = 0; i < digits.size(); i += 2) {
        result += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return result;
}

Json fieldsJson(const Type& type, const char* record) {
    return Writer{true, true}.record(type, record, record);
}

Json writtenJson(const Type& type, const char* one, const char* other, bool complete) {
    return Writer{complete, false}.record(type, one, other);
}

void apply(const Type& type, char* record, const Json& fields) {
    for (const auto& [name, value] : fields.items()) {
        const Field* const field =
            std::find_if(type.begin(), type.end(), [key = name](const Field& f) { return key == f.name; });
        if (field == type.end()) {
            throw std::runtime_error(std::string(type.name) + " has no field " + name);
        }
        applyMember(*field, record, value);
    }
}

} // namespace vectors
