/// Cap'n Proto. As its pages advise: the builder's first segment is scratch memory that is used again, and
/// the message is written unpacked. What was read is copied into the codec's record, since the input's memory
/// is not kept.
#include "Peer.h"

#include <capnp/message.h>
#include <capnp/serialize.h>
#include <kj/io.h>

#include "relay.capnp.h"

namespace peers {

namespace {

struct CapnProto : OnRecord {
    static capnp::Data::Reader bytes(const void* data, size_t size) {
        return capnp::Data::Reader(static_cast<const kj::byte*>(data), size);
    }

    static capnp::Data::Reader text(const char* data) { return bytes(data, std::strlen(data)); }

    static void putData(relay_cp::Datum::Builder to, const CSRelayData& data) {
        to.setObjectId(data.dwObjectId);
        to.setRelayBuf(bytes(data.szRelayBuf, data.wRelayLen));
        to.setUserStatusFlag(data.bUserStatusFlag);
        to.setSequance(data.wSequance);
    }

    static void putBody(relay_cp::Message::Builder to, const Message& m) {
        switch (m.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            auto login = to.initLogin();
            login.setSigBuf(text(m.stBody.stRelayLoginReq.szSigBuf));
            login.setReserve(m.stBody.stRelayLoginReq.dwReserve);
            break;
        }
        case cmd::stRelayInputing: {
            auto input = to.initInput();
            putData(input.initRelayData(), m.stBody.stRelayInputing.stRelayData);
            input.setRepeatCount(m.stBody.stRelayInputing.bRepeatCount);
            break;
        }
        case cmd::stRelayLockStep: {
            const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
            auto list = to.initFramePack(frames.bCount);
            for (uint32_t i = 0; i < frames.bCount; ++i) {
                const CSRelayFrame& source = frames.astRelayData[i];
                auto frame = list[i];
                frame.setFrameId(source.dwFrameId);
                auto data = frame.initRelayData(source.bCount);
                for (uint32_t k = 0; k < source.bCount; ++k) {
                    putData(data[k], source.astRelayData[k]);
                }
                frame.setLastHasDataFrameId(source.dwLastHasDataFrameId);
            }
            break;
        }
        case cmd::stCSRelayMsgStatUserRes: {
            auto texts = to.initStatistics();
            texts.setRoom(text(m.stBody.stCSRelayMsgStatUserRes.szRoomRetStr));
            texts.setUser(text(m.stBody.stCSRelayMsgStatUserRes.szUserRetStr));
            texts.setProcess(text(m.stBody.stCSRelayMsgStatUserRes.szProcessRetStr));
            break;
        }
        default:
            to.setHeartBeat(heartBeat(m));
            break;
        }
    }

    size_t pack(const Message& m, char* memory, size_t size) {
        capnp::MallocMessageBuilder builder(kj::ArrayPtr<capnp::word>(scratch.data(), scratch.size()));
        auto to = builder.initRoot<relay_cp::Message>();
        to.setUserId(m.stHead.dwUserID);
        to.setRoomId(m.stHead.dwRoomID);
        to.setVersion(m.stHead.bVersion);
        to.setAsyncId(m.stHead.wAsyncID);
        to.setCmdId(m.stHead.bCmdId);
        putBody(to, m);
        kj::ArrayOutputStream out(kj::ArrayPtr<kj::byte>(reinterpret_cast<kj::byte*>(memory), size));
        capnp::writeMessage(out, builder);
        return out.getArray().size();
    }

    static bool getData(relay_cp::Datum::Reader from, CSRelayData& to) {
        to.dwObjectId = from.getObjectId();
        to.bUserStatusFlag = from.getUserStatusFlag();
        to.wSequance = from.getSequance();
        const auto payload = from.getRelayBuf();
        return setPayload(to, payload.begin(), payload.size());
    }

    template <size_t Capacity>
    static bool getText(capnp::Data::Reader from, char (&to)[Capacity]) {
        return setText(to, from.begin(), from.size());
    }

    static bool getFrames(capnp::List<relay_cp::Frame>::Reader from, CSRelayFramePack& to) {
        if (from.size() > 5) {
            return false;
        }
        to.bCount = static_cast<uint8_t>(from.size());
        for (uint32_t i = 0; i < to.bCount; ++i) {
            const auto source = from[i];
            const auto data = source.getRelayData();
            CSRelayFrame& frame = to.astRelayData[i];
            if (data.size() > 100) {
                return false;
            }
            frame.dwFrameId = source.getFrameId();
            frame.bCount = static_cast<uint8_t>(data.size());
            for (uint32_t k = 0; k < frame.bCount; ++k) {
                if (!getData(data[k], frame.astRelayData[k])) {
                    return false;
                }
            }
            frame.dwLastHasDataFrameId = source.getLastHasDataFrameId();
        }
        return true;
    }

    bool unpack(Message& m, const char* memory, size_t size) {
        const void* const words = memory; // aligned: see Item
        capnp::FlatArrayMessageReader reader(kj::ArrayPtr<const capnp::word>(
            static_cast<const capnp::word*>(words), size / sizeof(capnp::word)));
        const auto from = reader.getRoot<relay_cp::Message>();
        m.stHead.dwUserID = from.getUserId();
        m.stHead.dwRoomID = from.getRoomId();
        m.stHead.bVersion = from.getVersion();
        m.stHead.wAsyncID = from.getAsyncId();
        m.stHead.bCmdId = from.getCmdId();
        switch (from.which()) {
        case relay_cp::Message::LOGIN:
            m.stBody.stRelayLoginReq.dwReserve = from.getLogin().getReserve();
            return getText(from.getLogin().getSigBuf(), m.stBody.stRelayLoginReq.szSigBuf);
        case relay_cp::Message::INPUT:
            m.stBody.stRelayInputing.bRepeatCount = from.getInput().getRepeatCount();
            return getData(from.getInput().getRelayData(), m.stBody.stRelayInputing.stRelayData);
        case relay_cp::Message::FRAME_PACK:
            return getFrames(from.getFramePack(), m.stBody.stRelayLockStep);
        case relay_cp::Message::STATISTICS: {
            CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
            const auto texts = from.getStatistics();
            return getText(texts.getRoom(), answer.szRoomRetStr) &&
                   getText(texts.getUser(), answer.szUserRetStr) &&
                   getText(texts.getProcess(), answer.szProcessRetStr);
        }
        default:
            m.stBody.stCSRelayMsgHeartBeatReq.dwUnused = from.getHeartBeat();
            return true;
        }
    }

    std::vector<capnp::word> scratch = std::vector<capnp::word>(1 << 18); // the builder leaves it zero again
};

} // namespace

void addCapnProto() {
    add<CapnProto>("capnproto");
}

} // namespace peers
