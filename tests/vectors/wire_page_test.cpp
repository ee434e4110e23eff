/// Holds docs/wire.md against the library: its tables against Schema.h, its examples against pack, unpack and
/// visualize.
#include "protocol/cs_relay_msg.h"
#include "vectors/VectorJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace vectors {
namespace {

using namespace cs_relay_msg::schema;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using Row = std::vector<std::string>;
using Fact = std::pair<std::string, std::string>; // a field's path, and its value

std::vector<std::string> pageLines() {
    std::ifstream file(KORVAN_WIRE_PAGE);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" `");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" `") - first + 1);
}

/// The cells of a line of a Markdown table, or nothing.
Row cells(const std::string& line) {
    Row row;
    if (line.empty() || line.front() != '|') {
        return row;
    }
    std::istringstream rest(line.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) {
        row.push_back(trimmed(cell));
    }
    return row;
}

/// The rows of the table whose header is @p header, and which stands behind the line @p heading.
std::vector<Row> tableUnder(const std::string& heading, const Row& header) {
    const std::vector<std::string> lines = pageLines();
    auto line = std::find(lines.begin(), lines.end(), heading);
    EXPECT_NE(line, lines.end()) << heading;
    line = std::find_if(line, lines.end(), [&](const std::string& text) { return cells(text) == header; });
    std::vector<Row> rows;
    if (line == lines.end()) {
        ADD_FAILURE() << "no such table under " << heading;
        return rows;
    }
    for (line += 2; line != lines.end() && !cells(*line).empty(); ++line) {
        rows.push_back(cells(*line));
    }
    return rows;
}

std::string numberUnless(uint64_t value, uint64_t usual) {
    return value == usual ? "" : std::to_string(value);
}

std::string kindOf(const Field& field) {
    switch (field.kind) {
    case Kind::Scalar:
        return (field.isSigned ? "i" : "u") + std::to_string(8 * field.width);
    case Kind::Bytes:
        return "bytes";
    case Kind::String:
        return "text";
    case Kind::RecordArray:
        return std::string("list of ") + field.type->name;
    default:
        return field.type->name;
    }
}

/// The row that the page should have for a field; @p offset is where it stands, or -1.
Row rowOf(const Type& type, const Field& field, int64_t offset) {
    return {offset >= 0 ? std::to_string(offset) : "",
            field.name,
            kindOf(field),
            numberUnless(field.bound, 1),
            field.countField >= 0 ? type.fields[field.countField].name : "",
            numberUnless(field.since, 1),
            numberUnless(field.defaultValue, 0)};
}

TEST(WirePage, RecordTables) {
    const Row header = {"Offset", "Field", "Type", "Limit", "Counted by", "Since", "Default", "Meaning"};
    for (const Type* type : types()) {
        if (type->name == std::string("CSRelayMsg")) {
            continue; // told in prose, and shown in the examples
        }
        SCOPED_TRACE(type->name);
        const std::vector<Row> rows = tableUnder(std::string("#### ") + type->name, header);
        ASSERT_EQ(rows.size(), type->fieldCount);
        int64_t offset = 0;
        for (size_t i = 0; i < type->fieldCount; ++i) {
            const Field& field = type->fields[i];
            ASSERT_EQ(rows[i].size(), header.size());
            EXPECT_FALSE(rows[i].back().empty()) << "a field without a meaning";
            EXPECT_EQ(Row(rows[i].begin(), rows[i].end() - 1), rowOf(*type, field, offset));
            const bool isFixed = field.kind == Kind::Scalar;
            offset = offset >= 0 && isFixed ? offset + field.width : -1;
        }
    }
}

TEST(WirePage, HasARecordTableForNothingElse) {
    for (const std::string& line : pageLines()) {
        if (line.rfind("#### ", 0) == 0) {
            EXPECT_NO_THROW((void)typeNamed(line.substr(5)));
        }
    }
}

TEST(WirePage, Versions) {
    std::vector<Row> expected;
    for (const Type* type : types()) {
        for (const Field& field : *type) {
            if (field.since > 1) {
                expected.push_back({type->name, field.name, std::to_string(field.since),
                                    std::to_string(field.defaultValue)});
            }
        }
    }
    EXPECT_EQ(
        tableUnder("## Versions", {"Record", "Field", "Since", "A receiver of an older message sets it to"}),
        expected);
}

TEST(WirePage, Commands) {
    const std::vector<Row> rows = tableUnder("## Commands", {"Id", "Hex", "Body", "Record", "From"});
    ASSERT_EQ(rows.size(), commands().size);
    for (size_t i = 0; i < rows.size(); ++i) {
        const Command& command = commands()[i];
        char hex[3];
        std::snprintf(hex, sizeof(hex), "%02X", command.id);
        EXPECT_EQ(Row(rows[i].begin(), rows[i].end() - 1),
                  (Row{std::to_string(command.id), hex, command.name, command.type->name}));
        const std::set<std::string> sides = {"client", "server", "either"};
        EXPECT_EQ(sides.count(rows[i].back()), 1u);
    }
}

TEST(WirePage, Sizes) {
    const std::vector<Row> rows = tableUnder("### Sizes", {"Record", "Newest", "At 1", "At 2", "At 3"});
    ASSERT_EQ(rows.size(), types().size);
    for (size_t i = 0; i < rows.size(); ++i) {
        const Type& type = *types()[i];
        Row expected = {type.name, std::to_string(type.currentVersion)};
        for (const uint32_t version : {1u, 2u, 3u}) {
            const WireSize size = wireSize(type, version);
            const std::string least = std::to_string(size.min);
            expected.push_back(size.min == size.max ? least : least + " to " + std::to_string(size.max));
        }
        EXPECT_EQ(rows[i], expected);
    }
}

TEST(WirePage, Codes) {
    const std::vector<Row> rows = tableUnder("### Codes", {"Code", "Name", "Who", "When"});
    std::set<int> told;
    for (const Row& row : rows) {
        const int code = std::stoi(row.at(0));
        EXPECT_EQ(row.at(1), Korvan::resultName(code));
        told.insert(code);
    }
    EXPECT_EQ(told, (std::set<int>{0, -1, -2, -3, -4, -5, -7, -20}));
}

// ---- Examples ----

/// A block of the page: what stands behind the fence, and its lines.
struct Block {
    std::string info;
    std::vector<std::string> lines;
};

std::vector<Block> blocks() {
    std::vector<Block> result;
    bool isInside = false;
    for (const std::string& line : pageLines()) {
        if (line.rfind("```", 0) == 0) {
            isInside = !isInside;
            if (isInside) {
                result.push_back({line.substr(3), {}});
            }
        } else if (isInside) {
            result.back().lines.push_back(line);
        }
    }
    return result;
}

/// An example: the records that it holds one behind the other, and what the page says of them.
struct Example {
    std::vector<std::string> records;
    uint32_t cut = 0;
    int32_t code = 0;
    long used = -1; ///< -1: all of it
    std::string wire;
    std::vector<Fact> facts; ///< in order
};

Example parse(const Block& block) {
    Example example;
    std::istringstream words(block.info);
    std::string word;
    words >> word; // "wire"
    while (words >> word) {
        if (word.rfind("cut=", 0) == 0) {
            example.cut = static_cast<uint32_t>(std::stoul(word.substr(4)));
        } else if (word.rfind("code=", 0) == 0) {
            example.code = std::stoi(word.substr(5));
        } else if (word.rfind("used=", 0) == 0) {
            example.used = std::stol(word.substr(5));
        } else {
            example.records.push_back(word);
        }
    }
    static const std::regex hex("((?:[0-9A-F]{2} )*[0-9A-F]{2})(?:  +(.*))?");
    static const std::regex fact("([A-Za-z0-9_.\\[\\]]+) = (.*)");
    for (const std::string& line : block.lines) {
        std::smatch parts;
        EXPECT_TRUE(std::regex_match(line, parts, hex)) << line;
        std::string digits = parts[1];
        digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
        std::transform(digits.begin(), digits.end(), digits.begin(),
                       [](char c) { return static_cast<char>(std::tolower(c)); });
        example.wire += fromHex(digits);
        const std::string remark = parts[2];
        if (std::regex_match(remark, parts, fact)) {
            example.facts.emplace_back(parts[1], parts[2]);
        }
    }
    return example;
}

/// All values of a record in order, each with its path.
void flatten(const Json& value, const std::string& path, std::vector<Fact>& out) {
    if (value.is_object()) {
        for (const auto& [name, member] : value.items()) {
            flatten(member, path.empty() ? name : path + "." + name, out);
        }
    } else if (value.is_array()) {
        for (size_t i = 0; i < value.size(); ++i) {
            flatten(value[i], path + "[" + std::to_string(i) + "]", out);
        }
    } else {
        const bool isText = value.is_string() && path.find("szSigBuf") != std::string::npos;
        out.emplace_back(path, value.is_string() && !isText ? value.get<std::string>() : value.dump());
    }
}

/// Whether a field is one that messages of that version carry.
bool isOnWire(const std::string& path, uint32_t version) {
    const std::string name = path.substr(path.find_last_of('.') + 1);
    return std::none_of(types().begin(), types().end(), [&](const Type* type) {
        return std::any_of(type->begin(), type->end(),
                           [&](const Field& field) { return name == field.name && field.since > version; });
    });
}

void checkExample(const Example& example) {
    std::vector<Fact> facts;
    size_t at = 0;
    for (const std::string& name : example.records) {
        const Type& type = typeNamed(name);
        const std::string rest = example.wire.substr(at);
        Storage record(type, '\x5a');
        Storage other(type, '\xa5');
        BixReadBuf in(rest.data(), rest.size());
        BixReadBuf again(rest.data(), rest.size());
        EXPECT_EQ(type.unpack(record.data(), in, example.cut), example.code);
        (void)type.unpack(other.data(), again, example.cut);
        const size_t used = in.getUsedSize();
        const uint32_t cut = name == "CSRelayMsg" ? static_cast<uint8_t>(rest.at(VERSION_BYTE)) : example.cut;
        std::vector<Fact> read;
        flatten(writtenJson(type, record.data(), other.data(), false), "", read);
        std::copy_if(read.begin(), read.end(), std::back_inserter(facts),
                     [&](const Fact& fact) { return isOnWire(fact.first, type.effectiveVersion(cut)); });
        if (example.code == 0) {
            std::string memory(used, '\0');
            BixWriteBuf out(memory.data(), memory.size());
            EXPECT_EQ(type.pack(record.data(), out, cut), 0);
            EXPECT_EQ(memory, rest.substr(0, used));
        }
        at += used;
    }
    EXPECT_EQ(at, example.used >= 0 ? static_cast<size_t>(example.used) : example.wire.size());
    if (example.code == 0) {
        EXPECT_EQ(example.facts, facts);
    }
    for (const Fact& fact : example.facts) {
        EXPECT_NE(std::find(facts.begin(), facts.end(), fact), facts.end())
            << fact.first << " is not " << fact.second;
    }
}

TEST(WirePage, Examples) {
    size_t count = 0;
    const Example* last = nullptr;
    Example example;
    for (const Block& block : blocks()) {
        SCOPED_TRACE(block.lines.empty() ? block.info : block.info + ": " + block.lines.front());
        if (block.info == "text") {
            ASSERT_NE(last, nullptr);
            std::string text;
            for (const std::string& line : block.lines) {
                text += line + '\n';
            }
            const Type& type = typeNamed(last->records.at(0));
            Storage record(type, 0);
            BixReadBuf in(last->wire.data(), last->wire.size());
            ASSERT_EQ(type.unpack(record.data(), in, last->cut), 0);
            std::string memory(4096, '\0');
            BixWriteBuf out(memory.data(), memory.size());
            ASSERT_EQ(type.visualize(record.data(), out, 0, '\n'), 0);
            EXPECT_EQ(memory.substr(0, out.getUsedSize()), text);
            continue;
        }
        ASSERT_EQ(block.info.rfind("wire ", 0), 0u) << "a block of another kind is not checked";
        example = parse(block);
        last = &example;
        checkExample(example);
        ++count;
    }
    EXPECT_GE(count, 13u);
}

/// Bytes in hexadecimal stand in examples only, where they are checked.
TEST(WirePage, HasNoBytesOutsideItsExamples) {
    static const std::regex bytes("(^|[^0-9A-Za-z])([0-9A-Fa-f]{2} ){2,}[0-9A-Fa-f]{2}([^0-9A-Za-z]|$)");
    bool isInside = false;
    for (const std::string& line : pageLines()) {
        isInside ^= line.rfind("```", 0) == 0;
        EXPECT_TRUE(isInside || !std::regex_search(line, bytes)) << line;
    }
}

} // namespace
} // namespace vectors
