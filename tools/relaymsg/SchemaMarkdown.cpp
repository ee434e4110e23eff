#include "tools/relaymsg/SchemaMarkdown.h"

#include "protocol/Schema.h"

#include <algorithm>
#include <cctype>

namespace relaymsg {

using namespace cs_relay_msg;
using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

std::string code(const std::string& text) {
    return '`' + text + '`';
}

/// A link to the section of a record.
std::string link(const Type& type) {
    std::string anchor = type.name;
    std::transform(anchor.begin(), anchor.end(), anchor.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return '[' + code(type.name) + "](#" + anchor + ')';
}

/// A link to the line of a command.
std::string link(const schema::Command& command) {
    return '[' + code(command.name) + "](#" + command.name + ')';
}

std::string range(const schema::WireSize& size) {
    return size.min == size.max ? std::to_string(size.min)
                                : std::to_string(size.min) + " to " + std::to_string(size.max);
}

std::string row(std::initializer_list<std::string> cells) {
    std::string line = "|";
    for (const std::string& cell : cells) {
        line += cell.empty() ? " |" : ' ' + cell + " |";
    }
    return line + '\n';
}

std::string kindText(const Type& type, const Field& field) {
    const std::string bound = std::to_string(field.bound);
    const auto counted = [&] { return " counted by " + code(type.fields[field.countField].name); };
    switch (field.kind) {
    case Kind::Scalar:
        return (field.isSigned ? "int" : "uint") + std::to_string(8 * field.width);
    case Kind::Bytes:
        return "up to " + bound + " bytes," + counted();
    case Kind::String:
        return "text of up to " + std::to_string(field.bound - 1) + " bytes and its NUL";
    case Kind::Record:
        return link(*field.type);
    case Kind::RecordArray:
        return "up to " + bound + " " + link(*field.type) + "," + counted();
    case Kind::Union:
        break;
    }
    return "the record of the command in `stHead.bCmdId`; nothing for an unknown one";
}

std::string wireText(const Field& field, uint32_t version) {
    constexpr size_t LENGTH = 4; // of a string's length
    switch (field.kind) {
    case Kind::Scalar:
        return std::to_string(field.width);
    case Kind::Bytes:
        return range({0, field.bound});
    case Kind::String:
        return range({LENGTH + 1, LENGTH + field.bound});
    case Kind::Record:
        return range(schema::wireSize(*field.type, version));
    case Kind::RecordArray:
        return range({0, field.bound * schema::wireSize(*field.type, version).max});
    case Kind::Union:
        break;
    }
    size_t most = 0;
    for (const schema::Command& command : schema::commands()) {
        most = std::max(most, schema::wireSize(*command.type, version).max);
    }
    return range({0, most});
}

/// "Carried by" and "Part of" lines: who holds a record of this type.
template <class List, class Holds>
std::string holders(const char* words, const List& list, Holds holds) {
    std::string line;
    for (const auto& entry : list) {
        const std::string text = holds(entry);
        if (!text.empty()) {
            line += (line.empty() ? std::string(words) + " " : ", ") + text;
        }
    }
    return line.empty() ? "" : line + ".\n\n";
}

std::string section(const Type& type) {
    std::string text = std::string("### ") + type.name + "\n\n";
    text += holders("Carried by", schema::commands(), [&](const schema::Command& command) {
        return command.type == &type ? link(command) : std::string();
    });
    text += holders("Part of", schema::types(), [&](const Type* outer) {
        return std::any_of(outer->begin(), outer->end(),
                           [&](const Field& field) { return field.type == &type; })
                   ? link(*outer)
                   : std::string();
    });
    text += "Current version: " + std::to_string(type.currentVersion) + ". Bytes on the wire: ";
    for (uint32_t version = type.currentVersion; version >= schema::BASE_VERSION; --version) {
        text += range(schema::wireSize(type, version)) + " at version " + std::to_string(version) +
                (version == schema::BASE_VERSION ? ".\n\n" : ", ");
    }
    text += row({"Field", "Kind", "Bytes on the wire", "Since", "Default", "Text"});
    text += "| --- | --- | --- | --- | --- | --- |\n";
    for (const Field& field : type) {
        const bool scalar = field.kind == Kind::Scalar;
        text += row({code(field.name), kindText(type, field), wireText(field, type.currentVersion),
                     std::to_string(field.since), scalar ? std::to_string(field.defaultValue) : "",
                     scalar ? code(field.format()) : ""});
    }
    return text + '\n';
}

} // namespace

std::string schemaMarkdown() {
    std::string text =
        "# Protocol reference\n\n"
        "Made by `relaymsg schema --markdown` from the tables of the codec; not edited by hand.\n\n"
        "Fields stand in the order of the wire. Integers travel most significant byte first. A text\n"
        "is preceded by its length in 4 bytes, which counts its NUL, too. A field is on the wire\n"
        "from the version in the column *Since* on.\n\n"
        "## Commands\n\n";
    text += row({"Id", "Hex", "Command", "Record"}) + "| --- | --- | --- | --- |\n";
    for (const schema::Command& command : schema::commands()) {
        const std::string anchor = std::string("<a id=\"") + command.name + "\"></a>";
        constexpr char DIGITS[] = "0123456789abcdef";
        text += row({std::to_string(command.id),
                     std::string("0x") + DIGITS[command.id >> 4] + DIGITS[command.id & 15],
                     anchor + code(command.name), link(*command.type)});
    }
    text += "\n## Records\n\n";
    for (const Type* type : schema::types()) {
        text += section(*type);
    }
    text.pop_back(); // the last section's empty line
    return text;
}

} // namespace relaymsg
