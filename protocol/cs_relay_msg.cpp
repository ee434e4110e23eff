#include "protocol/cs_relay_msg.h"

#include "protocol/Codec.h"
#include "protocol/Schema.h"
#include "protocol/Table.h"
#include "protocol/Visualize.h"

#include <array>
#include <cstring>
#include <iterator>
#include <type_traits>

// clang-format off

// ---- The tables: one per record, one line per field, in wire order ----

namespace cs_relay_msg::table {

KORVAN_TABLE(CSRelayMsgHead,
             FIELD(dwUserID),
             FIELD(dwRoomID),
             FIELD(bVersion),
             FIELD(wAsyncID),
             FIELD(bCmdId))

KORVAN_TABLE(CSRelayMsgPack,
             FIELD(wSeqId),
             FIELD(bCount).startsAt(1),
             FIELD(bIndex),
             FIELD(bDataType),
             FIELD(wLength),
             COUNTED(szData, wLength))

KORVAN_TABLE(CSRelayData,
             FIELD(dwObjectId),
             FIELD(wRelayLen),
             COUNTED(szRelayBuf, wRelayLen),
             FIELD(bUserStatusFlag),
             FIELD(wSequance))

KORVAN_TABLE(CSRelayInput,
             FIELD(stRelayData),
             FIELD(bRepeatCount).addedIn(2).startsAt(1))

KORVAN_TABLE(CSRelayInputMulty,
             FIELD(bFrameCount),
             COUNTED(astRelayData, bFrameCount))

KORVAN_TABLE(CSRelayFrame,
             FIELD(dwFrameId),
             FIELD(bCount),
             COUNTED(astRelayData, bCount),
             FIELD(dwLastHasDataFrameId).addedIn(3))

KORVAN_TABLE(CSRelayFramePack,
             FIELD(bCount),
             COUNTED(astRelayData, bCount))

KORVAN_TABLE(CSRelayMsgLoginReq,
             FIELD(szSigBuf),
             FIELD(dwReserve))

KORVAN_TABLE(CSRelayMsgLoginRes,
             FIELD(dwReserve))

KORVAN_TABLE(CSRelayMsgReloginNotify,
             FIELD(dwReserve),
             FIELD(ullQuestion))

KORVAN_TABLE(CSRelayMsgHeartBeatReq,
             FIELD(dwUnused))

KORVAN_TABLE(CSRelayMsgHeartBeatRes,
             FIELD(dwHeartBeatIntervalMs))

KORVAN_TABLE(CSRelayMsgStopReq,
             FIELD(dwReserve))

KORVAN_TABLE(CSRelayMsgStopRes,
             FIELD(iResult),
             FIELD(dwReserve))

KORVAN_TABLE(CSRelayError,
             FIELD(dwError_code).startsAt(1),
             FIELD(szError_code_str),
             FIELD(szError_svr_url),
             FIELD(bRequest_cmd_code).startsAt(1),
             FIELD(bIsFatalError))

KORVAN_TABLE(CSRelayMsgStartReq,
             FIELD(dwReserve),
             FIELD(bNeedSeek),
             FIELD(dwSeekFrameID))

KORVAN_TABLE(CSRelayMsgStartRes,
             FIELD(iResult),
             FIELD(szErrorDesc),
             FIELD(dwBeginFrameID),
             FIELD(bNeedToPlayFromFrame0))

KORVAN_TABLE(CreateRoomUserInfo,
             FIELD(szUser_id),
             FIELD(szUser_ip))

KORVAN_TABLE(CSRelayMsgSyncReq,
             FIELD(dwFrameIdBegin),
             FIELD(dwFrameIdEnd))

KORVAN_TABLE(CSRelayMsgSyncRes,
             FIELD(iResult),
             FIELD(stSyncData))

KORVAN_TABLE(ReplayPieceInof,
             FIELD(dwStartFrame),
             FIELD(dwFrameCount).startsAt(1000))

KORVAN_TABLE(CSRelaySeekPlayReq,
             FIELD(dwFrameIntervalMs).startsAt(10),
             FIELD(dwStartFrame),
             FIELD(dwFrameCount).startsAt(1000),
             FIELD(dwReplayPieceInofCount).startsAt(1),
             COUNTED(astReplayPieceInof, dwReplayPieceInofCount))

KORVAN_TABLE(CSRelaySeekPlayRes,
             FIELD(dwRetCode),
             FIELD(szRetStr))

KORVAN_TABLE(CSRelayStatReq,
             FIELD(dwRetCode))

KORVAN_TABLE(CSRelayStatRes,
             FIELD(szRoomRetStr),
             FIELD(szUserRetStr),
             FIELD(szProcessRetStr))

KORVAN_TABLE(CSRelayMsg,
             FIELD(stHead),
             FIELD(stBody))

// ---- The command table, in the order of the ids ----

#define COMMAND(member)                                                                                      \
    Command { cmd::member, #member, "[" #member "]", sizeof("[" #member "]") - 1,                            \
              &typeOf<decltype(CSRelayMsgBody::member)> }

constexpr Command COMMANDS[] = {
    COMMAND(stRelayLoginReq),
    COMMAND(stRelayLoginRes),
    COMMAND(stRelayStartReq),
    COMMAND(stRelayStartRes),
    COMMAND(stRelayInputing),
    COMMAND(stRelayLockStep),
    COMMAND(stRelaySyncReq),
    COMMAND(stRelaySyncRes),
    COMMAND(stRelayMsgPack),
    COMMAND(stRelayStopReq),
    COMMAND(stRelayStopRes),
    COMMAND(stCSRelaySeekPlayReq),
    COMMAND(stCSRelaySeekPlayRes),
    COMMAND(stCSRelayMsgHeartBeatReq),
    COMMAND(stCSRelayMsgHeartBeatRes),
    COMMAND(stRelayBroadCastReq),
    COMMAND(stRelayBroadCastRes),
    COMMAND(stRelayInputCheckReq),
    COMMAND(stRelayBroadCastCheckReq),
    COMMAND(stRelayCheckReq),
    COMMAND(stCSRelayMsgStatUserReq),
    COMMAND(stCSRelayMsgStatUserRes),
    COMMAND(stRelayReloginNotify),
    COMMAND(stRelayError),
    COMMAND(stRelayInputMulty),
};

#undef COMMAND

// clang-format on

constexpr Span<Command> MEMBERS{COMMANDS, std::size(COMMANDS)};

/// The message has operations of its own, inlined into those over plain memory.
template <>
struct Operations<CSRelayMsg> {
    static int32_t construct(void* record);
    static KORVAN_ALWAYS_INLINE int32_t pack(const void* record, Korvan::BixWriteBuf& buffer,
                                             uint32_t cutVer);
    static KORVAN_ALWAYS_INLINE int32_t unpack(void* record, Korvan::BixReadBuf& buffer, uint32_t cutVer);
    static int32_t visualize(const void* record, Korvan::BixWriteBuf& buffer, int indent, char sep);
};

template <>
inline constexpr Type typeOf<CSRelayMsg> = describe<CSRelayMsg>(MEMBERS);

// ---- What is known of the tables without running ----

constexpr bool idsAscend() {
    for (size_t i = 1; i < MEMBERS.size; ++i) {
        if (MEMBERS[i - 1].id >= MEMBERS[i].id) {
            return false;
        }
    }
    return true;
}
static_assert(idsAscend(), "the command table is in the order of the ids, and no id serves twice");

constexpr uint8_t FIRST_ID = MEMBERS[0].id;
constexpr size_t ID_RANGE = MEMBERS[MEMBERS.size - 1].id - FIRST_ID + 1u;

/// For each id of the range its place in the command table, or -1.
constexpr std::array<int8_t, ID_RANGE> makePlaces() {
    std::array<int8_t, ID_RANGE> places{};
    for (int8_t& place : places) {
        place = -1;
    }
    for (size_t i = 0; i < MEMBERS.size; ++i) {
        places[static_cast<size_t>(MEMBERS[i].id - FIRST_ID)] = static_cast<int8_t>(i);
    }
    return places;
}
constexpr std::array<int8_t, ID_RANGE> PLACES = makePlaces();

constexpr const Command* find(long long id) {
    const unsigned long long fromFirst = static_cast<unsigned long long>(id) - FIRST_ID;
    if (fromFirst >= ID_RANGE || PLACES[static_cast<size_t>(fromFirst)] < 0) {
        return nullptr;
    }
    return &COMMANDS[PLACES[static_cast<size_t>(fromFirst)]];
}

constexpr uint32_t BODY_VERSION = latestVersion(MEMBERS);

template <class... Records>
struct List {
    static constexpr const Type* types[] = {&typeOf<Records>...};

    static_assert(((wireSize(typeOf<Records>, 0, MEMBERS).max == Records::maxWireSize) && ...),
                  "a maxWireSize in the header is not what the tables say");
};

/// Every record type; a record stands behind those that it contains.
using AllRecords =
    List<CSRelayMsgHead, CSRelayMsgPack, CSRelayData, CSRelayInput, CSRelayInputMulty, CSRelayFrame,
         CSRelayFramePack, CSRelayMsgLoginReq, CSRelayMsgLoginRes, CSRelayMsgReloginNotify,
         CSRelayMsgHeartBeatReq, CSRelayMsgHeartBeatRes, CSRelayMsgStopReq, CSRelayMsgStopRes, CSRelayError,
         CSRelayMsgStartReq, CSRelayMsgStartRes, CreateRoomUserInfo, CSRelayMsgSyncReq, CSRelayMsgSyncRes,
         ReplayPieceInof, CSRelaySeekPlayReq, CSRelaySeekPlayRes, CSRelayStatReq, CSRelayStatRes, CSRelayMsg>;

static_assert(CSRelayMsgBody::maxWireSize == CSRelayMsg::maxWireSize - CSRelayMsgHead::maxWireSize,
              "the body is what the message has behind its head");

} // namespace cs_relay_msg::table

// ---- The union ----

namespace cs_relay_msg {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using Korvan::detail::headerLine;
using schema::Command;
using table::Operations;
using table::typeOf;

namespace {

/// Runs @p operation on a buffer over plain memory and reports how far it got.
template <class Buffer, class Char, class Operation>
KORVAN_ALWAYS_INLINE int32_t flat(Char* memory, size_t size, size_t* usedSize, Operation operation) {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    Buffer buffer(memory, size);
    const int32_t result = operation(buffer);
    if (usedSize != nullptr) {
        *usedSize = buffer.getUsedSize();
    }
    return result;
}

KORVAN_ALWAYS_INLINE int32_t packMember(long long selector, const void* storage, BixWriteBuf& buffer,
                                        uint32_t cutVer) {
    const uint32_t version = schema::effectiveVersion(cutVer, table::BODY_VERSION);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    const Command* command = table::find(selector);
    return command != nullptr ? command->type->pack(storage, buffer, version) : BIX_OK;
}

KORVAN_ALWAYS_INLINE int32_t unpackMember(long long selector, void* storage, BixReadBuf& buffer,
                                          uint32_t cutVer) {
    const uint32_t version = schema::effectiveVersion(cutVer, table::BODY_VERSION);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    const Command* command = table::find(selector);
    return command != nullptr ? command->type->unpack(storage, buffer, version) : BIX_OK;
}

} // namespace

int32_t CSRelayMsgBody::construct() noexcept {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
    return BIX_OK;
}

int32_t CSRelayMsgBody::construct(long long selector) noexcept {
    const Command* command = table::find(selector);
    return command != nullptr ? command->type->construct(this) : BIX_OK;
}

int32_t CSRelayMsgBody::pack(long long selector, char* memory, size_t size, size_t* usedSize,
                             uint32_t cutVer) const noexcept {
    return flat<BixWriteBuf>(memory, size, usedSize,
                             [&](BixWriteBuf& buffer) { return packMember(selector, this, buffer, cutVer); });
}

int32_t CSRelayMsgBody::pack(long long selector, BixWriteBuf& buffer, uint32_t cutVer) const noexcept {
    return packMember(selector, this, buffer, cutVer);
}

int32_t CSRelayMsgBody::unpack(long long selector, const char* memory, size_t size, size_t* usedSize,
                               uint32_t cutVer) noexcept {
    return flat<BixReadBuf>(memory, size, usedSize,
                            [&](BixReadBuf& buffer) { return unpackMember(selector, this, buffer, cutVer); });
}

int32_t CSRelayMsgBody::unpack(long long selector, BixReadBuf& buffer, uint32_t cutVer) noexcept {
    return unpackMember(selector, this, buffer, cutVer);
}

int32_t CSRelayMsgBody::visualize(long long selector, char* memory, size_t size, size_t* usedSize, int indent,
                                  char sep) const noexcept {
    return flat<BixWriteBuf>(memory, size, usedSize,
                             [&](BixWriteBuf& buffer) { return visualize(selector, buffer, indent, sep); });
}

int32_t CSRelayMsgBody::visualize(long long selector, BixWriteBuf& buffer, int indent,
                                  char sep) const noexcept {
    const Command* command = table::find(selector);
    if (command == nullptr) {
        return BIX_OK;
    }
    if (const int32_t result =
            headerLine(buffer, {indent, sep, command->label, command->labelLength}, true)) {
        return result;
    }
    return command->type->visualize(this, buffer, codec::deeper(indent), sep);
}

// ---- The operations of every record: out of line, one function per record and operation ----

namespace table {

template <class T>
int32_t Operations<T>::construct(void* record) {
    codec::construct<typeOf<T>>(static_cast<char*>(record));
    return BIX_OK;
}

template <class T>
int32_t Operations<T>::pack(const void* record, BixWriteBuf& buffer, uint32_t cutVer) {
    return codec::pack<typeOf<T>>(static_cast<const char*>(record), buffer, cutVer);
}

template <class T>
int32_t Operations<T>::unpack(void* record, BixReadBuf& buffer, uint32_t cutVer) {
    return codec::unpack<typeOf<T>>(static_cast<char*>(record), buffer, cutVer);
}

template <class T>
int32_t Operations<T>::visualize(const void* record, BixWriteBuf& buffer, int indent, char sep) {
    return codec::visualize<typeOf<T>>(static_cast<const char*>(record), buffer, indent, sep);
}

// ---- Those of the message: a head, the member that it selects, and the version in byte 8 ----

constexpr size_t VERSION_BYTE = 8;
constexpr uint32_t VERSION_BYTE_SINCE = 1;
static_assert(offsetof(CSRelayMsgHead, bVersion) == VERSION_BYTE);

int32_t Operations<CSRelayMsg>::construct(void* record) {
    CSRelayMsg& message = *static_cast<CSRelayMsg*>(record);
    message.stHead.construct();
    return message.stBody.construct(message.stHead.bCmdId); // 0 selects nothing: the body stays as it was
}

int32_t Operations<CSRelayMsg>::pack(const void* record, BixWriteBuf& buffer, uint32_t cutVer) {
    const CSRelayMsg& message = *static_cast<const CSRelayMsg*>(record);
    const uint32_t version = typeOf<CSRelayMsg>.effectiveVersion(cutVer);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    if (version < VERSION_BYTE_SINCE) {
        return BIX_ERR_VERSION_FIELD_CUT;
    }
    const size_t start = buffer.getUsedSize();
    const auto* head = reinterpret_cast<const char*>(&message.stHead);
    if (const int32_t result = codec::pack<typeOf<CSRelayMsgHead>>(head, buffer, version)) {
        return result;
    }
    if (const int32_t result = packMember(message.stHead.bCmdId, &message.stBody, buffer, version)) {
        return result;
    }
    return buffer.writeUInt8(static_cast<uint8_t>(version), start + VERSION_BYTE);
}

/// The version given does not count: the sender's does.
int32_t Operations<CSRelayMsg>::unpack(void* record, BixReadBuf& buffer, uint32_t /*cutVer*/) {
    CSRelayMsg& message = *static_cast<CSRelayMsg*>(record);
    uint8_t version = 0;
    if (const int32_t result = buffer.readUInt8(version, buffer.getUsedSize() + VERSION_BYTE)) {
        return result;
    }
    if (version < schema::BASE_VERSION || version > typeOf<CSRelayMsg>.currentVersion) {
        return BIX_ERR_VERSION_OUT_OF_RANGE;
    }
    if (version < VERSION_BYTE_SINCE) {
        return BIX_ERR_VERSION_FIELD_CUT;
    }
    auto* head = reinterpret_cast<char*>(&message.stHead);
    if (const int32_t result = codec::unpack<typeOf<CSRelayMsgHead>>(head, buffer, version)) {
        return result;
    }
    return unpackMember(message.stHead.bCmdId, &message.stBody, buffer, version);
}

int32_t Operations<CSRelayMsg>::visualize(const void* record, BixWriteBuf& buffer, int indent, char sep) {
    const CSRelayMsg& message = *static_cast<const CSRelayMsg*>(record);
    const auto headerOf = [&](const schema::Field& field) {
        return headerLine(buffer, {indent, sep, field.label, field.labelLength}, true);
    };
    if (const int32_t result = headerOf(typeOf<CSRelayMsg>.fields[0])) {
        return result;
    }
    if (const int32_t result = message.stHead.visualize(buffer, codec::deeper(indent), sep)) {
        return result;
    }
    if (const int32_t result = headerOf(typeOf<CSRelayMsg>.fields[1])) {
        return result;
    }
    return message.stBody.visualize(message.stHead.bCmdId, buffer, codec::deeper(indent), sep);
}

} // namespace table

template <class T>
int32_t Record<T>::construct() noexcept {
    return Operations<T>::construct(static_cast<T*>(this));
}

template <class T>
int32_t Record<T>::pack(char* memory, size_t size, size_t* usedSize, uint32_t cutVer) const noexcept {
    return flat<BixWriteBuf>(memory, size, usedSize, [&](BixWriteBuf& buffer) {
        return Operations<T>::pack(static_cast<const T*>(this), buffer, cutVer);
    });
}

template <class T>
int32_t Record<T>::pack(BixWriteBuf& buffer, uint32_t cutVer) const noexcept {
    return Operations<T>::pack(static_cast<const T*>(this), buffer, cutVer);
}

template <class T>
int32_t Record<T>::unpack(const char* memory, size_t size, size_t* usedSize, uint32_t cutVer) noexcept {
    return flat<BixReadBuf>(memory, size, usedSize, [&](BixReadBuf& buffer) {
        return Operations<T>::unpack(static_cast<T*>(this), buffer, cutVer);
    });
}

template <class T>
int32_t Record<T>::unpack(BixReadBuf& buffer, uint32_t cutVer) noexcept {
    return Operations<T>::unpack(static_cast<T*>(this), buffer, cutVer);
}

template <class T>
int32_t Record<T>::visualize(char* memory, size_t size, size_t* usedSize, int indent,
                             char sep) const noexcept {
    return flat<BixWriteBuf>(memory, size, usedSize,
                             [&](BixWriteBuf& buffer) { return visualize(buffer, indent, sep); });
}

template <class T>
int32_t Record<T>::visualize(BixWriteBuf& buffer, int indent, char sep) const noexcept {
    return Operations<T>::visualize(static_cast<const T*>(this), buffer, indent, sep);
}

template <class T>
const char* Record<T>::visualize_ex(char* memory, size_t size, size_t* usedSize, int indent,
                                    char sep) const noexcept {
    if (memory == nullptr || size == 0) {
        return "";
    }
    BixWriteBuf buffer(memory, size);
    const char* const text = visualize_ex(buffer, indent, sep);
    if (usedSize != nullptr) {
        *usedSize = buffer.getUsedSize();
    }
    return text;
}

template <class T>
const char* Record<T>::visualize_ex(BixWriteBuf& buffer, int indent, char sep) const noexcept {
    const size_t total = buffer.getTotalSize();
    if (buffer.getBeginPtr() == nullptr || total == 0) {
        return "";
    }
    (void)visualize(buffer, indent, sep); // whatever came of it, the text so far is returned
    const size_t used = buffer.getUsedSize();
    (void)buffer.writeChar('\0', used < total ? used : total - 1);
    return buffer.getBeginPtr();
}

template struct Record<CSRelayMsgHead>;
template struct Record<CSRelayMsgPack>;
template struct Record<CSRelayData>;
template struct Record<CSRelayInput>;
template struct Record<CSRelayInputMulty>;
template struct Record<CSRelayFrame>;
template struct Record<CSRelayFramePack>;
template struct Record<CSRelayMsgLoginReq>;
template struct Record<CSRelayMsgLoginRes>;
template struct Record<CSRelayMsgReloginNotify>;
template struct Record<CSRelayMsgHeartBeatReq>;
template struct Record<CSRelayMsgHeartBeatRes>;
template struct Record<CSRelayMsgStopReq>;
template struct Record<CSRelayMsgStopRes>;
template struct Record<CSRelayError>;
template struct Record<CSRelayMsgStartReq>;
template struct Record<CSRelayMsgStartRes>;
template struct Record<CreateRoomUserInfo>;
template struct Record<CSRelayMsgSyncReq>;
template struct Record<CSRelayMsgSyncRes>;
template struct Record<ReplayPieceInof>;
template struct Record<CSRelaySeekPlayReq>;
template struct Record<CSRelaySeekPlayRes>;
template struct Record<CSRelayStatReq>;
template struct Record<CSRelayStatRes>;
template struct Record<CSRelayMsg>;

// ---- The tables at run time ----

const char* commandName(long long id) noexcept {
    const Command* command = table::find(id);
    return command != nullptr ? command->name : nullptr;
}

namespace schema {

Span<const Type*> types() noexcept {
    return {table::AllRecords::types, std::size(table::AllRecords::types)};
}

Span<Command> commands() noexcept {
    return table::MEMBERS;
}

const Command* findCommand(long long id) noexcept {
    return table::find(id);
}

WireSize wireSize(const Type& type, uint32_t cutVer) noexcept {
    return table::wireSize(type, cutVer, table::MEMBERS);
}

} // namespace schema

} // namespace cs_relay_msg
