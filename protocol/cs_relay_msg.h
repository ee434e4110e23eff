/// @file
/// The relay protocol: what a client of a lockstep game and its relay server say to each other.
///
/// A message is one `CSRelayMsg`: a head of 12 bytes, and one member of a union that the head's command id
/// selects. Nothing frames it: no length prefix, no padding, no trailer. To send, fill the record and `pack`
/// it; what was received, `unpack`; for a log, `visualize`. Record.h tells what these operations do.
///
/// All integers travel most significant byte first. The name of a field tells its type: `b` uint8_t, `w`
/// uint16_t, `dw` uint32_t, `i` int32_t, `ull` uint64_t, `sz` text (char) or bytes (uint8_t), `st` a record,
/// `ast` an array of records. Behind each field stand its facts in square brackets: its size on the wire, the
/// bound of an array and the field that counts its elements, the capacity of a text with its NUL, the version
/// that added the field if that is not version 1, and the default that `construct` sets if that is not 0 or
/// empty. A count may equal its bound.
///
/// The version of a message travels in its head. A sender packs for an older peer by giving `pack` that
/// peer's version; a receiver always decodes at the sender's.
///
/// Records are packed structs, so a field may be misaligned: read and assign fields by value, and form no
/// reference or pointer to one (g++ refuses some of these, and on some machines such a pointer traps).
#ifndef KORVAN_PROTOCOL_CS_RELAY_MSG_H
#define KORVAN_PROTOCOL_CS_RELAY_MSG_H

#include "protocol/Record.h"

#include <cstddef>
#include <cstdint>

KORVAN_PACK_BEGIN

namespace cs_relay_msg {

// ---- Message head ----

/// The head of every message: who, where, which version, which command.
/// Wire: 12 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgHead : Record<CSRelayMsgHead> {
    static constexpr size_t maxWireSize = 12;

    uint32_t dwUserID; ///< The user that the message comes from or goes to. [4 bytes]
    uint32_t dwRoomID; ///< The room in which that user plays. [4 bytes]
    uint8_t
        bVersion; ///< The version of the message, 1 to 3; `CSRelayMsg::pack` puts the right one on the wire
                  ///< whatever the record holds, and `CSRelayMsg::unpack` leaves the sender's here. [1 byte]
    uint16_t
        wAsyncID;   ///< An id by which a caller can match answers to requests; carried unchanged. [2 bytes]
    uint8_t bCmdId; ///< The command, one of the constants in `cmd`: selects the body's member. [1 byte]
};

// ---- Frame data: inputs up, frames down ----

/// A piece of free payload, possibly one of several that belong together.
/// Wire: 7 to 1031 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgPack : Record<CSRelayMsgPack> {
    static constexpr size_t maxWireSize = 1031;

    uint16_t wSeqId;      ///< Sequence id of the payload. [2 bytes]
    uint8_t bCount;       ///< Number of pieces of the payload. [1 byte; default 1]
    uint8_t bIndex;       ///< Number of this piece, from 0; not checked against `bCount`. [1 byte]
    uint8_t bDataType;    ///< What kind of data the payload is; settled by the applications. [1 byte]
    uint16_t wLength;     ///< Bytes in `szData`. [2 bytes]
    uint8_t szData[1024]; ///< The payload, opaque to the codec. [0 to 1024 bytes; bound 1024; count wLength]
};

/// One input datum: what one player did in one tick.
/// Wire: 9 to 1033 bytes at version 1.
struct KORVAN_RECORD CSRelayData : Record<CSRelayData> {
    static constexpr size_t maxWireSize = 1033;

    uint32_t dwObjectId; ///< The object, as a rule the player, that the input belongs to. [4 bytes]
    uint16_t wRelayLen;  ///< Bytes in `szRelayBuf`. [2 bytes]
    uint8_t
        szRelayBuf[1024]; ///< The input, opaque to the codec. [0 to 1024 bytes; bound 1024; count wRelayLen]
    uint8_t bUserStatusFlag; ///< Status flags of that user; settled by the applications. [1 byte]
    uint16_t wSequance;      ///< Sequence number of the input. [2 bytes]
};

/// One client input.
/// Wire: 10 to 1034 bytes at version 2, 9 to 1033 bytes at version 1.
struct KORVAN_RECORD CSRelayInput : Record<CSRelayInput> {
    static constexpr size_t maxWireSize = 1034;

    CSRelayData stRelayData; ///< The input. [9 to 1033 bytes]
    uint8_t bRepeatCount; ///< How many times the input counts; 1 from a peer at version 1, which cannot say.
                          ///< [1 byte; since version 2; default 1]
};

/// Several inputs in one message, as a rule one for each of several frames. They carry no repeat count.
/// Wire: 1 to 10331 bytes at version 1.
struct KORVAN_RECORD CSRelayInputMulty : Record<CSRelayInputMulty> {
    static constexpr size_t maxWireSize = 10331;

    uint8_t bFrameCount;          ///< Elements in `astRelayData`. [1 byte]
    CSRelayData astRelayData[10]; ///< The inputs. [0 to 10330 bytes; bound 10; count bFrameCount]
};

/// One frame: the inputs of every player for one tick. A frame without inputs is a valid, empty frame.
/// Wire: 9 to 103309 bytes at version 3, 5 to 103305 bytes at version 2, 5 to 103305 bytes at version 1.
struct KORVAN_RECORD CSRelayFrame : Record<CSRelayFrame> {
    static constexpr size_t maxWireSize = 103309;

    uint32_t dwFrameId;            ///< Number of the frame. [4 bytes]
    uint8_t bCount;                ///< Elements in `astRelayData`. [1 byte]
    CSRelayData astRelayData[100]; ///< The inputs of this frame. [0 to 103300 bytes; bound 100; count bCount]
    uint32_t dwLastHasDataFrameId; ///< The most recent frame that had inputs; 0 from a peer at version 1
                                   ///< or 2. [4 bytes; since version 3]
};

/// Several frames in one message. A record of half a megabyte: keep it off small stacks.
/// Wire: 1 to 516546 bytes at version 3, 1 to 516526 bytes at version 2, 1 to 516526 bytes at version 1.
struct KORVAN_RECORD CSRelayFramePack : Record<CSRelayFramePack> {
    static constexpr size_t maxWireSize = 516546;

    uint8_t bCount;               ///< Elements in `astRelayData`. [1 byte]
    CSRelayFrame astRelayData[5]; ///< The frames. [0 to 516545 bytes; bound 5; count bCount]
};

// ---- Session: login, heartbeat, stop, errors ----

/// The client logs in to a room.
/// Wire: 9 to 136 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgLoginReq : Record<CSRelayMsgLoginReq> {
    static constexpr size_t maxWireSize = 136;

    char szSigBuf[128]; ///< The client's login signature; a secret, so keep it out of logs.
                        ///< [5 to 132 bytes; capacity 128]
    uint32_t dwReserve; ///< Reserved. [4 bytes]
};

/// The server's answer to a login.
/// Wire: 4 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgLoginRes : Record<CSRelayMsgLoginRes> {
    static constexpr size_t maxWireSize = 4;

    uint32_t dwReserve; ///< Reserved. [4 bytes]
};

/// The server tells the client to log in again.
/// Wire: 12 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgReloginNotify : Record<CSRelayMsgReloginNotify> {
    static constexpr size_t maxWireSize = 12;

    uint32_t dwReserve;   ///< Reserved. [4 bytes]
    uint64_t ullQuestion; ///< The server's question for the new login; carried unchanged. [8 bytes]
};

/// The client shows that it is alive.
/// Wire: 4 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgHeartBeatReq : Record<CSRelayMsgHeartBeatReq> {
    static constexpr size_t maxWireSize = 4;

    uint32_t dwUnused; ///< Unused. [4 bytes]
};

/// The server's answer to a heartbeat.
/// Wire: 4 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgHeartBeatRes : Record<CSRelayMsgHeartBeatRes> {
    static constexpr size_t maxWireSize = 4;

    uint32_t dwHeartBeatIntervalMs; ///< The heartbeat interval, in milliseconds. [4 bytes]
};

/// The client asks to stop.
/// Wire: 4 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgStopReq : Record<CSRelayMsgStopReq> {
    static constexpr size_t maxWireSize = 4;

    uint32_t dwReserve; ///< Reserved. [4 bytes]
};

/// The server's answer to a stop.
/// Wire: 8 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgStopRes : Record<CSRelayMsgStopRes> {
    static constexpr size_t maxWireSize = 8;

    int32_t iResult;    ///< The result; settled between client and server. [4 bytes]
    uint32_t dwReserve; ///< Reserved. [4 bytes]
};

/// The server reports an error. Not all of its defaults are zero.
/// Wire: 16 to 2062 bytes at version 1.
struct KORVAN_RECORD CSRelayError : Record<CSRelayError> {
    static constexpr size_t maxWireSize = 2062;

    uint32_t dwError_code;       ///< The error's number. [4 bytes; default 1]
    char szError_code_str[1024]; ///< The error in words. [5 to 1028 bytes; capacity 1024]
    char szError_svr_url[1024];  ///< The address of a server. [5 to 1028 bytes; capacity 1024]
    uint8_t bRequest_cmd_code;   ///< The command id of the request that failed. [1 byte; default 1]
    uint8_t bIsFatalError;       ///< A flag: not 0 when the error ends the session. [1 byte]
};

// ---- Game start ----

/// The client asks to start a game.
/// Wire: 9 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgStartReq : Record<CSRelayMsgStartReq> {
    static constexpr size_t maxWireSize = 9;

    uint32_t dwReserve;     ///< Reserved. [4 bytes]
    uint8_t bNeedSeek;      ///< A flag: not 0 to begin at `dwSeekFrameID`. [1 byte]
    uint32_t dwSeekFrameID; ///< The frame to begin at; travels whatever the flag holds. [4 bytes]
};

/// The server's answer to a start.
/// Wire: 14 to 269 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgStartRes : Record<CSRelayMsgStartRes> {
    static constexpr size_t maxWireSize = 269;

    int32_t iResult;               ///< The result; settled between client and server. [4 bytes]
    char szErrorDesc[256];         ///< A failure in words. [5 to 260 bytes; capacity 256]
    uint32_t dwBeginFrameID;       ///< The frame at which play begins. [4 bytes]
    uint8_t bNeedToPlayFromFrame0; ///< A flag: not 0 when the client must play from frame 0 on. [1 byte]
};

/// One user of a room. Stands alone: no command carries it.
/// Wire: 10 to 328 bytes at version 1.
struct KORVAN_RECORD CreateRoomUserInfo : Record<CreateRoomUserInfo> {
    static constexpr size_t maxWireSize = 328;

    char szUser_id[256]; ///< The user's identifier. [5 to 260 bytes; capacity 256]
    char szUser_ip[64];  ///< The user's IP address; personal data. [5 to 68 bytes; capacity 64]
};

// ---- Sync and replay ----

/// The client asks for frames that it missed.
/// Wire: 8 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgSyncReq : Record<CSRelayMsgSyncReq> {
    static constexpr size_t maxWireSize = 8;

    uint32_t dwFrameIdBegin; ///< The first frame wanted. [4 bytes]
    uint32_t dwFrameIdEnd;   ///< The last frame wanted; not checked against the first. [4 bytes]
};

/// The server's answer to a sync: one frame.
/// Wire: 13 to 103313 bytes at version 3, 9 to 103309 bytes at version 2, 9 to 103309 bytes at version 1.
struct KORVAN_RECORD CSRelayMsgSyncRes : Record<CSRelayMsgSyncRes> {
    static constexpr size_t maxWireSize = 103313;

    int32_t iResult;         ///< The result; settled between client and server. [4 bytes]
    CSRelayFrame stSyncData; ///< The frame. [9 to 103309 bytes]
};

/// One piece of a recorded game: a run of frames.
/// Wire: 8 bytes at version 1.
struct KORVAN_RECORD ReplayPieceInof : Record<ReplayPieceInof> {
    static constexpr size_t maxWireSize = 8;

    uint32_t dwStartFrame; ///< The first frame of the run. [4 bytes]
    uint32_t dwFrameCount; ///< The number of frames. [4 bytes; default 1000]
};

/// The client asks to play a recorded game from a given point. By default it asks for one piece.
/// Wire: 16 to 96 bytes at version 1.
struct KORVAN_RECORD CSRelaySeekPlayReq : Record<CSRelaySeekPlayReq> {
    static constexpr size_t maxWireSize = 96;

    uint32_t dwFrameIntervalMs;      ///< The time between frames, in milliseconds. [4 bytes; default 10]
    uint32_t dwStartFrame;           ///< The frame at which play starts. [4 bytes]
    uint32_t dwFrameCount;           ///< How many frames are wanted. [4 bytes; default 1000]
    uint32_t dwReplayPieceInofCount; ///< Elements in `astReplayPieceInof`. [4 bytes; default 1]
    ReplayPieceInof astReplayPieceInof[10]; ///< The pieces of the recording.
                                            ///< [0 to 80 bytes; bound 10; count dwReplayPieceInofCount]
};

/// The server's answer to a seek.
/// Wire: 9 to 1032 bytes at version 1.
struct KORVAN_RECORD CSRelaySeekPlayRes : Record<CSRelaySeekPlayRes> {
    static constexpr size_t maxWireSize = 1032;

    uint32_t dwRetCode;  ///< The return code; settled between client and server. [4 bytes]
    char szRetStr[1024]; ///< The return code in words. [5 to 1028 bytes; capacity 1024]
};

// ---- Statistics ----

/// The client asks for statistics.
/// Wire: 4 bytes at version 1.
struct KORVAN_RECORD CSRelayStatReq : Record<CSRelayStatReq> {
    static constexpr size_t maxWireSize = 4;

    uint32_t dwRetCode; ///< Carried unchanged, from client to server in spite of its name. [4 bytes]
};

/// The server's statistics, three texts that the codec does not interpret.
/// Wire: 15 to 12300 bytes at version 1.
struct KORVAN_RECORD CSRelayStatRes : Record<CSRelayStatRes> {
    static constexpr size_t maxWireSize = 12300;

    char szRoomRetStr[4096];    ///< Statistics of the room. [5 to 4100 bytes; capacity 4096]
    char szUserRetStr[4096];    ///< Statistics of the user. [5 to 4100 bytes; capacity 4096]
    char szProcessRetStr[4096]; ///< Statistics of the server process. [5 to 4100 bytes; capacity 4096]
};

// ---- Commands ----

/// The command ids, each named like the union member that it selects. All other ids are unassigned.
namespace cmd {
/// Selects the member of this name.
/// @{
inline constexpr uint8_t stRelayLoginReq = 161;
inline constexpr uint8_t stRelayLoginRes = 162;
inline constexpr uint8_t stRelayStartReq = 163;
inline constexpr uint8_t stRelayStartRes = 164;
inline constexpr uint8_t stRelayInputing = 165;
inline constexpr uint8_t stRelayLockStep = 167;
inline constexpr uint8_t stRelaySyncReq = 168;
inline constexpr uint8_t stRelaySyncRes = 169;
inline constexpr uint8_t stRelayMsgPack = 170;
inline constexpr uint8_t stRelayStopReq = 174;
inline constexpr uint8_t stRelayStopRes = 175;
inline constexpr uint8_t stCSRelaySeekPlayReq = 182;
inline constexpr uint8_t stCSRelaySeekPlayRes = 183;
inline constexpr uint8_t stCSRelayMsgHeartBeatReq = 184;
inline constexpr uint8_t stCSRelayMsgHeartBeatRes = 185;
inline constexpr uint8_t stRelayBroadCastReq = 186;
inline constexpr uint8_t stRelayBroadCastRes = 187;
inline constexpr uint8_t stRelayInputCheckReq = 188;
inline constexpr uint8_t stRelayBroadCastCheckReq = 189;
inline constexpr uint8_t stRelayCheckReq = 190;
inline constexpr uint8_t stCSRelayMsgStatUserReq = 191;
inline constexpr uint8_t stCSRelayMsgStatUserRes = 192;
inline constexpr uint8_t stRelayReloginNotify = 193;
inline constexpr uint8_t stRelayError = 194;
inline constexpr uint8_t stRelayInputMulty = 195;
/// @}
} // namespace cmd

/// The name of a command, that of its union member, such as "stRelayLoginReq"; a null pointer for an id that
/// is not assigned. The text lives as long as the program.
KORVAN_API const char* commandName(long long id) noexcept;

/// The body of a message: one member, all in the same storage. The union does not know which one is live, so
/// every operation takes the command id as its selector.
///
/// An unassigned selector, negative and large ones included, is no error: the operation returns 0, and
/// neither reads nor writes the buffer or the storage. A plain buffer that is null still gives -19.
union KORVAN_RECORD CSRelayMsgBody {
    static constexpr size_t maxWireSize = 516546;

    CSRelayMsgLoginReq stRelayLoginReq;              ///< Client to server: log in.
    CSRelayMsgLoginRes stRelayLoginRes;              ///< The answer to it.
    CSRelayMsgStartReq stRelayStartReq;              ///< Client to server: start a game.
    CSRelayMsgStartRes stRelayStartRes;              ///< The answer to it.
    CSRelayInput stRelayInputing;                    ///< Client to server: an input.
    CSRelayFramePack stRelayLockStep;                ///< Server to client: frames.
    CSRelayMsgSyncReq stRelaySyncReq;                ///< Client to server: frames missed.
    CSRelayMsgSyncRes stRelaySyncRes;                ///< The answer to it.
    CSRelayMsgPack stRelayMsgPack;                   ///< Free payload.
    CSRelayMsgStopReq stRelayStopReq;                ///< Client to server: stop.
    CSRelayMsgStopRes stRelayStopRes;                ///< The answer to it.
    CSRelaySeekPlayReq stCSRelaySeekPlayReq;         ///< Client to server: play a recorded game.
    CSRelaySeekPlayRes stCSRelaySeekPlayRes;         ///< The answer to it.
    CSRelayMsgHeartBeatReq stCSRelayMsgHeartBeatReq; ///< Client to server: alive.
    CSRelayMsgHeartBeatRes stCSRelayMsgHeartBeatRes; ///< The answer to it.
    CSRelayInput stRelayBroadCastReq;                ///< Client to server: an input to broadcast.
    CSRelayFramePack stRelayBroadCastRes;            ///< Server to client: frames of broadcast inputs.
    CSRelayInput stRelayInputCheckReq;               ///< Client to server: check of an input.
    CSRelayInput stRelayBroadCastCheckReq;           ///< Client to server: check of a broadcast.
    CSRelayInput stRelayCheckReq;                    ///< Client to server: check.
    CSRelayStatReq stCSRelayMsgStatUserReq;          ///< Client to server: statistics.
    CSRelayStatRes stCSRelayMsgStatUserRes;          ///< The answer to it.
    CSRelayMsgReloginNotify stRelayReloginNotify;    ///< Server to client: log in again.
    CSRelayError stRelayError;                       ///< Server to client: an error.
    CSRelayInputMulty stRelayInputMulty;             ///< Client to server: several inputs.

    /// Sets every byte of the storage to 0. Returns 0.
    int32_t construct() noexcept;

    /// Sets the fields of the selected member to their defaults and leaves the rest of the storage as it was.
    int32_t construct(long long selector) noexcept;

    /// Packs the selected member, as `Record::pack` does.
    int32_t pack(long long selector, char* buffer, size_t size, size_t* usedSize = nullptr,
                 uint32_t cutVer = 0) const noexcept;
    /// The same at the cursor of @p buffer.
    int32_t pack(long long selector, Korvan::BixWriteBuf& buffer, uint32_t cutVer = 0) const noexcept;

    /// Unpacks the selected member, as `Record::unpack` does.
    int32_t unpack(long long selector, const char* buffer, size_t size, size_t* usedSize = nullptr,
                   uint32_t cutVer = 0) noexcept;
    /// The same at the cursor of @p buffer.
    int32_t unpack(long long selector, Korvan::BixReadBuf& buffer, uint32_t cutVer = 0) noexcept;

    /// Writes the member's name as a header line, then the member one level deeper, as `Record::visualize`
    /// does.
    int32_t visualize(long long selector, char* buffer, size_t size, size_t* usedSize = nullptr,
                      int indent = 0, char sep = '\n') const noexcept;
    /// The same at the cursor of @p buffer.
    int32_t visualize(long long selector, Korvan::BixWriteBuf& buffer, int indent = 0,
                      char sep = '\n') const noexcept;
};

/// One message: what is sent and received. A record of half a megabyte: keep one on the heap or in static
/// storage and use it again for every message. Wire: 12 to 516558 bytes at version 3, 12 to 516538 bytes at
/// version 2, 12 to 516538 bytes at version 1.
///
/// Its operations are those of `Record`, with these differences:
///
/// - `construct` sets the head to 0, which selects no command, and leaves the body as it was. For the
///   defaults of a member, set `stHead.bCmdId` and call `stBody.construct(stHead.bCmdId)`.
/// - `pack` puts the effective version into byte 8 of the message, on the wire only. After a failure in the
///   body that byte holds the record's own `bVersion`. A message with an unassigned command id is its head
///   alone.
/// - `unpack` ignores its @p cutVer: it first looks at byte 8 and decodes at the version that it finds
///   there. With fewer than 9 bytes the result is -2, with a version other than 1 to 3 it is -20
///   (`BIX_ERR_VERSION_OUT_OF_RANGE`); either leaves the record and the buffer's cursor as they were. With an
///   unassigned command id only the head is consumed, and the length of what follows cannot be known.
/// - -10 (`BIX_ERR_VERSION_FIELD_CUT`) stands for a version without a version byte, which there is none of.
struct KORVAN_RECORD CSRelayMsg : Record<CSRelayMsg> {
    static constexpr size_t maxWireSize = 516558;

    CSRelayMsgHead stHead; ///< The head. [12 bytes]
    CSRelayMsgBody stBody; ///< The member that the head's `bCmdId` selects. [0 to 516546 bytes]
};

} // namespace cs_relay_msg

KORVAN_PACK_END

#endif
