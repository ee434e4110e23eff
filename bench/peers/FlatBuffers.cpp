/// FlatBuffers. As its pages advise: the builder is used again, fixed-size data are structs, input is
/// verified before it is read. What was read is copied into the codec's record, since the input's memory is
/// not kept.
#include "Peer.h"

#include "relay_generated.h"

namespace peers {

namespace {

using flatbuffers::FlatBufferBuilder;
using flatbuffers::Offset;

struct FlatBuffers : OnRecord {
    using Bytes = flatbuffers::Vector<uint8_t>;

    static Offset<Bytes> bytes(FlatBufferBuilder& to, const void* data, size_t size) {
        return to.CreateVector(static_cast<const uint8_t*>(data), size);
    }

    static Offset<relay_fb::Data> putData(FlatBufferBuilder& to, const CSRelayData& data) {
        const auto payload = bytes(to, data.szRelayBuf, data.wRelayLen);
        return relay_fb::CreateData(to, data.dwObjectId, payload, data.bUserStatusFlag, data.wSequance);
    }

    static Offset<void> putBody(FlatBufferBuilder& to, const Message& m) {
        switch (m.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            const CSRelayMsgLoginReq& login = m.stBody.stRelayLoginReq;
            const auto text = bytes(to, login.szSigBuf, std::strlen(login.szSigBuf));
            return relay_fb::CreateLogin(to, text, login.dwReserve).Union();
        }
        case cmd::stRelayInputing: {
            const auto data = putData(to, m.stBody.stRelayInputing.stRelayData);
            return relay_fb::CreateInput(to, data, m.stBody.stRelayInputing.bRepeatCount).Union();
        }
        case cmd::stRelayLockStep: {
            const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
            Offset<relay_fb::Frame> made[5];
            for (size_t i = 0; i < frames.bCount; ++i) {
                const CSRelayFrame& frame = frames.astRelayData[i];
                Offset<relay_fb::Data> data[100];
                for (size_t k = 0; k < frame.bCount; ++k) {
                    data[k] = putData(to, frame.astRelayData[k]);
                }
                const auto list = to.CreateVector(data, frame.bCount);
                made[i] = relay_fb::CreateFrame(to, frame.dwFrameId, list, frame.dwLastHasDataFrameId);
            }
            return relay_fb::CreateFramePack(to, to.CreateVector(made, frames.bCount)).Union();
        }
        case cmd::stCSRelayMsgStatUserRes: {
            const CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
            const auto room = bytes(to, answer.szRoomRetStr, std::strlen(answer.szRoomRetStr));
            const auto user = bytes(to, answer.szUserRetStr, std::strlen(answer.szUserRetStr));
            const auto process = bytes(to, answer.szProcessRetStr, std::strlen(answer.szProcessRetStr));
            return relay_fb::CreateStatistics(to, room, user, process).Union();
        }
        default:
            return relay_fb::CreateHeartBeat(to, heartBeat(m)).Union();
        }
    }

    static relay_fb::Body bodyType(uint8_t command) {
        switch (command) {
        case cmd::stRelayLoginReq:
            return relay_fb::Body_Login;
        case cmd::stRelayInputing:
            return relay_fb::Body_Input;
        case cmd::stRelayLockStep:
            return relay_fb::Body_FramePack;
        case cmd::stCSRelayMsgStatUserRes:
            return relay_fb::Body_Statistics;
        default:
            return relay_fb::Body_HeartBeat;
        }
    }

    size_t pack(const Message& m, char*, size_t) {
        builder.Clear();
        const auto body = putBody(builder, m);
        const relay_fb::Head head(m.stHead.dwUserID, m.stHead.dwRoomID, m.stHead.wAsyncID, m.stHead.bVersion,
                                  m.stHead.bCmdId);
        builder.Finish(relay_fb::CreateMessage(builder, &head, bodyType(m.stHead.bCmdId), body));
        return builder.GetSize();
    }

    /// It builds in memory of its own.
    const char* packed(const char*) const {
        return reinterpret_cast<const char*>(builder.GetBufferPointer());
    }

    static bool getData(const relay_fb::Data* from, CSRelayData& to) {
        if (from == nullptr || from->relay_buf() == nullptr) {
            return false;
        }
        to.dwObjectId = from->object_id();
        to.bUserStatusFlag = from->user_status_flag();
        to.wSequance = from->sequance();
        return setPayload(to, from->relay_buf()->data(), from->relay_buf()->size());
    }

    template <size_t Capacity>
    static bool getText(const Bytes* from, char (&to)[Capacity]) {
        return from != nullptr && setText(to, from->data(), from->size());
    }

    static bool getFrames(const relay_fb::FramePack& from, CSRelayFramePack& to) {
        if (from.relay_data() == nullptr || from.relay_data()->size() > 5) {
            return false;
        }
        to.bCount = static_cast<uint8_t>(from.relay_data()->size());
        for (uint32_t i = 0; i < to.bCount; ++i) {
            const relay_fb::Frame* const source = from.relay_data()->Get(i);
            CSRelayFrame& frame = to.astRelayData[i];
            if (source->relay_data() == nullptr || source->relay_data()->size() > 100) {
                return false;
            }
            frame.dwFrameId = source->frame_id();
            frame.bCount = static_cast<uint8_t>(source->relay_data()->size());
            for (uint32_t k = 0; k < frame.bCount; ++k) {
                if (!getData(source->relay_data()->Get(k), frame.astRelayData[k])) {
                    return false;
                }
            }
            frame.dwLastHasDataFrameId = source->last_has_data_frame_id();
        }
        return true;
    }

    bool unpack(Message& m, const char* memory, size_t size) {
        flatbuffers::Verifier verifier(reinterpret_cast<const uint8_t*>(memory), size);
        if (!relay_fb::VerifyMessageBuffer(verifier)) {
            return false;
        }
        const relay_fb::Message* const from = relay_fb::GetMessage(memory);
        const relay_fb::Head* const head = from->head();
        if (head == nullptr) {
            return false;
        }
        m.stHead.dwUserID = head->user_id();
        m.stHead.dwRoomID = head->room_id();
        m.stHead.bVersion = head->version();
        m.stHead.wAsyncID = head->async_id();
        m.stHead.bCmdId = head->cmd_id();
        switch (from->body_type()) {
        case relay_fb::Body_Login:
            m.stBody.stRelayLoginReq.dwReserve = from->body_as_Login()->reserve();
            return getText(from->body_as_Login()->sig_buf(), m.stBody.stRelayLoginReq.szSigBuf);
        case relay_fb::Body_Input:
            m.stBody.stRelayInputing.bRepeatCount = from->body_as_Input()->repeat_count();
            return getData(from->body_as_Input()->relay_data(), m.stBody.stRelayInputing.stRelayData);
        case relay_fb::Body_FramePack:
            return getFrames(*from->body_as_FramePack(), m.stBody.stRelayLockStep);
        case relay_fb::Body_Statistics: {
            CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
            const relay_fb::Statistics* const texts = from->body_as_Statistics();
            return getText(texts->room(), answer.szRoomRetStr) &&
                   getText(texts->user(), answer.szUserRetStr) &&
                   getText(texts->process(), answer.szProcessRetStr);
        }
        case relay_fb::Body_HeartBeat:
            m.stBody.stCSRelayMsgHeartBeatReq.dwUnused = from->body_as_HeartBeat()->number();
            return true;
        default:
            return false;
        }
    }

    FlatBufferBuilder builder{1 << 21};
};

} // namespace

void addFlatBuffers() {
    add<FlatBuffers>("flatbuffers");
}

} // namespace peers
