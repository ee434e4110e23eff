// The facts that the protocol's header states in its comments, against the tables.
#include "protocol/Schema.h"
#include "tests/protocol_facts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace schema = cs_relay_msg::schema;
using schema::Kind;

namespace {

std::vector<std::string> headerLines() {
    std::ifstream file(PROTOCOL_HEADER);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// One record or union in the header.
struct Documented {
    std::string comment;                       ///< what stands before it, in one line
    std::map<std::string, std::string> fields; ///< what stands behind each field
    std::vector<std::string> facts;            ///< every bracket in the fields' comments
};

std::map<std::string, Documented> readHeader() {
    static const std::regex START("(?:struct|union) KORVAN_RECORD (\\w+).*\\{");
    static const std::regex FIELD("(\\w+)(?:\\[\\d+\\])?(?: = \\d+)?;\\s*$");
    std::map<std::string, Documented> records;
    std::string comment;
    Documented* record = nullptr;
    std::string field;
    std::string code;
    for (const std::string& line : headerLines()) {
        std::smatch match;
        const size_t doc = line.find("///");
        if (record == nullptr) {
            if (doc != std::string::npos) {
                comment += line.substr(doc + 3);
            } else if (std::regex_search(line, match, START)) {
                record = &records[match[1]];
                record->comment = comment;
            } else {
                comment.clear();
            }
            continue;
        }
        if (line.rfind("};", 0) == 0) {
            record = nullptr;
            comment.clear();
            field.clear();
            code.clear();
            continue;
        }
        code += line.substr(0, doc); // a declaration may go on in the next line
        if (std::regex_search(code, match, FIELD)) {
            field = match[1];
            record->fields[field];
            code.clear();
        }
        if (doc != std::string::npos && line.compare(doc, 4, "///<") == 0) {
            record->fields[field] += line.substr(doc + 4);
        }
    }
    static const std::regex BRACKET("\\[[^\\]]*\\]");
    for (auto& [name, documented] : records) {
        for (const auto& [member, text] : documented.fields) {
            for (std::sregex_iterator at(text.begin(), text.end(), BRACKET), end; at != end; ++at) {
                documented.facts.push_back(at->str());
            }
        }
    }
    return records;
}

const std::map<std::string, Documented>& header() {
    static const std::map<std::string, Documented> records = readHeader();
    return records;
}

std::string range(schema::WireSize size) {
    const std::string max = std::to_string(size.max) + (size.max == 1 ? " byte" : " bytes");
    return size.min == size.max ? max : std::to_string(size.min) + " to " + max;
}

schema::WireSize wireSize(const schema::Field& field) {
    switch (field.kind) {
    case Kind::Scalar:
        return {field.width, field.width};
    case Kind::Bytes:
        return {0, field.bound};
    case Kind::String:
        return {5, 4 + field.bound};
    case Kind::Record:
        return schema::wireSize(*field.type, 0);
    case Kind::RecordArray:
        return {0, field.bound * schema::wireSize(*field.type, 0).max};
    case Kind::Union:
        break;
    }
    size_t max = 0;
    for (const schema::Command& command : schema::commands()) {
        max = std::max(max, schema::wireSize(*command.type, 0).max);
    }
    return {0, max};
}

/// The facts of a field as the header writes them.
std::string facts(const schema::Type& type, const schema::Field& field) {
    std::string text = "[" + range(wireSize(field));
    if (field.countField >= 0) {
        text += "; bound " + std::to_string(field.bound) + "; count " + type.fields[field.countField].name;
    }
    if (field.kind == Kind::String) {
        text += "; capacity " + std::to_string(field.bound);
    }
    if (field.since != 1) {
        text += "; since version " + std::to_string(field.since);
    }
    if (field.defaultValue != 0) {
        text += "; default " + std::to_string(field.defaultValue);
    }
    return text + "]";
}

std::string wireLine(const schema::Type& type) {
    std::string text = "Wire: ";
    for (uint32_t version = type.currentVersion; version >= 1; --version) {
        text += range(schema::wireSize(type, version)) + " at version " + std::to_string(version);
        text += version > 1 ? ", " : ".";
    }
    return text;
}

class HeaderFacts : public testing::TestWithParam<const schema::Type*> {
protected:
    const schema::Type& type = *GetParam();
    const Documented& documented = header().at(type.name);
};

} // namespace

TEST_P(HeaderFacts, FieldsAreThoseOfTheTable) {
    std::set<std::string> inTable = {"maxWireSize"};
    for (const schema::Field& field : type) {
        inTable.insert(field.name);
    }
    std::set<std::string> inHeader = {"maxWireSize"};
    for (const auto& [field, text] : documented.fields) {
        inHeader.insert(field);
    }
    EXPECT_EQ(inHeader, inTable);
}

TEST_P(HeaderFacts, EachFieldStatesItsFactsAndNoOthers) {
    std::multiset<std::string> expected;
    for (const schema::Field& field : type) {
        const std::string fact = facts(type, field);
        expected.insert(fact);
        const auto found = documented.fields.find(field.name);
        ASSERT_NE(found, documented.fields.end()) << field.name;
        const std::string& comment = found->second;
        EXPECT_NE(comment.find(fact), std::string::npos)
            << field.name << " should state " << fact << " but says:" << comment;
        EXPECT_GT(comment.size(), fact.size() + 5) << field.name << " has no meaning";
    }
    EXPECT_EQ(std::multiset<std::string>(documented.facts.begin(), documented.facts.end()), expected);
}

TEST_P(HeaderFacts, WireSizesAreStatedPerVersion) {
    EXPECT_NE(documented.comment.find(wireLine(type)), std::string::npos) << "should state\n"
                                                                          << wireLine(type) << "\nbut says\n"
                                                                          << documented.comment;
}

INSTANTIATE_TEST_SUITE_P(Record, HeaderFacts,
                         testing::ValuesIn(schema::types().begin(), schema::types().end()),
                         [](const auto& type) { return std::string(type.param->name); });

TEST(HeaderFacts, EveryRecordInTheHeaderHasATable) {
    std::set<std::string> expected = {"CSRelayMsgBody"};
    for (const schema::Type* type : schema::types()) {
        expected.insert(type->name);
    }
    std::set<std::string> found;
    for (const auto& [name, documented] : header()) {
        found.insert(name);
    }
    EXPECT_EQ(found, expected);
}

TEST(HeaderFacts, UnionHasTheMembersOfTheCommandTable) {
    std::set<std::string> expected = {"maxWireSize"};
    for (const schema::Command& command : schema::commands()) {
        expected.insert(command.name);
        EXPECT_GT(header().at("CSRelayMsgBody").fields.at(command.name).size(), 5u) << command.name;
    }
    std::set<std::string> found;
    for (const auto& [name, text] : header().at("CSRelayMsgBody").fields) {
        if (name.rfind("st", 0) == 0 || name == "maxWireSize") {
            found.insert(name);
        }
    }
    EXPECT_EQ(found, expected);
}

TEST(HeaderFacts, CommandConstantsAreThoseOfTheCommandTable) {
    static const std::regex CONSTANT("inline constexpr uint8_t (\\w+) = (\\d+);");
    std::map<int, std::string> found;
    for (const std::string& line : headerLines()) {
        std::smatch match;
        if (std::regex_search(line, match, CONSTANT)) {
            EXPECT_TRUE(found.emplace(std::stoi(match[2]), match[1]).second) << line;
        }
    }
    std::map<int, std::string> expected;
    for (const schema::Command& command : schema::commands()) {
        expected[command.id] = command.name;
    }
    EXPECT_EQ(found, expected);
}
