/// @file
/// The plain path by hand: each field through the buffer's own operation, each result checked, as one would
/// write it without a table and without a thought of speed. Packs and unpacks version 3.
#ifndef KORVAN_BENCH_FIELD_BY_FIELD_H
#define KORVAN_BENCH_FIELD_BY_FIELD_H

#include "protocol/cs_relay_msg.h"

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstdint>
#include <cstring>

namespace by_field {

using namespace cs_relay_msg;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

#define KORVAN_BENCH_TRY(step)                                                                               \
    do {                                                                                                     \
        if (const int32_t result = (step)) {                                                                 \
            return result;                                                                                   \
        }                                                                                                    \
    } while (false)

// A field of a packed record cannot be read through a reference, so each read goes through a local.
#define KORVAN_BENCH_READ(type, read, field)                                                                 \
    do {                                                                                                     \
        type value = 0;                                                                                      \
        KORVAN_BENCH_TRY(in.read(value));                                                                    \
        (field) = value;                                                                                     \
    } while (false)

inline int32_t pack(const CSRelayMsgHead& head, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(out.writeUInt32(head.dwUserID));
    KORVAN_BENCH_TRY(out.writeUInt32(head.dwRoomID));
    KORVAN_BENCH_TRY(out.writeUInt8(head.bVersion));
    KORVAN_BENCH_TRY(out.writeUInt16(head.wAsyncID));
    return out.writeUInt8(head.bCmdId);
}

inline int32_t unpack(CSRelayMsgHead& head, BixReadBuf& in) {
    KORVAN_BENCH_READ(uint32_t, readUInt32, head.dwUserID);
    KORVAN_BENCH_READ(uint32_t, readUInt32, head.dwRoomID);
    KORVAN_BENCH_READ(uint8_t, readUInt8, head.bVersion);
    KORVAN_BENCH_READ(uint16_t, readUInt16, head.wAsyncID);
    KORVAN_BENCH_READ(uint8_t, readUInt8, head.bCmdId);
    return 0;
}

template <size_t Capacity>
int32_t packText(const char (&text)[Capacity], BixWriteBuf& out) {
    const size_t prefix = out.getUsedSize();
    KORVAN_BENCH_TRY(out.reserve(4));
    const_cast<char*>(text)[Capacity - 1] = '\0';
    KORVAN_BENCH_TRY(out.writeBytes(text, std::strlen(text) + 1));
    return out.writeUInt32(static_cast<uint32_t>(out.getUsedSize() - prefix - 4), prefix);
}

template <size_t Capacity>
int32_t unpackText(char (&text)[Capacity], BixReadBuf& in) {
    uint32_t length = 0;
    KORVAN_BENCH_TRY(in.readUInt32(length));
    if (length > in.getLeftSize()) {
        return Korvan::BIX_ERR_READ_UNDERFLOW;
    }
    if (length > Capacity) {
        return Korvan::BIX_ERR_STRING_TOO_LONG;
    }
    if (length == 0) {
        return Korvan::BIX_ERR_STRING_EMPTY;
    }
    KORVAN_BENCH_TRY(in.readBytes(text, length));
    if (text[length - 1] != '\0' || std::strlen(text) + 1 != length) {
        return Korvan::BIX_ERR_STRING_MALFORMED;
    }
    return 0;
}

inline int32_t pack(const CSRelayMsgHeartBeatReq& beat, BixWriteBuf& out) {
    return out.writeUInt32(beat.dwUnused);
}

inline int32_t unpack(CSRelayMsgHeartBeatReq& beat, BixReadBuf& in) {
    KORVAN_BENCH_READ(uint32_t, readUInt32, beat.dwUnused);
    return 0;
}

inline int32_t pack(const CSRelayMsgLoginReq& login, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(packText(login.szSigBuf, out));
    return out.writeUInt32(login.dwReserve);
}

inline int32_t unpack(CSRelayMsgLoginReq& login, BixReadBuf& in) {
    KORVAN_BENCH_TRY(unpackText(login.szSigBuf, in));
    KORVAN_BENCH_READ(uint32_t, readUInt32, login.dwReserve);
    return 0;
}

inline int32_t pack(const CSRelayData& data, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(out.writeUInt32(data.dwObjectId));
    KORVAN_BENCH_TRY(out.writeUInt16(data.wRelayLen));
    if (data.wRelayLen > sizeof(data.szRelayBuf)) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    KORVAN_BENCH_TRY(out.writeBytes(data.szRelayBuf, data.wRelayLen));
    KORVAN_BENCH_TRY(out.writeUInt8(data.bUserStatusFlag));
    return out.writeUInt16(data.wSequance);
}

inline int32_t unpack(CSRelayData& data, BixReadBuf& in) {
    KORVAN_BENCH_READ(uint32_t, readUInt32, data.dwObjectId);
    KORVAN_BENCH_READ(uint16_t, readUInt16, data.wRelayLen);
    if (data.wRelayLen > sizeof(data.szRelayBuf)) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    KORVAN_BENCH_TRY(in.readBytes(data.szRelayBuf, data.wRelayLen));
    KORVAN_BENCH_READ(uint8_t, readUInt8, data.bUserStatusFlag);
    KORVAN_BENCH_READ(uint16_t, readUInt16, data.wSequance);
    return 0;
}

inline int32_t pack(const CSRelayInput& input, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(pack(input.stRelayData, out));
    return out.writeUInt8(input.bRepeatCount);
}

inline int32_t unpack(CSRelayInput& input, BixReadBuf& in) {
    KORVAN_BENCH_TRY(unpack(input.stRelayData, in));
    KORVAN_BENCH_READ(uint8_t, readUInt8, input.bRepeatCount);
    return 0;
}

inline int32_t pack(const CSRelayFrame& frame, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(out.writeUInt32(frame.dwFrameId));
    KORVAN_BENCH_TRY(out.writeUInt8(frame.bCount));
    if (frame.bCount > 100) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    for (size_t i = 0; i < frame.bCount; ++i) {
        KORVAN_BENCH_TRY(pack(frame.astRelayData[i], out));
    }
    return out.writeUInt32(frame.dwLastHasDataFrameId);
}

inline int32_t unpack(CSRelayFrame& frame, BixReadBuf& in) {
    KORVAN_BENCH_READ(uint32_t, readUInt32, frame.dwFrameId);
    KORVAN_BENCH_READ(uint8_t, readUInt8, frame.bCount);
    if (frame.bCount > 100) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    for (size_t i = 0; i < frame.bCount; ++i) {
        KORVAN_BENCH_TRY(unpack(frame.astRelayData[i], in));
    }
    KORVAN_BENCH_READ(uint32_t, readUInt32, frame.dwLastHasDataFrameId);
    return 0;
}

inline int32_t pack(const CSRelayFramePack& frames, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(out.writeUInt8(frames.bCount));
    if (frames.bCount > 5) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    for (size_t i = 0; i < frames.bCount; ++i) {
        KORVAN_BENCH_TRY(pack(frames.astRelayData[i], out));
    }
    return 0;
}

inline int32_t unpack(CSRelayFramePack& frames, BixReadBuf& in) {
    KORVAN_BENCH_READ(uint8_t, readUInt8, frames.bCount);
    if (frames.bCount > 5) {
        return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    for (size_t i = 0; i < frames.bCount; ++i) {
        KORVAN_BENCH_TRY(unpack(frames.astRelayData[i], in));
    }
    return 0;
}

inline int32_t pack(const CSRelayStatRes& answer, BixWriteBuf& out) {
    KORVAN_BENCH_TRY(packText(answer.szRoomRetStr, out));
    KORVAN_BENCH_TRY(packText(answer.szUserRetStr, out));
    return packText(answer.szProcessRetStr, out);
}

inline int32_t unpack(CSRelayStatRes& answer, BixReadBuf& in) {
    KORVAN_BENCH_TRY(unpackText(answer.szRoomRetStr, in));
    KORVAN_BENCH_TRY(unpackText(answer.szUserRetStr, in));
    return unpackText(answer.szProcessRetStr, in);
}

/// The member that the command selects, of those that are measured.
template <class Body, class Visit>
int32_t member(Body& body, uint8_t command, Visit visit) {
    switch (command) {
    case cmd::stRelayLoginReq:
        return visit(body.stRelayLoginReq);
    case cmd::stRelayInputing:
        return visit(body.stRelayInputing);
    case cmd::stRelayLockStep:
        return visit(body.stRelayLockStep);
    case cmd::stCSRelayMsgHeartBeatReq:
    case cmd::stCSRelayMsgHeartBeatRes: // one number as well
        return visit(body.stCSRelayMsgHeartBeatReq);
    case cmd::stCSRelayMsgStatUserRes:
        return visit(body.stCSRelayMsgStatUserRes);
    default:
        return 0;
    }
}

inline int32_t pack(const CSRelayMsg& message, BixWriteBuf& out) {
    const size_t start = out.getUsedSize();
    KORVAN_BENCH_TRY(pack(message.stHead, out));
    KORVAN_BENCH_TRY(member(message.stBody, message.stHead.bCmdId,
                            [&out](const auto& record) { return pack(record, out); }));
    return out.writeUInt8(3, start + 8);
}

inline int32_t unpack(CSRelayMsg& message, BixReadBuf& in) {
    uint8_t version = 0;
    KORVAN_BENCH_TRY(in.readUInt8(version, in.getUsedSize() + 8));
    if (version != 3) {
        return Korvan::BIX_ERR_VERSION_OUT_OF_RANGE;
    }
    KORVAN_BENCH_TRY(unpack(message.stHead, in));
    return member(message.stBody, message.stHead.bCmdId, [&in](auto& record) { return unpack(record, in); });
}

#undef KORVAN_BENCH_READ
#undef KORVAN_BENCH_TRY

} // namespace by_field

#endif
