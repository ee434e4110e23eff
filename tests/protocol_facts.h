/// @file
/// The protocol's facts, typed by hand. Nothing here is derived from the library's tables: this list is what
/// the tables are compared with, so correct it only when the protocol itself changes.
#ifndef KORVAN_TESTS_PROTOCOL_FACTS_H
#define KORVAN_TESTS_PROTOCOL_FACTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace protocol_facts {

struct FieldFact {
    const char* name;
    const char* type;      ///< the C++ type, `[]` for an array
    uint32_t bound;        ///< elements of an array, or capacity of a text; 1 otherwise
    const char* count;     ///< the field that counts an array's elements, or ""
    uint32_t since;        ///< the version that added the field
    uint64_t defaultValue; ///< what `construct` sets in an integer
    const char* text;      ///< the format of an integer, or "text", "bytes", "record", "records", "union"
};

struct SizeFact {
    size_t min;
    size_t max;
};

struct RecordFact {
    const char* name;
    size_t memory;               ///< bytes in memory
    std::vector<SizeFact> sizes; ///< bytes on the wire at version 1, 2, ... up to the current one
    std::vector<FieldFact> fields;
};

struct CommandFact {
    uint8_t id;
    const char* member;
    const char* record;
};

// clang-format off
inline const std::vector<RecordFact> RECORDS = {
    {"CSRelayMsgHead", 12, {{12, 12}}, {
        {"dwUserID",              "uint32_t",       1,    "",           1, 0,    "%u"},
        {"dwRoomID",              "uint32_t",       1,    "",           1, 0,    "%u"},
        {"bVersion",              "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"wAsyncID",              "uint16_t",       1,    "",           1, 0,    "%d"},
        {"bCmdId",                "uint8_t",        1,    "",           1, 0,    "0x%02x"}}},
    {"CSRelayMsgPack", 1031, {{7, 1031}}, {
        {"wSeqId",                "uint16_t",       1,    "",           1, 0,    "%d"},
        {"bCount",                "uint8_t",        1,    "",           1, 1,    "0x%02x"},
        {"bIndex",                "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"bDataType",             "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"wLength",               "uint16_t",       1,    "",           1, 0,    "%d"},
        {"szData",                "uint8_t[]",      1024, "wLength",    1, 0,    "bytes"}}},
    {"CSRelayData", 1033, {{9, 1033}}, {
        {"dwObjectId",            "uint32_t",       1,    "",           1, 0,    "%u"},
        {"wRelayLen",             "uint16_t",       1,    "",           1, 0,    "%d"},
        {"szRelayBuf",            "uint8_t[]",      1024, "wRelayLen",  1, 0,    "bytes"},
        {"bUserStatusFlag",       "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"wSequance",             "uint16_t",       1,    "",           1, 0,    "%d"}}},
    {"CSRelayInput", 1034, {{9, 1033}, {10, 1034}}, {
        {"stRelayData",           "CSRelayData",    1,    "",           1, 0,    "record"},
        {"bRepeatCount",          "uint8_t",        1,    "",           2, 1,    "0x%02x"}}},
    {"CSRelayInputMulty", 10331, {{1, 10331}}, {
        {"bFrameCount",           "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"astRelayData",          "CSRelayData[]",  10,   "bFrameCount", 1, 0,   "records"}}},
    {"CSRelayFrame", 103309, {{5, 103305}, {5, 103305}, {9, 103309}}, {
        {"dwFrameId",             "uint32_t",       1,    "",           1, 0,    "%u"},
        {"bCount",                "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"astRelayData",          "CSRelayData[]",  100,  "bCount",     1, 0,    "records"},
        {"dwLastHasDataFrameId",  "uint32_t",       1,    "",           3, 0,    "%u"}}},
    {"CSRelayFramePack", 516546, {{1, 516526}, {1, 516526}, {1, 516546}}, {
        {"bCount",                "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"astRelayData",          "CSRelayFrame[]", 5,    "bCount",     1, 0,    "records"}}},
    {"CSRelayMsgLoginReq", 132, {{9, 136}}, {
        {"szSigBuf",              "char[]",         128,  "",           1, 0,    "text"},
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgLoginRes", 4, {{4, 4}}, {
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgReloginNotify", 12, {{12, 12}}, {
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"},
        {"ullQuestion",           "uint64_t",       1,    "",           1, 0,    "%lu"}}},
    {"CSRelayMsgHeartBeatReq", 4, {{4, 4}}, {
        {"dwUnused",              "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgHeartBeatRes", 4, {{4, 4}}, {
        {"dwHeartBeatIntervalMs", "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgStopReq", 4, {{4, 4}}, {
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgStopRes", 8, {{8, 8}}, {
        {"iResult",               "int32_t",        1,    "",           1, 0,    "%d"},
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayError", 2054, {{16, 2062}}, {
        {"dwError_code",          "uint32_t",       1,    "",           1, 1,    "%u"},
        {"szError_code_str",      "char[]",         1024, "",           1, 0,    "text"},
        {"szError_svr_url",       "char[]",         1024, "",           1, 0,    "text"},
        {"bRequest_cmd_code",     "uint8_t",        1,    "",           1, 1,    "0x%02x"},
        {"bIsFatalError",         "uint8_t",        1,    "",           1, 0,    "0x%02x"}}},
    {"CSRelayMsgStartReq", 9, {{9, 9}}, {
        {"dwReserve",             "uint32_t",       1,    "",           1, 0,    "%u"},
        {"bNeedSeek",             "uint8_t",        1,    "",           1, 0,    "0x%02x"},
        {"dwSeekFrameID",         "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgStartRes", 265, {{14, 269}}, {
        {"iResult",               "int32_t",        1,    "",           1, 0,    "%d"},
        {"szErrorDesc",           "char[]",         256,  "",           1, 0,    "text"},
        {"dwBeginFrameID",        "uint32_t",       1,    "",           1, 0,    "%u"},
        {"bNeedToPlayFromFrame0", "uint8_t",        1,    "",           1, 0,    "0x%02x"}}},
    {"CreateRoomUserInfo", 320, {{10, 328}}, {
        {"szUser_id",             "char[]",         256,  "",           1, 0,    "text"},
        {"szUser_ip",             "char[]",         64,   "",           1, 0,    "text"}}},
    {"CSRelayMsgSyncReq", 8, {{8, 8}}, {
        {"dwFrameIdBegin",        "uint32_t",       1,    "",           1, 0,    "%u"},
        {"dwFrameIdEnd",          "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayMsgSyncRes", 103313, {{9, 103309}, {9, 103309}, {13, 103313}}, {
        {"iResult",               "int32_t",        1,    "",           1, 0,    "%d"},
        {"stSyncData",            "CSRelayFrame",   1,    "",           1, 0,    "record"}}},
    {"ReplayPieceInof", 8, {{8, 8}}, {
        {"dwStartFrame",          "uint32_t",       1,    "",           1, 0,    "%u"},
        {"dwFrameCount",          "uint32_t",       1,    "",           1, 1000, "%u"}}},
    {"CSRelaySeekPlayReq", 96, {{16, 96}}, {
        {"dwFrameIntervalMs",     "uint32_t",       1,    "",           1, 10,   "%u"},
        {"dwStartFrame",          "uint32_t",       1,    "",           1, 0,    "%u"},
        {"dwFrameCount",          "uint32_t",       1,    "",           1, 1000, "%u"},
        {"dwReplayPieceInofCount", "uint32_t",      1,    "",           1, 1,    "%u"},
        {"astReplayPieceInof",    "ReplayPieceInof[]", 10, "dwReplayPieceInofCount", 1, 0, "records"}}},
    {"CSRelaySeekPlayRes", 1028, {{9, 1032}}, {
        {"dwRetCode",             "uint32_t",       1,    "",           1, 0,    "%u"},
        {"szRetStr",              "char[]",         1024, "",           1, 0,    "text"}}},
    {"CSRelayStatReq", 4, {{4, 4}}, {
        {"dwRetCode",             "uint32_t",       1,    "",           1, 0,    "%u"}}},
    {"CSRelayStatRes", 12288, {{15, 12300}}, {
        {"szRoomRetStr",          "char[]",         4096, "",           1, 0,    "text"},
        {"szUserRetStr",          "char[]",         4096, "",           1, 0,    "text"},
        {"szProcessRetStr",       "char[]",         4096, "",           1, 0,    "text"}}},
    {"CSRelayMsg", 516558, {{12, 516538}, {12, 516538}, {12, 516558}}, {
        {"stHead",                "CSRelayMsgHead", 1,    "",           1, 0,    "record"},
        {"stBody",                "CSRelayMsgBody", 1,    "",           1, 0,    "union"}}},
};

inline const std::vector<CommandFact> COMMANDS = {
    {161, "stRelayLoginReq",          "CSRelayMsgLoginReq"},
    {162, "stRelayLoginRes",          "CSRelayMsgLoginRes"},
    {163, "stRelayStartReq",          "CSRelayMsgStartReq"},
    {164, "stRelayStartRes",          "CSRelayMsgStartRes"},
    {165, "stRelayInputing",          "CSRelayInput"},
    {167, "stRelayLockStep",          "CSRelayFramePack"},
    {168, "stRelaySyncReq",           "CSRelayMsgSyncReq"},
    {169, "stRelaySyncRes",           "CSRelayMsgSyncRes"},
    {170, "stRelayMsgPack",           "CSRelayMsgPack"},
    {174, "stRelayStopReq",           "CSRelayMsgStopReq"},
    {175, "stRelayStopRes",           "CSRelayMsgStopRes"},
    {182, "stCSRelaySeekPlayReq",     "CSRelaySeekPlayReq"},
    {183, "stCSRelaySeekPlayRes",     "CSRelaySeekPlayRes"},
    {184, "stCSRelayMsgHeartBeatReq", "CSRelayMsgHeartBeatReq"},
    {185, "stCSRelayMsgHeartBeatRes", "CSRelayMsgHeartBeatRes"},
    {186, "stRelayBroadCastReq",      "CSRelayInput"},
    {187, "stRelayBroadCastRes",      "CSRelayFramePack"},
    {188, "stRelayInputCheckReq",     "CSRelayInput"},
    {189, "stRelayBroadCastCheckReq", "CSRelayInput"},
    {190, "stRelayCheckReq",          "CSRelayInput"},
    {191, "stCSRelayMsgStatUserReq",  "CSRelayStatReq"},
    {192, "stCSRelayMsgStatUserRes",  "CSRelayStatRes"},
    {193, "stRelayReloginNotify",     "CSRelayMsgReloginNotify"},
    {194, "stRelayError",             "CSRelayError"},
    {195, "stRelayInputMulty",        "CSRelayInputMulty"},
};
// clang-format on

} // namespace protocol_facts

#endif
