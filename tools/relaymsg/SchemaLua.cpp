#include "tools/relaymsg/SchemaLua.h"

#include "Common/Source/Core/BIX/BixResult.h"
#include "protocol/Schema.h"
#include "tools/wireshark/LuaEngine.h"

#include <cctype>
#include <set>

namespace relaymsg {

using namespace cs_relay_msg;
using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

/// The codes with which a received message is refused.
constexpr int32_t REFUSALS[] = {
    Korvan::BIX_ERR_READ_UNDERFLOW,     Korvan::BIX_ERR_STRING_TOO_LONG,
    Korvan::BIX_ERR_STRING_EMPTY,       Korvan::BIX_ERR_STRING_MALFORMED,
    Korvan::BIX_ERR_COUNT_OUT_OF_RANGE, Korvan::BIX_ERR_VERSION_OUT_OF_RANGE,
};

/// Names and sentences of this program: letters, digits and punctuation, nothing to escape.
std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

const Type& messageType() {
    const auto types = schema::types();
    return *types[types.size - 1];
}

const Type& headType() {
    return *messageType().fields[0].type;
}

/// The field of the head whose byte stands there; the head has no field of variable size.
const char* headFieldAt(size_t offset) {
    for (const Field& field : headType()) {
        if (field.offset == offset) {
            return field.name;
        }
    }
    return "";
}

/// How display filters begin that name a field of the record: CSRelayMsgLoginReq is loginReq, the message
/// itself nothing.
std::string filterOf(const Type& type) {
    if (&type == &messageType()) {
        return "";
    }
    std::string name = type.name;
    for (const std::string prefix : {"CSRelayMsg", "CSRelay"}) {
        if (name.size() > prefix.size() && name.compare(0, prefix.size(), prefix) == 0) {
            name.erase(0, prefix.size());
            break;
        }
    }
    name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    return name + '.';
}

std::string kindOf(const Field& field) {
    switch (field.kind) {
    case Kind::Scalar:
        return (field.isSigned ? "int" : "uint") + std::to_string(8 * field.width);
    case Kind::Bytes:
        return "bytes";
    case Kind::String:
        return "text";
    case Kind::Record:
        return "record";
    case Kind::RecordArray:
        return "records";
    case Kind::Union:
        break;
    }
    return "body";
}

std::string line(const Type& type, const Field& field) {
    std::string text = "            {name = " + quoted(field.name) + ", kind = " + quoted(kindOf(field)) +
                       ", since = " + std::to_string(field.since);
    if (field.type != nullptr) {
        text += ", record = " + quoted(field.type->name);
    }
    if (field.bound > 1) {
        text += ", bound = " + std::to_string(field.bound);
    }
    if (field.countField >= 0) {
        text += ", count = " + quoted(type.fields[field.countField].name);
    }
    return text + "},\n";
}

/// A record that travels in messages, and those that it contains.
void addWithParts(const Type& type, std::set<const Type*>& travelling) {
    travelling.insert(&type);
    for (const Field& field : type) {
        if (field.type != nullptr) {
            addWithParts(*field.type, travelling);
        }
    }
}

std::string records() {
    std::set<const Type*> travelling;
    addWithParts(messageType(), travelling);
    for (const schema::Command& command : schema::commands()) {
        addWithParts(*command.type, travelling);
    }
    std::string text;
    for (const Type* type : schema::types()) {
        if (travelling.count(type) == 0) {
            continue;
        }
        text += std::string("        ") + type->name + " = {name = " + quoted(type->name) +
                ", filter = " + quoted(filterOf(*type)) + ", fields = {\n";
        for (const Field& field : *type) {
            text += line(*type, field);
        }
        text += "        }},\n";
    }
    return text;
}

std::string entry(const char* name, const std::string& value) {
    return std::string("    ") + name + " = " + value + ",\n";
}

} // namespace

std::string schemaLua() {
    const Type& message = messageType();
    std::string text =
        "-- Relay messages in Wireshark. Put this file into Wireshark's folder for personal Lua plugins.\n"
        "--\n"
        "-- Made by `relaymsg schema --lua` from the tables of the codec; not edited by hand.\n\n"
        "local protocol = {\n";
    text += entry("message", quoted(message.name)) + entry("head", quoted(headType().name)) +
            entry("version_field", quoted(headFieldAt(schema::VERSION_BYTE))) +
            entry("command_field", quoted(headFieldAt(schema::COMMAND_BYTE))) +
            entry("version_at", std::to_string(schema::VERSION_BYTE)) +
            entry("command_at", std::to_string(schema::COMMAND_BYTE)) +
            entry("oldest", std::to_string(schema::BASE_VERSION)) +
            entry("newest", std::to_string(message.currentVersion)) +
            entry("longest", std::to_string(schema::wireSize(message, 0).max));
    text += "    refusals = {\n";
    for (const int32_t code : REFUSALS) {
        text += std::string("        ") + Korvan::resultName(code) + " =\n            " +
                quoted(Korvan::resultSentence(code)) + ",\n";
    }
    text += "    },\n    commands = {\n";
    for (const schema::Command& command : schema::commands()) {
        text += "        [" + std::to_string(command.id) + "] = {name = " + quoted(command.name) +
                ", record = " + quoted(command.type->name) + "},\n";
    }
    return text + "    },\n    records = {\n" + records() + "    },\n}\n" + LUA_ENGINE;
}

} // namespace relaymsg
