/// @file
/// JSON of messages and back.
#include "tests/tool/Messages.h"
#include "tests/tool/Program.h"
#include "tools/relaymsg/JsonParse.h"
#include "tools/relaymsg/JsonText.h"
#include "tools/relaymsg/MessageJson.h"

#include <gtest/gtest.h>

namespace {

using namespace cs_relay_msg;
using nlohmann::json;

std::string jsonOf(const std::string& wire) {
    std::string text;
    relaymsg::appendJson(text, wire);
    return text;
}

std::string wireOf(const std::string& text, uint32_t cutVersion = 0) {
    static const auto message = std::make_unique<CSRelayMsg>();
    static std::vector<char> room(CSRelayMsg::maxWireSize);
    std::memset(static_cast<void*>(message.get()), 0xa5, sizeof(*message)); // what is not set shows
    relaymsg::readMessage(text, *message);
    size_t size = 0;
    EXPECT_EQ(message->pack(room.data(), room.size(), &size,
                            cutVersion != 0 ? cutVersion : message->stHead.bVersion),
              BIX_OK);
    return {room.data(), size};
}

/// What is said of a text that is refused: the path and the sentence.
std::string refusal(const std::string& text) {
    try {
        wireOf(text);
    } catch (const relaymsg::JsonFault& fault) {
        return fault.path + " " + fault.sentence;
    }
    return "nothing is wrong";
}

/// The message @p wire as JSON with @p change made to it, and what is said of it.
template <class Change>
std::string refusalOf(const std::string& wire, Change change) {
    json value = json::parse(jsonOf(wire));
    change(value);
    return refusal(value.dump());
}

const std::string LOGIN = wire::login("abc");

std::string input(uint8_t version) {
    return wire::head(cmd::stRelayInputing, version) + wire::data(3) + (version > 1 ? "\x07" : "");
}

TEST(JsonText, namesEachFieldAndItsRecord) {
    EXPECT_EQ(jsonOf(wire::heartBeat()),
              R"({"stHead":{"dwUserID":1001,"dwRoomID":7,"bVersion":3,"wAsyncID":258,"bCmdId":184},)"
              R"("stBody":{"stCSRelayMsgHeartBeatReq":{"dwUnused":0}}})");
}

TEST(JsonText, showsEachKindOfValue) {
    EXPECT_EQ(
        json::parse(jsonOf(input(3)))["stBody"],
        json::parse(R"({"stRelayInputing": {"stRelayData": {"dwObjectId": 1, "wRelayLen": 3,)"
                    R"("szRelayBuf": "787878", "bUserStatusFlag": 1, "wSequance": 2}, "bRepeatCount": 7}})"));
    const std::string relogin = wire::head(cmd::stRelayReloginNotify) + wire::big(1, 4) + wire::big(~0ull, 8);
    EXPECT_NE(jsonOf(relogin).find(R"("ullQuestion":"18446744073709551615")"), std::string::npos);
    const std::string stop = wire::head(cmd::stRelayStopRes) + wire::big(~0ull, 4) + wire::big(~0ull, 4);
    EXPECT_NE(jsonOf(stop).find(R"("iResult":-1,"dwReserve":4294967295)"), std::string::npos);
    const std::string pack =
        wire::head(cmd::stRelayInputMulty) + wire::big(2, 1) + wire::data(0) + wire::data(1);
    EXPECT_EQ(json::parse(jsonOf(pack))["stBody"]["stRelayInputMulty"]["astRelayData"].size(), 2u);
}

TEST(JsonText, leavesOutWhatTheVersionDoesNotCarry) {
    EXPECT_NE(jsonOf(input(2)).find("bRepeatCount"), std::string::npos);
    EXPECT_EQ(jsonOf(input(1)).find("bRepeatCount"), std::string::npos);
}

TEST(JsonText, showsAnUnknownCommandAsAHeadWithoutABody) {
    EXPECT_EQ(jsonOf(wire::head(0)),
              R"({"stHead":{"dwUserID":1001,"dwRoomID":7,"bVersion":3,"wAsyncID":258,"bCmdId":0}})");
}

TEST(JsonText, keepsHostileTextHarmless) {
    const std::string text = jsonOf(wire::login("\x1b[2J\n\t\r\"\\\xe2\x80\xae\xc2\x9b\x7f\xc3\xa4"));
    EXPECT_NE(text.find(R"("szSigBuf":"\u001b[2J\n\t\r\"\\\u202e\u009b\u007f)"
                        "\xc3\xa4\""),
              std::string::npos)
        << text;
    EXPECT_NE(jsonOf(wire::login("a\xff")).find(R"("szSigBuf":{"hex":"61ff"})"), std::string::npos);
}

TEST(MessageJson, makesTheSameBytesOfEveryMessage) {
    Messages messages(1);
    for (int round = 0; round < 20; ++round) {
        for (int command = 0; command < 256; ++command) {
            const bool known = schema::findCommand(command) != nullptr;
            for (uint8_t version = 1; version <= 3 && (known || round == 0); ++version) {
                const std::string wire = messages.make(static_cast<uint8_t>(command), version);
                ASSERT_EQ(wireOf(jsonOf(wire)), wire) << jsonOf(wire);
            }
        }
    }
    EXPECT_TRUE(wireOf(jsonOf(wire::largest())) == wire::largest());
}

TEST(MessageJson, makesWhatTheLibraryMakesForEachVersion) {
    const auto record = std::make_unique<CSRelayMsg>();
    std::vector<char> room(CSRelayMsg::maxWireSize);
    Messages messages(2);
    for (const schema::Command& command : schema::commands()) {
        for (uint8_t version = 1; version <= 3; ++version) {
            const std::string wire = messages.make(command.id, version);
            ASSERT_EQ(record->unpack(wire.data(), wire.size()), BIX_OK);
            for (uint32_t cut = 1; cut <= 3; ++cut) {
                size_t size = 0;
                ASSERT_EQ(record->pack(room.data(), room.size(), &size, cut), BIX_OK);
                EXPECT_EQ(wireOf(jsonOf(wire), cut), std::string(room.data(), size)) << command.name << cut;
            }
        }
    }
}

TEST(MessageJson, takesMembersInAnyOrder) {
    EXPECT_EQ(wireOf(R"({"stBody":{"stRelayLoginReq":{"dwReserve":0,"szSigBuf":"abc"}},"stHead":)"
                     R"({"bCmdId":161,"wAsyncID":258,"bVersion":3,"dwRoomID":7,"dwUserID":1001}})"),
              LOGIN);
}

TEST(MessageJson, countsWhatIsNotCounted) {
    json value = json::parse(jsonOf(input(3)));
    value["stBody"]["stRelayInputing"]["stRelayData"].erase("wRelayLen");
    EXPECT_EQ(wireOf(value.dump()), input(3));
}

TEST(MessageJson, takesATextInHexadecimalDigits) {
    json value = json::parse(jsonOf(LOGIN));
    value["stBody"]["stRelayLoginReq"]["szSigBuf"] = {{"hex", "616263"}};
    EXPECT_EQ(wireOf(value.dump()), LOGIN);
}

TEST(MessageJson, refusesAWrongCount) {
    EXPECT_EQ(
        refusalOf(input(3), [](json& m) { m["stBody"]["stRelayInputing"]["stRelayData"]["wRelayLen"] = 4; }),
        ".stBody.stRelayInputing.stRelayData.wRelayLen is 4, but szRelayBuf has 3 bytes. "
        "Leave the count out, and it is right.");
}

TEST(MessageJson, refusesWhatIsNotThereAndWhatIsTooMuch) {
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["stHead"].erase("dwRoomID"); }),
              ".stHead.dwRoomID is missing.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m.erase("stHead"); }), ".stHead is missing.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m.erase("stBody"); }), ".stBody is missing.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["stBody"] = json::object(); }),
              ".stBody.stRelayLoginReq is missing.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["stHead"]["dwRoomId"] = 1; }),
              ".stHead.dwRoomId is no field of CSRelayMsgHead.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["a b"] = 1; }), "[\"a b\"] is no field of CSRelayMsg.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["stHead"]["bCmdId"] = 162; }),
              ".stBody.stRelayLoginReq is not the body of command 162, which is stRelayLoginRes.");
    EXPECT_EQ(refusalOf(LOGIN, [](json& m) { m["stHead"]["bCmdId"] = 1; }),
              ".stBody belongs to no command: 1 in .stHead.bCmdId is unknown, and such a message is a head "
              "without a body.");
    EXPECT_EQ(refusalOf(input(3), [](json& m) { m["stHead"]["bVersion"] = 1; }),
              ".stBody.stRelayInputing.bRepeatCount came with version 2; a message of version 1 does not "
              "carry it.");
    EXPECT_EQ(refusalOf(input(1), [](json& m) { m["stHead"]["bVersion"] = 2; }),
              ".stBody.stRelayInputing.bRepeatCount is missing.");
}

TEST(MessageJson, refusesValuesOutOfRange) {
    const std::string UINT32 = "it must be a whole number from 0 to 4294967295.";
    const auto user = [](const char* text) {
        return refusalOf(LOGIN, [=](json& m) { m["stHead"]["dwUserID"] = json::parse(text); });
    };
    EXPECT_EQ(user("4294967295"), "nothing is wrong");
    EXPECT_EQ(user("4294967296"), ".stHead.dwUserID is the number 4294967296; " + UINT32);
    EXPECT_EQ(user("-1"), ".stHead.dwUserID is the number -1; " + UINT32);
    EXPECT_EQ(user("\"1\""), ".stHead.dwUserID is a string; " + UINT32);
    EXPECT_EQ(user("true"), ".stHead.dwUserID is true or false; " + UINT32);
    EXPECT_EQ(user("null"), ".stHead.dwUserID is null; " + UINT32);
    for (const char* number : {"1.0", "1e3", "0.5", "99999999999999999999"}) {
        EXPECT_EQ(user(number),
                  ".stHead.dwUserID is a number with a fraction or an exponent, or a very large one; " +
                      UINT32);
    }
    const auto result = [](int64_t value) {
        const std::string stop = wire::head(cmd::stRelayStopRes) + wire::big(0, 8);
        return refusalOf(stop, [=](json& m) { m["stBody"]["stRelayStopRes"]["iResult"] = value; });
    };
    EXPECT_EQ(result(-2147483648ll), "nothing is wrong");
    EXPECT_EQ(result(2147483647), "nothing is wrong");
    EXPECT_NE(result(-2147483649ll).find("from -2147483648 to 2147483647."), std::string::npos);
    EXPECT_NE(result(2147483648ll).find("from -2147483648 to 2147483647."), std::string::npos);
    for (const int version : {0, 4, 255}) {
        EXPECT_EQ(refusalOf(LOGIN, [=](json& m) { m["stHead"]["bVersion"] = version; }),
                  ".stHead.bVersion is " + std::to_string(version) + "; versions are 1 to 3.");
    }
}

TEST(MessageJson, refusesOtherThanADecimalStringFor64Bits) {
    const std::string relogin = wire::head(cmd::stRelayReloginNotify) + wire::big(0, 4) + wire::big(0, 8);
    const auto question = [&](const json& value) {
        return refusalOf(relogin,
                         [&](json& m) { m["stBody"]["stRelayReloginNotify"]["ullQuestion"] = value; });
    };
    EXPECT_EQ(question("18446744073709551615"), "nothing is wrong");
    for (const char* text : {"18446744073709551616", "", "-1", "+1", " 1", "1 ", "0x1", "1.0"}) {
        EXPECT_NE(question(text).find("ullQuestion must be a string of the digits"), std::string::npos)
            << text;
    }
    EXPECT_NE(question(5).find("is the number 5; it must be a string of the digits"), std::string::npos);
}

TEST(MessageJson, refusesTextsAndArraysThatDoNotFit) {
    const auto signature = [](const json& value) {
        return refusalOf(LOGIN, [&](json& m) { m["stBody"]["stRelayLoginReq"]["szSigBuf"] = value; });
    };
    const std::string PATH = ".stBody.stRelayLoginReq.szSigBuf";
    EXPECT_EQ(signature(std::string(127, 'x')), "nothing is wrong");
    EXPECT_EQ(signature(std::string(128, 'x')), PATH + " has 128 bytes of text; it holds at most 127.");
    EXPECT_EQ(signature(std::string("a\0b", 3)), PATH + " holds a NUL, which no text can.");
    EXPECT_EQ(signature({{"hex", "00"}}), PATH + " holds a NUL, which no text can.");
    EXPECT_EQ(signature({{"hex", "abc"}}),
              PATH + ".hex must be a string of hexadecimal digits, two for each byte.");
    EXPECT_EQ(signature({{"hex", "zz"}}),
              PATH + ".hex must be a string of hexadecimal digits, two for each byte.");
    EXPECT_NE(signature({{"hex", "61"}, {"more", 1}}).find("is an object; it must be a string"),
              std::string::npos);
    EXPECT_NE(signature(5).find("is the number 5; it must be a string"), std::string::npos);
    const auto payload = [](const json& value) {
        return refusalOf(input(3), [&](json& m) {
            m["stBody"]["stRelayInputing"]["stRelayData"].erase("wRelayLen");
            m["stBody"]["stRelayInputing"]["stRelayData"]["szRelayBuf"] = value;
        });
    };
    EXPECT_EQ(payload(std::string(2048, '0')), "nothing is wrong");
    EXPECT_EQ(payload(std::string(2050, '0')),
              ".stBody.stRelayInputing.stRelayData.szRelayBuf has 1025 bytes; it holds at most 1024.");
    EXPECT_NE(payload(json::array()).find("is an array; it must be a string of hex"), std::string::npos);
    const std::string multy = wire::head(cmd::stRelayInputMulty) + wire::big(1, 1) + wire::data(1);
    const auto inputs = [&](size_t count) {
        return refusalOf(multy, [&](json& m) {
            json& body = m["stBody"]["stRelayInputMulty"];
            body.erase("bFrameCount");
            body["astRelayData"] = json(count, body["astRelayData"][0]);
        });
    };
    EXPECT_EQ(inputs(10), "nothing is wrong");
    EXPECT_EQ(inputs(11), ".stBody.stRelayInputMulty.astRelayData has 11 elements; it holds at most 10.");
    EXPECT_EQ(
        refusalOf(multy,
                  [](json& m) { m["stBody"]["stRelayInputMulty"]["astRelayData"][0]["wSequance"] = ""; }),
        ".stBody.stRelayInputMulty.astRelayData[0].wSequance is a string; it must be a whole number from 0 "
        "to 65535.");
}

TEST(MessageJson, refusesTwoMembersOfOneName) {
    EXPECT_EQ(refusal(R"({"stHead":{"dwUserID":1,"dwUserID":1}})"), ".stHead.dwUserID is there twice.");
    EXPECT_EQ(refusal(R"({"stHead":{},"stHead":{}})"), ".stHead is there twice.");
    EXPECT_EQ(refusal(R"({"a":[1,{"b":1},{"b":1,"b":2}]})"), ".a[2].b is there twice.");
    EXPECT_EQ(refusal(R"([{"b":1,"b":2}])"), ".[0].b is there twice.");
}

TEST(MessageJson, refusesWhatIsNoJsonObject) {
    EXPECT_EQ(refusal("[]"), " is an array; it must be an object.");
    EXPECT_EQ(refusal("5"), " is the number 5; it must be an object.");
    for (const char* text : {"", "{", "{\"a\":}", "{} x", "{'a':1}", "{\"a\":1,}", "{\"a\":01}", "\x1b[2J",
                             "{\"a\":\"\xff\"}", "NaN"}) {
        const std::string said = refusal(text);
        EXPECT_EQ(said.substr(0, 29), " is no JSON: line 1 of it, co") << text << said;
        EXPECT_EQ(said.find('\x1b'), std::string::npos);
    }
    EXPECT_NE(refusal("{\n \"a\": x}").find("line 2 of it, column 7:"), std::string::npos)
        << refusal("{\n \"a\": x}");
    EXPECT_NE(refusal(std::string(100000, '[')).find("is nested too deeply"), std::string::npos);
    EXPECT_EQ(refusal("{\"a\":1e999}"), " holds a number of a size that nothing here has.");
}

std::string lines(const std::string& text) {
    return std::to_string(std::count(text.begin(), text.end(), '\n'));
}

TEST(JsonProgram, givesBackTheSampleSession) {
    const Outcome decoded = runTool({"decode", "--json", CAPTURES "/session.bin"});
    EXPECT_EQ(decoded.status, 0);
    EXPECT_EQ(lines(decoded.out), std::to_string(wire::sessionMessages().size()));
    const Outcome encoded = runTool({"encode"}, decoded.out);
    EXPECT_EQ(encoded.status, 0);
    EXPECT_EQ(encoded.err, "");
    EXPECT_TRUE(encoded.out == wire::session());
    const Outcome hex = runTool({"encode", "--hex"}, decoded.out);
    EXPECT_EQ(lines(hex.out), lines(decoded.out));
    EXPECT_TRUE(runTool({"decode", "--json", "--format", "hex"}, hex.out).out == decoded.out);
}

TEST(JsonProgram, packsForAnotherVersion) {
    const Outcome encoded = runTool({"encode", "--hex", "--cut-version", "1"}, jsonOf(input(3)));
    EXPECT_EQ(encoded.out, runTool({"encode", "--hex"}, jsonOf(input(1))).out);
    EXPECT_EQ(runTool({"encode", "--cut-version", "4"}, jsonOf(input(3))).status, 1);
    EXPECT_EQ(runTool({"encode", "--cut-version", "0"}, jsonOf(input(3))).status, 1);
}

TEST(JsonProgram, takesValuesOverSeveralLines) {
    const std::string pretty = json::parse(jsonOf(LOGIN)).dump(2);
    EXPECT_EQ(runTool({"encode"}, "\n" + pretty + pretty + "\r\n  " + jsonOf(LOGIN)).out,
              LOGIN + LOGIN + LOGIN);
    const std::string tricky = jsonOf(wire::login("}\"\\{"));
    EXPECT_EQ(runTool({"encode"}, tricky + tricky).out, wire::login("}\"\\{") + wire::login("}\"\\{"));
}

TEST(JsonProgram, tellsWhereItRefused) {
    const Outcome wrong = runTool({"encode"}, jsonOf(LOGIN) + "\n\n{\"stHead\": 5}\n" + jsonOf(LOGIN));
    EXPECT_EQ(wrong.status, 6);
    EXPECT_EQ(wrong.out, LOGIN);
    EXPECT_EQ(wrong.err, "relaymsg: standard input: message 2, which begins on line 3, cannot be encoded.\n"
                         "  .stHead is the number 5; it must be an object.\n");
    EXPECT_EQ(runTool({"encode"}, "{\"a\": 1").status, 6);
    EXPECT_EQ(runTool({"encode"}, "").status, 2);
    EXPECT_EQ(runTool({"encode", "/nowhere/at/all"}).status, 2);
    const Outcome endless = runTool({"encode"}, "{" + std::string(5 << 20, ' '));
    EXPECT_EQ(endless.status, 6);
    EXPECT_NE(endless.err.find("No message is so long"), std::string::npos);
}

TEST(JsonProgram, printsNoLineForAMessageThatCannotBeDecoded) {
    const Outcome outcome = runTool({"decode", "--json"}, LOGIN + LOGIN.substr(0, 20));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, jsonOf(LOGIN) + "\n");
    const Outcome unknown = runTool({"decode", "--json"}, wire::head(1));
    EXPECT_EQ(unknown.status, 4);
    EXPECT_EQ(runTool({"encode"}, unknown.out).out, wire::head(1));
}

TEST(JsonProgram, beginsNewMessagesOfEveryCommand) {
    const auto record = std::make_unique<CSRelayMsg>();
    for (const schema::Command& command : schema::commands()) {
        const Outcome made = runTool({"new", command.name});
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.out, runTool({"new", std::to_string(command.id)}).out);
        const std::string wire = wireOf(made.out);
        record->construct();
        record->stHead.bCmdId = command.id;
        record->stBody.construct(command.id);
        std::vector<char> room(20000);
        size_t size = 0;
        ASSERT_EQ(record->pack(room.data(), room.size(), &size), BIX_OK);
        EXPECT_EQ(wire, std::string(room.data(), size));
    }
    EXPECT_EQ(runTool({"new", "stRelayInputing", "--cut-version", "1"}).out.find("bRepeatCount"),
              std::string::npos);
    EXPECT_NE(runTool({"new", "--list"}).out.find("161  stRelayLoginReq\n"), std::string::npos);
    for (const char* name : {"nothing", "0", "256", "161x", ""}) {
        EXPECT_EQ(runTool({"new", name}).status, 1) << name;
    }
    EXPECT_EQ(runTool({"new"}).status, 1);
}

} // namespace
