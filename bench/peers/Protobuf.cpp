/// Protocol Buffers. As its pages advise: a message object is used again, so that it keeps its memory; or
/// messages live in an arena with a first block of ours, which is reset as a whole.
#include "Peer.h"

#include <google/protobuf/arena.h>
#include <google/protobuf/text_format.h>

#include "protobuf/relay.pb.h"

namespace peers {

namespace {

void fillData(relay_pb::Data& to, const CSRelayData& from) {
    to.set_object_id(from.dwObjectId);
    to.set_relay_buf(from.szRelayBuf, from.wRelayLen);
    to.set_user_status_flag(from.bUserStatusFlag);
    to.set_sequance(from.wSequance);
}

void extractData(const relay_pb::Data& from, CSRelayData& to) {
    to.dwObjectId = from.object_id();
    run::require(setPayload(to, from.relay_buf().data(), from.relay_buf().size()), "protobuf", "payload");
    to.bUserStatusFlag = static_cast<uint8_t>(from.user_status_flag());
    to.wSequance = static_cast<uint16_t>(from.sequance());
}

struct Protobuf : InPlace {
    using Native = relay_pb::Message;

    static void fill(Native& to, const Message& from) {
        relay_pb::Head& head = *to.mutable_head();
        head.set_user_id(from.stHead.dwUserID);
        head.set_room_id(from.stHead.dwRoomID);
        head.set_version(from.stHead.bVersion);
        head.set_async_id(from.stHead.wAsyncID);
        head.set_cmd_id(from.stHead.bCmdId);
        switch (from.stHead.bCmdId) {
        case cmd::stRelayLoginReq:
            to.mutable_login()->set_sig_buf(from.stBody.stRelayLoginReq.szSigBuf);
            to.mutable_login()->set_reserve(from.stBody.stRelayLoginReq.dwReserve);
            break;
        case cmd::stRelayInputing:
            fillData(*to.mutable_input()->mutable_relay_data(), from.stBody.stRelayInputing.stRelayData);
            to.mutable_input()->set_repeat_count(from.stBody.stRelayInputing.bRepeatCount);
            break;
        case cmd::stRelayLockStep:
            to.mutable_frame_pack();
            for (size_t i = 0; i < from.stBody.stRelayLockStep.bCount; ++i) {
                const CSRelayFrame& frame = from.stBody.stRelayLockStep.astRelayData[i];
                relay_pb::Frame& added = *to.mutable_frame_pack()->add_relay_data();
                added.set_frame_id(frame.dwFrameId);
                for (size_t k = 0; k < frame.bCount; ++k) {
                    fillData(*added.add_relay_data(), frame.astRelayData[k]);
                }
                added.set_last_has_data_frame_id(frame.dwLastHasDataFrameId);
            }
            break;
        case cmd::stCSRelayMsgStatUserRes:
            to.mutable_statistics()->set_room(from.stBody.stCSRelayMsgStatUserRes.szRoomRetStr);
            to.mutable_statistics()->set_user(from.stBody.stCSRelayMsgStatUserRes.szUserRetStr);
            to.mutable_statistics()->set_process(from.stBody.stCSRelayMsgStatUserRes.szProcessRetStr);
            break;
        default:
            to.mutable_heart_beat()->set_number(heartBeat(from));
            break;
        }
    }

    static void extract(const Native& from, Message& to) {
        to.stHead.dwUserID = from.head().user_id();
        to.stHead.dwRoomID = from.head().room_id();
        to.stHead.bVersion = static_cast<uint8_t>(from.head().version());
        to.stHead.wAsyncID = static_cast<uint16_t>(from.head().async_id());
        to.stHead.bCmdId = static_cast<uint8_t>(from.head().cmd_id());
        switch (to.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            const std::string& text = from.login().sig_buf();
            run::require(setText(to.stBody.stRelayLoginReq.szSigBuf, text.data(), text.size()), "protobuf",
                         "text");
            to.stBody.stRelayLoginReq.dwReserve = from.login().reserve();
            break;
        }
        case cmd::stRelayInputing:
            extractData(from.input().relay_data(), to.stBody.stRelayInputing.stRelayData);
            to.stBody.stRelayInputing.bRepeatCount = static_cast<uint8_t>(from.input().repeat_count());
            break;
        case cmd::stRelayLockStep: {
            CSRelayFramePack& frames = to.stBody.stRelayLockStep;
            for (const relay_pb::Frame& source : from.frame_pack().relay_data()) {
                CSRelayFrame& frame = frames.astRelayData[frames.bCount++];
                frame.dwFrameId = source.frame_id();
                for (const relay_pb::Data& data : source.relay_data()) {
                    extractData(data, frame.astRelayData[frame.bCount++]);
                }
                frame.dwLastHasDataFrameId = source.last_has_data_frame_id();
            }
            break;
        }
        case cmd::stCSRelayMsgStatUserRes: {
            CSRelayStatRes& answer = to.stBody.stCSRelayMsgStatUserRes;
            const relay_pb::Statistics& texts = from.statistics();
            run::require(setText(answer.szRoomRetStr, texts.room().data(), texts.room().size()) &&
                             setText(answer.szUserRetStr, texts.user().data(), texts.user().size()) &&
                             setText(answer.szProcessRetStr, texts.process().data(), texts.process().size()),
                         "protobuf", "text");
            break;
        }
        default:
            to.stBody.stCSRelayMsgHeartBeatReq.dwUnused = from.heart_beat().number();
            break;
        }
    }

    size_t pack(const Native& native, char* memory, size_t size) {
        return native.SerializeToArray(memory, static_cast<int>(size))
                   ? static_cast<size_t>(native.GetCachedSize())
                   : 0;
    }

    bool unpack(Native& native, const char* memory, size_t size) {
        return native.ParseFromArray(memory, static_cast<int>(size));
    }
};

/// Decodes into an arena that it resets for each message.
struct ArenaProtobuf : InPlace {
    struct Native {
        relay_pb::Message own; // to pack from
        const relay_pb::Message* decoded = nullptr;
    };

    static void fill(Native& to, const Message& from) { Protobuf::fill(to.own, from); }
    static void extract(const Native& from, Message& to) { Protobuf::extract(*from.decoded, to); }

    size_t pack(const Native& native, char* memory, size_t size) {
        return Protobuf().pack(native.own, memory, size);
    }

    bool unpack(Native& native, const char* memory, size_t size) {
        arena->Reset();
        auto* const message = google::protobuf::Arena::CreateMessage<relay_pb::Message>(arena.get());
        native.decoded = message;
        return message->ParseFromArray(memory, static_cast<int>(size));
    }

    static google::protobuf::ArenaOptions options() {
        static std::vector<char> block(2 * Message::maxWireSize);
        google::protobuf::ArenaOptions made;
        made.initial_block = block.data();
        made.initial_block_size = block.size();
        return made;
    }

    std::unique_ptr<google::protobuf::Arena> arena = std::make_unique<google::protobuf::Arena>(options());
};

} // namespace

void addProtobuf() {
    add<Protobuf>("protobuf");
    add<ArenaProtobuf>("protobuf.arena", false);
    for (const works::Work& work : works::all()) {
        // A text of its own for each work: it keeps its memory, and all that there is of it is cleared each
        // time.
        struct Rendered {
            relay_pb::Message message;
            std::string text;
        };
        static std::vector<std::unique_ptr<Rendered>> kept;
        kept.push_back(std::make_unique<Rendered>());
        Rendered* const one = kept.back().get();
        Protobuf::fill(one->message, *work.record);
        const auto render = [=] {
            return google::protobuf::TextFormat::PrintToString(one->message, &one->text);
        };
        run::require(render(), "protobuf", "does not render");
        run::measure(run::name("text", work.letter, "protobuf"), one->text.size(), render);
    }
}

} // namespace peers
