/// @file
/// The protocol as JSON, as Markdown and as a dissector, its committed copies, and what is said of changes.
#include "protocol/Schema.h"
#include "tests/tool/Program.h"
#include "tools/relaymsg/SchemaJson.h"
#include "tools/relaymsg/SchemaMarkdown.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

using nlohmann::json;

json current() {
    return relaymsg::schemaJson();
}

/// The entry of @p list with this name.
json& named(json& list, const char* name) {
    for (json& entry : list) {
        if (entry["name"] == name) {
            return entry;
        }
    }
    throw std::invalid_argument(name);
}

json& type(json& schema, const char* name) {
    return named(schema["types"], name);
}

json& field(json& schema, const char* typeName, const char* name) {
    return named(type(schema, typeName)["fields"], name);
}

/// What is said when the protocol of today becomes what @p change makes of it; a change that breaks has "!".
template <class Change>
std::string said(Change change) {
    json after = current();
    change(after);
    std::string text;
    for (const auto& found : relaymsg::schemaChanges(current(), after)) {
        text += (found.breaks ? "! " : "  ") + found.sentence + "\n";
    }
    return text;
}

TEST(SchemaJson, tellsEveryTypeAndCommand) {
    const json schema = current();
    EXPECT_EQ(schema["currentVersion"], 3);
    EXPECT_EQ(schema["message"], "CSRelayMsg");
    EXPECT_EQ(schema["types"].size(), cs_relay_msg::schema::types().size);
    EXPECT_EQ(schema["commands"].size(), 25u);
    EXPECT_EQ(schema["commands"][0],
              json::parse(R"({"id":161,"name":"stRelayLoginReq","type":"CSRelayMsgLoginReq"})"));
}

TEST(SchemaJson, tellsWhatThereIsToKnowOfAField) {
    json schema = current();
    EXPECT_EQ(field(schema, "CSRelayInput", "bRepeatCount"),
              json::parse(R"({"name":"bRepeatCount","kind":"integer","since":2,"width":1,"signed":false,)"
                          R"("default":1,"text":"0x%02x"})"));
    EXPECT_EQ(field(schema, "CSRelayFrame", "astRelayData"),
              json::parse(R"({"name":"astRelayData","kind":"recordArray","since":1,"bound":100,)"
                          R"("countField":"bCount","type":"CSRelayData"})"));
    EXPECT_EQ(field(schema, "CSRelayMsgLoginReq", "szSigBuf"),
              json::parse(R"({"name":"szSigBuf","kind":"string","since":1,"bound":128})"));
    EXPECT_EQ(
        type(schema, "CSRelayFrame")["wireSize"],
        json::parse(R"({"1":{"min":5,"max":103305},"2":{"min":5,"max":103305},"3":{"min":9,"max":103309}})"));
}

TEST(SchemaJson, isTheCommittedLock) {
    EXPECT_TRUE(runTool({"schema"}).out == wire::file(SCHEMA_LOCK))
        << "`relaymsg schema --check` says what changed; if it may change, `relaymsg schema` makes the lock "
           "anew";
}

TEST(SchemaMarkdown, isTheCommittedPage) {
    EXPECT_TRUE(runTool({"schema", "--markdown"}).out == wire::file(REFERENCE_PAGE))
        << "`relaymsg schema --markdown` makes the page anew";
}

TEST(SchemaLua, isTheCommittedDissector) {
    EXPECT_TRUE(runTool({"schema", "--lua"}).out == wire::file(DISSECTOR))
        << "`relaymsg schema --lua` makes the dissector anew";
}

TEST(SchemaMarkdown, hasASectionForEachRecordAndNoDeadLink) {
    const std::string page = relaymsg::schemaMarkdown();
    std::set<std::string> anchors;
    const std::regex heading("\n#+ ([A-Za-z ]+)\n|<a id=\"(\\w+)\">");
    for (std::sregex_iterator i(page.begin(), page.end(), heading), end; i != end; ++i) {
        std::string anchor = (*i)[1].str() + (*i)[2].str();
        if ((*i)[1].matched) {
            for (char& c : anchor) {
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            }
        }
        anchors.insert(anchor);
    }
    EXPECT_EQ(anchors.size(), 2 + cs_relay_msg::schema::types().size + 25);
    const std::regex link("\\]\\(#(\\w+)\\)");
    size_t links = 0;
    for (std::sregex_iterator i(page.begin(), page.end(), link), end; i != end; ++i, ++links) {
        EXPECT_EQ(anchors.count((*i)[1]), 1u) << (*i)[1];
    }
    EXPECT_GT(links, 60u);
}

TEST(SchemaChanges, sayNothingOfTheSame) {
    EXPECT_EQ(said([](json&) {}), "");
    const Outcome same = runTool({"schema", "--check", SCHEMA_LOCK});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out + same.err, "");
}

TEST(SchemaChanges, breakWhereAnExistingFieldChanges) {
    const auto changed = [](const char* property, const json& value) {
        return said([&](json& s) { field(s, "CSRelayData", "szRelayBuf")[property] = value; });
    };
    EXPECT_EQ(changed("bound", 2048), "! CSRelayData.szRelayBuf: bound went from 1024 to 2048.\n");
    EXPECT_EQ(changed("countField", "wSequance"),
              "! CSRelayData.szRelayBuf: countField went from \"wRelayLen\" to \"wSequance\".\n");
    EXPECT_EQ(changed("kind", "string"),
              "! CSRelayData.szRelayBuf: kind went from \"bytes\" to \"string\".\n");
    EXPECT_EQ(changed("since", 2), "! CSRelayData.szRelayBuf: since went from 1 to 2.\n");
    EXPECT_EQ(said([](json& s) { field(s, "CSRelayInput", "bRepeatCount")["default"] = 0; }),
              "! CSRelayInput.bRepeatCount: default went from 1 to 0.\n");
    EXPECT_EQ(said([](json& s) { field(s, "CSRelayInput", "bRepeatCount")["width"] = 2; }),
              "! CSRelayInput.bRepeatCount: width went from 1 to 2.\n");
    EXPECT_EQ(said([](json& s) { field(s, "CSRelayInput", "bRepeatCount")["text"] = "%d"; }),
              "  CSRelayInput.bRepeatCount: text went from \"0x%02x\" to \"%d\".\n");
}

TEST(SchemaChanges, breakWhereFieldsMoveOrGo) {
    EXPECT_EQ(said([](json& s) {
                  std::swap(type(s, "CSRelayData")["fields"][3], type(s, "CSRelayData")["fields"][4]);
              }),
              "! CSRelayData.wSequance stands at another place.\n");
    EXPECT_EQ(said([](json& s) { type(s, "CSRelayData")["fields"].erase(4); }),
              "! CSRelayData.wSequance is gone.\n");
    EXPECT_EQ(said([](json& s) { s["types"].erase(0); }),
              "! " + current()["types"][0]["name"].get<std::string>() + " is gone.\n");
}

TEST(SchemaChanges, askForAHigherVersionOfANewField) {
    const auto add = [](uint32_t since, size_t at) {
        return said([=](json& s) {
            json& fields = type(s, "CSRelayFrame")["fields"];
            const json added = {{"name", "bNew"}, {"kind", "integer"}, {"since", since}, {"width", 1}};
            fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(at), added);
        });
    };
    EXPECT_EQ(add(4, 4), "  CSRelayFrame.bNew is new, since version 4.\n");
    EXPECT_EQ(add(4, 1), "  CSRelayFrame.bNew is new, since version 4.\n");
    EXPECT_EQ(add(3, 4), "! CSRelayFrame.bNew is new, but without a higher version: since 3.\n");
    EXPECT_EQ(said([](json& s) { s["currentVersion"] = 4; }),
              "  The current version of the protocol went from 3 to 4.\n");
    EXPECT_EQ(said([](json& s) { s["currentVersion"] = 2; }),
              "! The current version of the protocol went from 3 to 2.\n");
}

TEST(SchemaChanges, breakWhereACommandIsUsedAgain) {
    EXPECT_EQ(said([](json& s) { s["commands"][0]["type"] = "CSRelayError"; }),
              "! Command 161 (stRelayLoginReq) is used again: it was CSRelayMsgLoginReq, now it is "
              "CSRelayError.\n");
    EXPECT_EQ(said([](json& s) { s["commands"].erase(0); }), "! Command 161 (stRelayLoginReq) is gone.\n");
    EXPECT_EQ(said([](json& s) { s["commands"][0]["name"] = "stHello"; }),
              "  Command 161 (stRelayLoginReq) is now called stHello.\n");
    EXPECT_EQ(said([](json& s) {
                  s["commands"].push_back({{"id", 1}, {"name", "stNew"}, {"type", "CSRelayError"}});
              }),
              "  Command 1 (stNew) is new.\n");
}

TEST(SchemaProgram, exitsAsTheProtocolChanged) {
    json old = current();
    field(old, "CSRelayData", "szRelayBuf")["bound"] = 512;
    Outcome checked = runTool({"schema", "--check", "-"}, old.dump());
    EXPECT_EQ(checked.status, 8);
    EXPECT_EQ(checked.out, "breaks    CSRelayData.szRelayBuf: bound went from 512 to 1024.\n");
    old = current();
    old["commands"].erase(0);
    checked = runTool({"schema", "--check", "-"}, old.dump());
    EXPECT_EQ(checked.status, 7);
    EXPECT_EQ(checked.out, "harmless  Command 161 (stRelayLoginReq) is new.\n");
}

TEST(SchemaProgram, refusesWhatIsNoSchema) {
    for (const char* text : {"", "{", "[]", "5", "{}", R"({"currentVersion":3,"types":[{}],"commands":[]})",
                             R"({"currentVersion":"3","types":[],"commands":[]})",
                             R"({"currentVersion":3,"types":5,"commands":[]})"}) {
        const Outcome outcome = runTool({"schema", "--check", "-"}, text);
        EXPECT_EQ(outcome.status, 6) << text;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_EQ(runTool({"schema", "--check", "/nowhere/at/all"}).status, 2);
    EXPECT_EQ(runTool({"schema", "--check", "-", "--markdown"}).status, 1);
}

} // namespace
