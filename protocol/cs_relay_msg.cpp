#include "protocol/cs_relay_msg.h"

#include "protocol/Codec.h"
#include "protocol/Envelope.h"
#include "protocol/Plain.h"
#include "protocol/Schema.h"
#include "protocol/Straight.h"
#include "protocol/Table.h"
#include "protocol/Visualize.h"

#include <algorithm>
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
    static KORVAN_ALWAYS_INLINE schema::Progress pack(const void* record, char* begin, size_t position,
                                                      size_t length, uint32_t cutVer);
    static KORVAN_ALWAYS_INLINE schema::Progress unpack(void* record, const char* begin, size_t position,
                                                        size_t length, uint32_t cutVer);
    static schema::Progress visualize(const void* record, char* begin, size_t position, size_t length,
                                      int indent, char sep);
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

/// What an unassigned id selects: a record without fields, so that nothing happens.
struct Nothing {};

template <>
inline constexpr Type typeOf<Nothing> = {"",
                                         0,
                                         nullptr,
                                         0,
                                         schema::BASE_VERSION,
                                         true,
                                         &Operations<Nothing>::construct,
                                         &Operations<Nothing>::pack,
                                         &Operations<Nothing>::unpack,
                                         &Operations<Nothing>::visualize};

constexpr Command UNASSIGNED{0, nullptr, nullptr, 0, &typeOf<Nothing>};

/// For each value of a command id the command.
constexpr std::array<const Command*, 256> makeCommandsById() {
    std::array<const Command*, 256> byId{};
    for (const Command*& command : byId) {
        command = &UNASSIGNED;
    }
    for (const Command& member : MEMBERS) {
        byId[member.id] = &member;
    }
    return byId;
}
constexpr std::array<const Command*, 256> COMMANDS_BY_ID = makeCommandsById();

constexpr const Command& find(long long id) {
    return id < 0 || id > 255 ? UNASSIGNED : *COMMANDS_BY_ID[static_cast<size_t>(id)];
}

constexpr bool isAssigned(const Command& command) {
    return command.name != nullptr;
}

constexpr uint32_t BODY_VERSION = latestVersion(MEMBERS);

constexpr size_t depth(const Type& type) {
    size_t deepest = 0;
    for (const Field& field : type) {
        if (holdsRecords(field)) {
            deepest = std::max(deepest, depth(*field.type));
        }
        if (field.kind == Kind::Union) {
            for (const Command& member : MEMBERS) {
                deepest = std::max(deepest, depth(*member.type));
            }
        }
    }
    return deepest + 1;
}
static_assert(depth(typeOf<CSRelayMsg>) == schema::MAX_DEPTH, "MAX_DEPTH is not what the tables say");

static_assert(offsetof(CSRelayMsg, stHead) == 0 &&
                  offsetof(CSRelayMsgHead, bVersion) == schema::VERSION_BYTE &&
                  offsetof(CSRelayMsgHead, bCmdId) == schema::COMMAND_BYTE,
              "Schema.h and the head disagree on where version and command are");

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

// ---- The member of the union that a selector names ----

namespace cs_relay_msg {

using codec::Out;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using schema::Command;
using schema::Progress;

namespace {

int32_t packMember(long long selector, const void* storage, BixWriteBuf& buffer, uint32_t cutVer) {
    const uint32_t version = schema::effectiveVersion(cutVer, table::BODY_VERSION);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    return table::find(selector).type->pack(storage, buffer, version);
}

int32_t unpackMember(long long selector, void* storage, BixReadBuf& buffer, uint32_t cutVer) {
    const uint32_t version = schema::effectiveVersion(cutVer, table::BODY_VERSION);
    if (version < schema::BASE_VERSION) {
        return BIX_ERR_VERSION_TOO_OLD;
    }
    return table::find(selector).type->unpack(storage, buffer, version);
}

int32_t visualizeMember(long long selector, const void* storage, Out& out, int indent, char sep) {
    const Command& command = table::find(selector);
    if (!table::isAssigned(command)) {
        return BIX_OK;
    }
    if (const int32_t result =
            codec::visualizeHeader(out, {indent, sep, command.label, command.labelLength})) {
        return result;
    }
    return out.follow(
        command.type->visualizeAt(storage, out.begin, out.position, out.length, codec::deeper(indent), sep));
}

} // namespace

// ---- The operations of every record: out of line, one function per record and operation ----

namespace table {

template <class T>
int32_t Operations<T>::construct(void* record) {
    codec::construct<typeOf<T>>(static_cast<char*>(record));
    return BIX_OK;
}

/// The plain way over a buffer's fields.
KORVAN_COLD Progress packPlainly(const Type& type, const void* record, char* begin, size_t position,
                                 size_t length, uint32_t version) {
    BixWriteBuf buffer(begin, length);
    buffer.position = position;
    const int32_t result = plain::pack(type, static_cast<const char*>(record), buffer, version);
    return {buffer.position, result};
}

KORVAN_COLD Progress unpackPlainly(const Type& type, void* record, const char* begin, size_t position,
                                   size_t length, uint32_t version) {
    BixReadBuf buffer(begin, length);
    buffer.position = position;
    const int32_t result = plain::unpack(type, static_cast<char*>(record), buffer, version);
    return {buffer.position, result};
}

template <class T>
Progress Operations<T>::pack(const void* record, char* begin, size_t position, size_t length,
                             uint32_t cutVer) {
    const uint32_t version = typeOf<T>.effectiveVersion(cutVer);
    if (version < schema::BASE_VERSION) {
        return {position, BIX_ERR_VERSION_TOO_OLD};
    }
    if (KORVAN_LIKELY(position <= length)) {
        straight::Out out{begin + position, length - position};
        if (straight::pack<typeOf<T>>(static_cast<const char*>(record), out, version)) {
            return {length - out.size, BIX_OK};
        }
    }
    return packPlainly(typeOf<T>, record, begin, position, length, version);
}

template <class T>
Progress Operations<T>::unpack(void* record, const char* begin, size_t position, size_t length,
                               uint32_t cutVer) {
    const uint32_t version = typeOf<T>.effectiveVersion(cutVer);
    if (version < schema::BASE_VERSION) {
        return {position, BIX_ERR_VERSION_TOO_OLD};
    }
    if (KORVAN_LIKELY(position <= length)) {
        straight::In in{begin + position, length - position};
        if (straight::unpack<typeOf<T>>(static_cast<char*>(record), in, version)) {
            return {length - in.size, BIX_OK};
        }
    }
    return unpackPlainly(typeOf<T>, record, begin, position, length, version);
}

template <class T>
Progress Operations<T>::visualize(const void* record, char* begin, size_t position, size_t length, int indent,
                                  char sep) {
    Out out(begin, position, length);
    const int32_t result = codec::visualize<typeOf<T>>(record, out, indent, sep);
    return {out.position, result};
}

} // namespace table

// ---- The message: a head, the member that it selects, and the version in byte 8 ----

namespace {

using table::typeOf;

using schema::VERSION_BYTE;

constexpr uint32_t VERSION_BYTE_SINCE = 1;

constexpr uint32_t MESSAGE_VERSION = typeOf<CSRelayMsg>.currentVersion;

/// Whether a message can have @p version, and carry it.
constexpr int32_t checkVersion(uint32_t version, int32_t otherwise) {
    if (version < schema::BASE_VERSION || version > MESSAGE_VERSION) {
        return otherwise;
    }
    return version < VERSION_BYTE_SINCE ? BIX_ERR_VERSION_FIELD_CUT : BIX_OK;
}

int32_t packMessage(const CSRelayMsgHead& head, const void* body, BixWriteBuf& buffer, uint32_t cutVer) {
    const uint32_t version = typeOf<CSRelayMsg>.effectiveVersion(cutVer);
    if (const int32_t result = checkVersion(version, BIX_ERR_VERSION_TOO_OLD)) {
        return result;
    }
    const size_t start = buffer.position;
    if (const int32_t result = typeOf<CSRelayMsgHead>.pack(&head, buffer, version)) {
        return result;
    }
    if (const int32_t result = packMember(head.bCmdId, body, buffer, version)) {
        return result;
    }
    buffer.beginPtr[start + VERSION_BYTE] = static_cast<char>(version); // the head is there, so it fits
    return BIX_OK;
}

/// Looks at the version, then unpacks the head at it.
int32_t unpackMessageHead(CSRelayMsgHead& head, BixReadBuf& buffer, uint8_t& version) {
    const size_t start = buffer.getUsedSize();
    // A corrupted cursor can come round to a byte there is.
    if (buffer.readUInt8(version, start + VERSION_BYTE) != BIX_OK || start + VERSION_BYTE < start) {
        return BIX_ERR_READ_UNDERFLOW;
    }
    if (const int32_t result = checkVersion(version, BIX_ERR_VERSION_OUT_OF_RANGE)) {
        return result;
    }
    return typeOf<CSRelayMsgHead>.unpack(&head, buffer, version);
}

int32_t unpackMessage(CSRelayMsgHead& head, void* body, BixReadBuf& buffer) {
    uint8_t version = 0;
    if (const int32_t result = unpackMessageHead(head, buffer, version)) {
        return result;
    }
    return unpackMember(head.bCmdId, body, buffer, version);
}

/// Reports how far an operation on plain memory got.
KORVAN_ALWAYS_INLINE int32_t report(size_t* usedSize, Progress progress) {
    if (usedSize != nullptr) {
        *usedSize = progress.position;
    }
    return progress.result;
}

KORVAN_COLD int32_t packStepwise(const CSRelayMsg& message, char* memory, size_t size, size_t* usedSize,
                                 uint32_t cutVer) {
    BixWriteBuf buffer(memory, size);
    const int32_t result = packMessage(message.stHead, &message.stBody, buffer, cutVer);
    return report(usedSize, {buffer.getUsedSize(), result});
}

KORVAN_COLD int32_t unpackStepwise(CSRelayMsg& message, const char* memory, size_t size, size_t* usedSize) {
    BixReadBuf buffer(memory, size);
    const int32_t result = unpackMessage(message.stHead, &message.stBody, buffer);
    return report(usedSize, {buffer.getUsedSize(), result});
}

/// Head, a member of type @p M and version in one go, or else step by step from the start.
template <const schema::Type& M>
int32_t packWhole(const CSRelayMsg& message, char* memory, size_t size, size_t* usedSize, uint32_t cutVer) {
    const uint32_t version = typeOf<CSRelayMsg>.effectiveVersion(cutVer);
    straight::Out out{memory, size};
    if (checkVersion(version, BIX_ERR_VERSION_TOO_OLD) == BIX_OK &&
        straight::pack<typeOf<CSRelayMsgHead>>(reinterpret_cast<const char*>(&message.stHead), out,
                                               version) &&
        straight::pack<M>(reinterpret_cast<const char*>(&message.stBody), out, version)) {
        memory[VERSION_BYTE] = static_cast<char>(version);
        return report(usedSize, {size - out.size, BIX_OK});
    }
    return packStepwise(message, memory, size, usedSize, cutVer);
}

template <const schema::Type& M>
int32_t unpackWhole(CSRelayMsg& message, const char* memory, size_t size, size_t* usedSize) {
    const uint8_t version = static_cast<uint8_t>(memory[VERSION_BYTE]);
    straight::In in{memory, size};
    if (checkVersion(version, BIX_ERR_VERSION_OUT_OF_RANGE) == BIX_OK &&
        straight::unpack<typeOf<CSRelayMsgHead>>(reinterpret_cast<char*>(&message.stHead), in, version) &&
        straight::unpack<M>(reinterpret_cast<char*>(&message.stBody), in, version)) {
        return report(usedSize, {size - in.size, BIX_OK});
    }
    return unpackStepwise(message, memory, size, usedSize);
}

/// The two for one type of member. They are jumped to with the arguments of `pack` and `unpack` as they
/// stand.
struct Whole {
    int32_t (*pack)(const CSRelayMsg&, char*, size_t, size_t*, uint32_t);
    int32_t (*unpack)(CSRelayMsg&, const char*, size_t, size_t*);
};

template <const schema::Type& M>
constexpr Whole WHOLE = {&packWhole<M>, &unpackWhole<M>};

template <size_t... I>
constexpr std::array<Whole, 256> makeWholeById(std::index_sequence<I...>) {
    std::array<Whole, 256> byId{};
    for (Whole& whole : byId) {
        whole = WHOLE<typeOf<table::Nothing>>;
    }
    ((byId[table::MEMBERS[I].id] = WHOLE<*table::MEMBERS[I].type>), ...);
    return byId;
}
constexpr std::array<Whole, 256> WHOLE_BY_ID = makeWholeById(std::make_index_sequence<table::MEMBERS.size>());

KORVAN_ALWAYS_INLINE int32_t packAny(const CSRelayMsg& message, char* memory, size_t size, size_t* usedSize,
                                     uint32_t cutVer) {
    return WHOLE_BY_ID[message.stHead.bCmdId].pack(message, memory, size, usedSize, cutVer);
}

KORVAN_ALWAYS_INLINE int32_t unpackAny(CSRelayMsg& message, const char* memory, size_t size,
                                       size_t* usedSize) {
    if (!KORVAN_LIKELY(size > schema::COMMAND_BYTE)) {
        return unpackStepwise(message, memory, size, usedSize);
    }
    const auto command = static_cast<uint8_t>(memory[schema::COMMAND_BYTE]);
    return WHOLE_BY_ID[command].unpack(message, memory, size, usedSize);
}

int32_t visualizeMessage(const CSRelayMsg& message, Out& out, int indent, char sep) {
    if (const int32_t result =
            codec::visualizeHeader(out, codec::lineOf<typeOf<CSRelayMsg>, 0>(indent, sep))) {
        return result;
    }
    if (const int32_t result =
            codec::visualize<typeOf<CSRelayMsgHead>>(&message.stHead, out, codec::deeper(indent), sep)) {
        return result;
    }
    if (const int32_t result =
            codec::visualizeHeader(out, codec::lineOf<typeOf<CSRelayMsg>, 1>(indent, sep))) {
        return result;
    }
    return visualizeMember(message.stHead.bCmdId, &message.stBody, out, codec::deeper(indent), sep);
}

} // namespace

namespace table {

int32_t Operations<CSRelayMsg>::construct(void* record) {
    CSRelayMsg& message = *static_cast<CSRelayMsg*>(record);
    message.stHead.construct();
    return message.stBody.construct(message.stHead.bCmdId); // 0 selects nothing: the body stays as it was
}

Progress Operations<CSRelayMsg>::pack(const void* record, char* begin, size_t position, size_t length,
                                      uint32_t cutVer) {
    const CSRelayMsg& message = *static_cast<const CSRelayMsg*>(record);
    if (KORVAN_LIKELY(position <= length)) {
        size_t used = 0;
        const int32_t result = packAny(message, begin + position, length - position, &used, cutVer);
        return {position + used, result};
    }
    BixWriteBuf buffer(begin, length);
    buffer.position = position;
    const int32_t result = packMessage(message.stHead, &message.stBody, buffer, cutVer);
    return {buffer.position, result};
}

/// The version given does not count: the sender's does.
Progress Operations<CSRelayMsg>::unpack(void* record, const char* begin, size_t position, size_t length,
                                        uint32_t /*cutVer*/) {
    CSRelayMsg& message = *static_cast<CSRelayMsg*>(record);
    if (KORVAN_LIKELY(position <= length)) {
        size_t used = 0;
        const int32_t result = unpackAny(message, begin + position, length - position, &used);
        return {position + used, result};
    }
    BixReadBuf buffer(begin, length);
    buffer.position = position;
    const int32_t result = unpackMessage(message.stHead, &message.stBody, buffer);
    return {buffer.position, result};
}

Progress Operations<CSRelayMsg>::visualize(const void* record, char* begin, size_t position, size_t length,
                                           int indent, char sep) {
    Out out(begin, position, length);
    const int32_t result = visualizeMessage(*static_cast<const CSRelayMsg*>(record), out, indent, sep);
    return {out.position, result};
}

} // namespace table

// ---- The entry points: over a buffer, and over plain memory ----

namespace {

/// Notes how far an operation on @p buffer got.
template <class Buffer>
KORVAN_ALWAYS_INLINE int32_t note(Buffer& buffer, Progress progress) {
    buffer.position = progress.position;
    return progress.result;
}

} // namespace

using table::Operations;

template <class T>
const schema::Type& schema::typeOf() noexcept {
    return table::typeOf<T>;
}

template <class T>
int32_t Record<T>::construct() noexcept {
    return Operations<T>::construct(static_cast<T*>(this));
}

template <class T>
int32_t Record<T>::pack(char* memory, size_t size, size_t* usedSize, uint32_t cutVer) const noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    return report(usedSize, Operations<T>::pack(static_cast<const T*>(this), memory, 0, size, cutVer));
}

template <class T>
int32_t Record<T>::pack(BixWriteBuf& buffer, uint32_t cutVer) const noexcept {
    return typeOf<T>.pack(static_cast<const T*>(this), buffer, cutVer);
}

template <class T>
int32_t Record<T>::unpack(const char* memory, size_t size, size_t* usedSize, uint32_t cutVer) noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    return report(usedSize, Operations<T>::unpack(static_cast<T*>(this), memory, 0, size, cutVer));
}

template <class T>
int32_t Record<T>::unpack(BixReadBuf& buffer, uint32_t cutVer) noexcept {
    return typeOf<T>.unpack(static_cast<T*>(this), buffer, cutVer);
}

template <>
int32_t Record<CSRelayMsg>::pack(char* memory, size_t size, size_t* usedSize,
                                 uint32_t cutVer) const noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    return packAny(*static_cast<const CSRelayMsg*>(this), memory, size, usedSize, cutVer);
}

template <>
int32_t Record<CSRelayMsg>::unpack(const char* memory, size_t size, size_t* usedSize,
                                   uint32_t /*cutVer*/) noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    return unpackAny(*static_cast<CSRelayMsg*>(this), memory, size, usedSize);
}

template <class T>
int32_t Record<T>::visualize(char* memory, size_t size, size_t* usedSize, int indent,
                             char sep) const noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    return report(usedSize,
                  Operations<T>::visualize(static_cast<const T*>(this), memory, 0, size, indent, sep));
}

template <class T>
int32_t Record<T>::visualize(BixWriteBuf& buffer, int indent, char sep) const noexcept {
    return typeOf<T>.visualize(static_cast<const T*>(this), buffer, indent, sep);
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

// The operations of a record type, and the way from the type to its table.
#define RECORD(T)                                                                                            \
    template struct Record<T>;                                                                               \
    template const schema::Type& schema::typeOf<T>() noexcept;

RECORD(CSRelayMsgHead)
RECORD(CSRelayMsgPack)
RECORD(CSRelayData)
RECORD(CSRelayInput)
RECORD(CSRelayInputMulty)
RECORD(CSRelayFrame)
RECORD(CSRelayFramePack)
RECORD(CSRelayMsgLoginReq)
RECORD(CSRelayMsgLoginRes)
RECORD(CSRelayMsgReloginNotify)
RECORD(CSRelayMsgHeartBeatReq)
RECORD(CSRelayMsgHeartBeatRes)
RECORD(CSRelayMsgStopReq)
RECORD(CSRelayMsgStopRes)
RECORD(CSRelayError)
RECORD(CSRelayMsgStartReq)
RECORD(CSRelayMsgStartRes)
RECORD(CreateRoomUserInfo)
RECORD(CSRelayMsgSyncReq)
RECORD(CSRelayMsgSyncRes)
RECORD(ReplayPieceInof)
RECORD(CSRelaySeekPlayReq)
RECORD(CSRelaySeekPlayRes)
RECORD(CSRelayStatReq)
RECORD(CSRelayStatRes)
RECORD(CSRelayMsg)

#undef RECORD

// ---- The union ----

int32_t CSRelayMsgBody::construct() noexcept {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
    return BIX_OK;
}

int32_t CSRelayMsgBody::construct(long long selector) noexcept {
    return table::find(selector).type->construct(this);
}

int32_t CSRelayMsgBody::pack(long long selector, char* memory, size_t size, size_t* usedSize,
                             uint32_t cutVer) const noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    BixWriteBuf buffer(memory, size);
    const int32_t result = packMember(selector, this, buffer, cutVer);
    return report(usedSize, {buffer.getUsedSize(), result});
}

int32_t CSRelayMsgBody::pack(long long selector, BixWriteBuf& buffer, uint32_t cutVer) const noexcept {
    return packMember(selector, this, buffer, cutVer);
}

int32_t CSRelayMsgBody::unpack(long long selector, const char* memory, size_t size, size_t* usedSize,
                               uint32_t cutVer) noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    BixReadBuf buffer(memory, size);
    const int32_t result = unpackMember(selector, this, buffer, cutVer);
    return report(usedSize, {buffer.getUsedSize(), result});
}

int32_t CSRelayMsgBody::unpack(long long selector, BixReadBuf& buffer, uint32_t cutVer) noexcept {
    return unpackMember(selector, this, buffer, cutVer);
}

int32_t CSRelayMsgBody::visualize(long long selector, char* memory, size_t size, size_t* usedSize, int indent,
                                  char sep) const noexcept {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    Out out(memory, 0, size);
    const int32_t result = visualizeMember(selector, this, out, indent, sep);
    return report(usedSize, {out.position, result});
}

int32_t CSRelayMsgBody::visualize(long long selector, BixWriteBuf& buffer, int indent,
                                  char sep) const noexcept {
    Out out(buffer.beginPtr, buffer.position, buffer.length);
    const int32_t result = visualizeMember(selector, this, out, indent, sep);
    return note(buffer, {out.position, result});
}

// ---- A message in two places ----

int32_t envelope::pack(const CSRelayMsgHead& head, const void* member, BixWriteBuf& buffer,
                       uint32_t cutVer) noexcept {
    return packMessage(head, member, buffer, cutVer);
}

int32_t envelope::unpackHead(CSRelayMsgHead& head, const BixReadBuf& buffer) noexcept {
    BixReadBuf ahead = buffer;
    uint8_t version = 0;
    return unpackMessageHead(head, ahead, version);
}

int32_t envelope::unpack(CSRelayMsgHead& head, void* member, BixReadBuf& buffer) noexcept {
    return unpackMessage(head, member, buffer);
}

// ---- The tables at run time ----

const char* commandName(long long id) noexcept {
    return table::find(id).name;
}

namespace schema {

Span<const Type*> types() noexcept {
    return {table::AllRecords::types, std::size(table::AllRecords::types)};
}

Span<Command> commands() noexcept {
    return table::MEMBERS;
}

const Command* findCommand(long long id) noexcept {
    const Command& command = table::find(id);
    return table::isAssigned(command) ? &command : nullptr;
}

WireSize wireSize(const Type& type, uint32_t cutVer) noexcept {
    return table::wireSize(type, cutVer, table::MEMBERS);
}

} // namespace schema

} // namespace cs_relay_msg
