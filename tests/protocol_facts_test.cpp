// The library's tables against the list typed by hand, in both directions.
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/protocol_facts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <set>
#include <string>

namespace schema = cs_relay_msg::schema;
using protocol_facts::COMMANDS;
using protocol_facts::FieldFact;
using protocol_facts::RecordFact;
using protocol_facts::RECORDS;
using schema::Kind;

namespace {

std::string cppType(const schema::Field& field) {
    switch (field.kind) {
    case Kind::Scalar:
        return std::string(field.isSigned ? "int" : "uint") + std::to_string(field.width * 8) + "_t";
    case Kind::Bytes:
        return "uint8_t[]";
    case Kind::String:
        return "char[]";
    case Kind::Record:
        return field.type->name;
    case Kind::RecordArray:
        return std::string(field.type->name) + "[]";
    case Kind::Union:
        break;
    }
    return "CSRelayMsgBody";
}

std::string textForm(const schema::Field& field) {
    if (field.kind != Kind::Scalar) {
        EXPECT_EQ(field.format(), nullptr);
    }
    switch (field.kind) {
    case Kind::Scalar:
        return field.format();
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
    return "union";
}

const schema::Type* findType(const std::string& name) {
    for (const schema::Type* type : schema::types()) {
        if (name == type->name) {
            return type;
        }
    }
    return nullptr;
}

class Facts : public testing::TestWithParam<RecordFact> {
protected:
    const RecordFact& fact = GetParam();
    const schema::Type* type = findType(fact.name);

    void SetUp() override { ASSERT_NE(type, nullptr) << "the library has no such type"; }
};

} // namespace

TEST_P(Facts, SizeInMemory) {
    EXPECT_EQ(type->size, fact.memory);
}

TEST_P(Facts, CurrentVersion) {
    EXPECT_EQ(type->currentVersion, fact.sizes.size());
}

TEST_P(Facts, WireSizeAtEachVersion) {
    for (uint32_t version = 1; version <= fact.sizes.size(); ++version) {
        SCOPED_TRACE(version);
        const schema::WireSize size = schema::wireSize(*type, version);
        EXPECT_EQ(size.min, fact.sizes[version - 1].min);
        EXPECT_EQ(size.max, fact.sizes[version - 1].max);
    }
    EXPECT_EQ(schema::wireSize(*type, 0).max, fact.sizes.back().max);
    EXPECT_EQ(schema::wireSize(*type, UINT32_MAX).min, fact.sizes.back().min);
}

TEST_P(Facts, FieldsInOrder) {
    ASSERT_EQ(type->fieldCount, fact.fields.size());
    uint32_t offset = 0;
    bool allZero = true;
    for (size_t i = 0; i < type->fieldCount; ++i) {
        const schema::Field& field = type->fields[i];
        const FieldFact& expected = fact.fields[i];
        SCOPED_TRACE(expected.name);
        EXPECT_STREQ(field.name, expected.name);
        EXPECT_EQ(field.label, "[" + std::string(expected.name) + "]");
        EXPECT_EQ(field.labelLength, std::string(field.label).size());
        EXPECT_EQ(cppType(field), expected.type);
        EXPECT_EQ(field.bound, expected.bound);
        EXPECT_EQ(field.countField < 0 ? "" : type->fields[field.countField].name,
                  std::string(expected.count));
        EXPECT_LT(field.countField, static_cast<int>(i)) << "the count is written before its array";
        EXPECT_EQ(field.since, expected.since);
        EXPECT_EQ(field.defaultValue, expected.defaultValue);
        EXPECT_EQ(textForm(field), expected.text);
        EXPECT_EQ(field.offset, offset) << "fields lie back to back";
        offset += static_cast<uint32_t>(field.size());
        allZero = allZero && field.kind != Kind::String && field.kind != Kind::Union &&
                  field.defaultValue == 0 && (field.type == nullptr || field.type->zeroDefault);
    }
    EXPECT_EQ(offset, fact.memory);
    EXPECT_EQ(type->zeroDefault, allZero);
}

INSTANTIATE_TEST_SUITE_P(Record, Facts, testing::ValuesIn(RECORDS),
                         [](const auto& record) { return std::string(record.param.name); });

TEST(AllFacts, NoTypeIsMissingAndNoneIsExtra) {
    std::set<std::string> library;
    for (const schema::Type* type : schema::types()) {
        EXPECT_TRUE(library.insert(type->name).second) << type->name << " stands twice";
    }
    std::set<std::string> facts;
    for (const RecordFact& fact : RECORDS) {
        facts.insert(fact.name);
    }
    EXPECT_EQ(library, facts);
    EXPECT_EQ(facts.size(), 26u);
    EXPECT_STREQ(schema::types()[schema::types().size - 1]->name, "CSRelayMsg");
}

TEST(AllFacts, TypeStandsBehindThoseThatItContains) {
    std::set<const schema::Type*> seen;
    for (const schema::Type* type : schema::types()) {
        for (const schema::Field& field : *type) {
            EXPECT_TRUE(field.type == nullptr || seen.count(field.type) == 1) << type->name << field.label;
        }
        seen.insert(type);
    }
}

TEST(AllFacts, CommandTable) {
    const auto commands = schema::commands();
    ASSERT_EQ(commands.size, COMMANDS.size());
    EXPECT_EQ(COMMANDS.size(), 25u);
    for (size_t i = 0; i < commands.size; ++i) {
        SCOPED_TRACE(COMMANDS[i].member);
        EXPECT_EQ(+commands[i].id, +COMMANDS[i].id);
        EXPECT_STREQ(commands[i].name, COMMANDS[i].member);
        EXPECT_EQ(commands[i].label, "[" + std::string(COMMANDS[i].member) + "]");
        EXPECT_EQ(commands[i].labelLength, std::string(commands[i].label).size());
        EXPECT_STREQ(commands[i].type->name, COMMANDS[i].record);
        EXPECT_EQ(commands[i].type, findType(COMMANDS[i].record));
    }
}

TEST(AllFacts, CommandNameAndLookUpOfEveryId) {
    std::map<long long, std::string> members;
    for (const auto& command : COMMANDS) {
        members[command.id] = command.member;
    }
    for (long long id = -300; id <= 600; ++id) {
        SCOPED_TRACE(id);
        const auto found = members.find(id);
        if (found != members.end()) {
            EXPECT_STREQ(cs_relay_msg::commandName(id), found->second.c_str());
            ASSERT_NE(schema::findCommand(id), nullptr);
            EXPECT_EQ(schema::findCommand(id)->id, id);
        } else {
            EXPECT_EQ(cs_relay_msg::commandName(id), nullptr);
            EXPECT_EQ(schema::findCommand(id), nullptr);
        }
    }
    for (const long long id : {LLONG_MIN, LLONG_MAX, 161LL + (1LL << 32), 161LL - (1LL << 32)}) {
        EXPECT_EQ(cs_relay_msg::commandName(id), nullptr) << id;
    }
}

TEST(AllFacts, CommandConstants) {
    namespace cmd = cs_relay_msg::cmd;
    static_assert(cmd::stRelayLoginReq == 161);
    static_assert(cmd::stRelayLoginRes == 162);
    static_assert(cmd::stRelayStartReq == 163);
    static_assert(cmd::stRelayStartRes == 164);
    static_assert(cmd::stRelayInputing == 165);
    static_assert(cmd::stRelayLockStep == 167);
    static_assert(cmd::stRelaySyncReq == 168);
    static_assert(cmd::stRelaySyncRes == 169);
    static_assert(cmd::stRelayMsgPack == 170);
    static_assert(cmd::stRelayStopReq == 174);
    static_assert(cmd::stRelayStopRes == 175);
    static_assert(cmd::stCSRelaySeekPlayReq == 182);
    static_assert(cmd::stCSRelaySeekPlayRes == 183);
    static_assert(cmd::stCSRelayMsgHeartBeatReq == 184);
    static_assert(cmd::stCSRelayMsgHeartBeatRes == 185);
    static_assert(cmd::stRelayBroadCastReq == 186);
    static_assert(cmd::stRelayBroadCastRes == 187);
    static_assert(cmd::stRelayInputCheckReq == 188);
    static_assert(cmd::stRelayBroadCastCheckReq == 189);
    static_assert(cmd::stRelayCheckReq == 190);
    static_assert(cmd::stCSRelayMsgStatUserReq == 191);
    static_assert(cmd::stCSRelayMsgStatUserRes == 192);
    static_assert(cmd::stRelayReloginNotify == 193);
    static_assert(cmd::stRelayError == 194);
    static_assert(cmd::stRelayInputMulty == 195);
}

namespace {
template <class T>
void expectSizes(const char* name) {
    const auto fact = std::find_if(RECORDS.begin(), RECORDS.end(), [&](const RecordFact& record) {
        return std::string(record.name) == name;
    });
    ASSERT_NE(fact, RECORDS.end()) << name;
    EXPECT_EQ(T::maxWireSize, fact->sizes.back().max) << name;
    EXPECT_EQ(sizeof(T), fact->memory) << name;
    EXPECT_EQ(alignof(T), 1u) << name;
}
} // namespace

TEST(AllFacts, SizeConstantsInTheHeader) {
    using namespace cs_relay_msg;
    expectSizes<CSRelayMsgHead>("CSRelayMsgHead");
    expectSizes<CSRelayMsgPack>("CSRelayMsgPack");
    expectSizes<CSRelayData>("CSRelayData");
    expectSizes<CSRelayInput>("CSRelayInput");
    expectSizes<CSRelayInputMulty>("CSRelayInputMulty");
    expectSizes<CSRelayFrame>("CSRelayFrame");
    expectSizes<CSRelayFramePack>("CSRelayFramePack");
    expectSizes<CSRelayMsgLoginReq>("CSRelayMsgLoginReq");
    expectSizes<CSRelayMsgLoginRes>("CSRelayMsgLoginRes");
    expectSizes<CSRelayMsgReloginNotify>("CSRelayMsgReloginNotify");
    expectSizes<CSRelayMsgHeartBeatReq>("CSRelayMsgHeartBeatReq");
    expectSizes<CSRelayMsgHeartBeatRes>("CSRelayMsgHeartBeatRes");
    expectSizes<CSRelayMsgStopReq>("CSRelayMsgStopReq");
    expectSizes<CSRelayMsgStopRes>("CSRelayMsgStopRes");
    expectSizes<CSRelayError>("CSRelayError");
    expectSizes<CSRelayMsgStartReq>("CSRelayMsgStartReq");
    expectSizes<CSRelayMsgStartRes>("CSRelayMsgStartRes");
    expectSizes<CreateRoomUserInfo>("CreateRoomUserInfo");
    expectSizes<CSRelayMsgSyncReq>("CSRelayMsgSyncReq");
    expectSizes<CSRelayMsgSyncRes>("CSRelayMsgSyncRes");
    expectSizes<ReplayPieceInof>("ReplayPieceInof");
    expectSizes<CSRelaySeekPlayReq>("CSRelaySeekPlayReq");
    expectSizes<CSRelaySeekPlayRes>("CSRelaySeekPlayRes");
    expectSizes<CSRelayStatReq>("CSRelayStatReq");
    expectSizes<CSRelayStatRes>("CSRelayStatRes");
    expectSizes<CSRelayMsg>("CSRelayMsg");
    EXPECT_EQ(CSRelayMsgBody::maxWireSize, 516546u);
    EXPECT_EQ(sizeof(CSRelayMsgBody), 516546u);
}
