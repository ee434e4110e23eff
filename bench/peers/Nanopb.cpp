/// nanopb, with fixed arrays in its records, so that nothing is allocated and no callback is called. G does
/// not fit: see relay.options.
#include "Peer.h"

#include <pb_decode.h>
#include <pb_encode.h>

#include "nanopb/relay.pb.h"

namespace peers {

namespace {

template <class Bytes>
void setBytes(Bytes& to, const void* from, size_t size) {
    run::require(size <= sizeof(to.bytes), "nanopb", "does not fit");
    to.size = static_cast<pb_size_t>(size);
    std::memcpy(to.bytes, from, size);
}

void fillData(relay_pb_Data& to, const CSRelayData& from) {
    to.object_id = from.dwObjectId;
    setBytes(to.relay_buf, from.szRelayBuf, from.wRelayLen);
    to.user_status_flag = from.bUserStatusFlag;
    to.sequance = from.wSequance;
}

void extractData(const relay_pb_Data& from, CSRelayData& to) {
    to.dwObjectId = from.object_id;
    run::require(setPayload(to, from.relay_buf.bytes, from.relay_buf.size), "nanopb", "payload");
    to.bUserStatusFlag = static_cast<uint8_t>(from.user_status_flag);
    to.wSequance = static_cast<uint16_t>(from.sequance);
}

struct Nanopb : InPlace {
    using Native = relay_pb_Message;

    static void fill(Native& to, const Message& from) {
        to.has_head = true;
        to.head.user_id = from.stHead.dwUserID;
        to.head.room_id = from.stHead.dwRoomID;
        to.head.version = from.stHead.bVersion;
        to.head.async_id = from.stHead.wAsyncID;
        to.head.cmd_id = from.stHead.bCmdId;
        switch (from.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            const CSRelayMsgLoginReq& login = from.stBody.stRelayLoginReq;
            to.has_login = true;
            setBytes(to.login.sig_buf, login.szSigBuf, std::strlen(login.szSigBuf));
            to.login.reserve = login.dwReserve;
            break;
        }
        case cmd::stRelayInputing:
            to.has_input = true;
            to.input.has_relay_data = true;
            fillData(to.input.relay_data, from.stBody.stRelayInputing.stRelayData);
            to.input.repeat_count = from.stBody.stRelayInputing.bRepeatCount;
            break;
        case cmd::stRelayLockStep: {
            const CSRelayFramePack& frames = from.stBody.stRelayLockStep;
            to.has_frame_pack = true;
            to.frame_pack.relay_data_count = frames.bCount;
            for (size_t i = 0; i < frames.bCount; ++i) {
                relay_pb_Frame& frame = to.frame_pack.relay_data[i];
                const CSRelayFrame& source = frames.astRelayData[i];
                frame.frame_id = source.dwFrameId;
                frame.relay_data_count = source.bCount;
                for (size_t k = 0; k < source.bCount; ++k) {
                    fillData(frame.relay_data[k], source.astRelayData[k]);
                }
                frame.last_has_data_frame_id = source.dwLastHasDataFrameId;
            }
            break;
        }
        case cmd::stCSRelayMsgStatUserRes: {
            const CSRelayStatRes& answer = from.stBody.stCSRelayMsgStatUserRes;
            to.has_statistics = true;
            setBytes(to.statistics.room, answer.szRoomRetStr, std::strlen(answer.szRoomRetStr));
            setBytes(to.statistics.user, answer.szUserRetStr, std::strlen(answer.szUserRetStr));
            setBytes(to.statistics.process, answer.szProcessRetStr, std::strlen(answer.szProcessRetStr));
            break;
        }
        default:
            to.has_heart_beat = true;
            to.heart_beat.number = heartBeat(from);
            break;
        }
    }

    static void extract(const Native& from, Message& to) {
        to.stHead.dwUserID = from.head.user_id;
        to.stHead.dwRoomID = from.head.room_id;
        to.stHead.bVersion = static_cast<uint8_t>(from.head.version);
        to.stHead.wAsyncID = static_cast<uint16_t>(from.head.async_id);
        to.stHead.bCmdId = static_cast<uint8_t>(from.head.cmd_id);
        switch (to.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            const auto& text = from.login.sig_buf;
            run::require(setText(to.stBody.stRelayLoginReq.szSigBuf, text.bytes, text.size), "nanopb",
                         "text");
            to.stBody.stRelayLoginReq.dwReserve = from.login.reserve;
            break;
        }
        case cmd::stRelayInputing:
            extractData(from.input.relay_data, to.stBody.stRelayInputing.stRelayData);
            to.stBody.stRelayInputing.bRepeatCount = static_cast<uint8_t>(from.input.repeat_count);
            break;
        case cmd::stRelayLockStep: {
            CSRelayFramePack& frames = to.stBody.stRelayLockStep;
            frames.bCount = static_cast<uint8_t>(from.frame_pack.relay_data_count);
            for (size_t i = 0; i < frames.bCount; ++i) {
                const relay_pb_Frame& source = from.frame_pack.relay_data[i];
                CSRelayFrame& frame = frames.astRelayData[i];
                frame.dwFrameId = source.frame_id;
                frame.bCount = static_cast<uint8_t>(source.relay_data_count);
                for (size_t k = 0; k < frame.bCount; ++k) {
                    extractData(source.relay_data[k], frame.astRelayData[k]);
                }
                frame.dwLastHasDataFrameId = source.last_has_data_frame_id;
            }
            break;
        }
        case cmd::stCSRelayMsgStatUserRes: {
            CSRelayStatRes& answer = to.stBody.stCSRelayMsgStatUserRes;
            const relay_pb_Statistics& texts = from.statistics;
            run::require(setText(answer.szRoomRetStr, texts.room.bytes, texts.room.size) &&
                             setText(answer.szUserRetStr, texts.user.bytes, texts.user.size) &&
                             setText(answer.szProcessRetStr, texts.process.bytes, texts.process.size),
                         "nanopb", "text");
            break;
        }
        default:
            to.stBody.stCSRelayMsgHeartBeatReq.dwUnused = from.heart_beat.number;
            break;
        }
    }

    size_t pack(const Native& native, char* memory, size_t size) {
        pb_ostream_t out = pb_ostream_from_buffer(reinterpret_cast<pb_byte_t*>(memory), size);
        return pb_encode(&out, relay_pb_Message_fields, &native) ? out.bytes_written : 0;
    }

    bool unpack(Native& native, const char* memory, size_t size) {
        pb_istream_t in = pb_istream_from_buffer(reinterpret_cast<const pb_byte_t*>(memory), size);
        return pb_decode(&in, relay_pb_Message_fields, &native);
    }
};

} // namespace

void addNanopb() {
    add<Nanopb>("nanopb", true, "ABCDE");
}

} // namespace peers
