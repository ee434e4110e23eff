#include "tools/relaymsg/SchemaJson.h"

#include "protocol/Schema.h"

namespace relaymsg {

using namespace cs_relay_msg;
using nlohmann::ordered_json;
using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

const char* kindName(Kind kind) {
    switch (kind) {
    case Kind::Scalar:
        return "integer";
    case Kind::Bytes:
        return "bytes";
    case Kind::String:
        return "string";
    case Kind::Record:
        return "record";
    case Kind::RecordArray:
        return "recordArray";
    case Kind::Union:
        break;
    }
    return "union";
}

ordered_json fieldJson(const Type& type, const Field& field) {
    ordered_json json{{"name", field.name}, {"kind", kindName(field.kind)}, {"since", field.since}};
    switch (field.kind) {
    case Kind::Scalar:
        json["width"] = field.width;
        json["signed"] = field.isSigned;
        json["default"] = field.defaultValue;
        json["text"] = field.format();
        break;
    case Kind::Union:
        json["selector"] = "stHead.bCmdId";
        break;
    case Kind::String:
        json["bound"] = field.bound;
        break;
    default:
        break;
    }
    if (field.countField >= 0) {
        json["bound"] = field.bound;
        json["countField"] = type.fields[field.countField].name;
    }
    if (field.type != nullptr) {
        json["type"] = field.type->name;
    }
    return json;
}

ordered_json typeJson(const Type& type, uint32_t latest) {
    ordered_json json{{"name", type.name}, {"currentVersion", type.currentVersion}};
    for (uint32_t version = schema::BASE_VERSION; version <= latest; ++version) {
        const schema::WireSize size = schema::wireSize(type, version);
        json["wireSize"][std::to_string(version)] = {{"min", size.min}, {"max", size.max}};
    }
    for (const Field& field : type) {
        json["fields"].push_back(fieldJson(type, field));
    }
    return json;
}

} // namespace

ordered_json schemaJson() {
    const auto types = schema::types();
    const Type& message = *types[types.size - 1];
    ordered_json json{{"protocol", "cs_relay_msg"},
                      {"message", message.name},
                      {"baseVersion", schema::BASE_VERSION},
                      {"currentVersion", message.currentVersion}};
    for (const Type* type : types) {
        json["types"].push_back(typeJson(*type, message.currentVersion));
    }
    for (const schema::Command& command : schema::commands()) {
        json["commands"].push_back(
            {{"id", command.id}, {"name", command.name}, {"type", command.type->name}});
    }
    return json;
}

} // namespace relaymsg
