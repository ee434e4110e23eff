/// MessagePack for C++. Fields stand in arrays without names, texts and payloads are binary data. As its
/// pages advise: a packer over a buffer of ours, a zone that is used again, and no copy of binary data into
/// the zone.
#include "Peer.h"

#include <msgpack.hpp>

namespace peers {

namespace {

/// A buffer over plain memory, as the packer asks for.
struct Memory {
    char* at;
    const char* end;
    bool full = false;

    void write(const char* data, size_t size) {
        if (static_cast<size_t>(end - at) < size) {
            full = true;
            return;
        }
        std::memcpy(at, data, size);
        at += size;
    }
};

struct Msgpack : OnRecord {
    template <class Packer>
    static KORVAN_ALWAYS_INLINE void putBytes(Packer& to, const void* data, size_t size) {
        to.pack_bin(static_cast<uint32_t>(size));
        to.pack_bin_body(static_cast<const char*>(data), static_cast<uint32_t>(size));
    }

    template <class Packer>
    static KORVAN_ALWAYS_INLINE void putText(Packer& to, const char* text) {
        putBytes(to, text, std::strlen(text));
    }

    template <class Packer>
    static KORVAN_ALWAYS_INLINE void putData(Packer& to, const CSRelayData& data) {
        to.pack_array(4);
        to.pack_uint32(data.dwObjectId);
        putBytes(to, data.szRelayBuf, data.wRelayLen);
        to.pack_uint8(data.bUserStatusFlag);
        to.pack_uint16(data.wSequance);
    }

    template <class Packer>
    static KORVAN_ALWAYS_INLINE void putMessage(Packer to, const Message& m) {
        to.pack_array(6);
        to.pack_uint32(m.stHead.dwUserID);
        to.pack_uint32(m.stHead.dwRoomID);
        to.pack_uint8(m.stHead.bVersion);
        to.pack_uint16(m.stHead.wAsyncID);
        to.pack_uint8(m.stHead.bCmdId);
        switch (m.stHead.bCmdId) {
        case cmd::stRelayLoginReq:
            to.pack_array(2);
            putText(to, m.stBody.stRelayLoginReq.szSigBuf);
            to.pack_uint32(m.stBody.stRelayLoginReq.dwReserve);
            break;
        case cmd::stRelayInputing:
            to.pack_array(2);
            putData(to, m.stBody.stRelayInputing.stRelayData);
            to.pack_uint8(m.stBody.stRelayInputing.bRepeatCount);
            break;
        case cmd::stRelayLockStep: {
            const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
            to.pack_array(frames.bCount);
            for (size_t i = 0; i < frames.bCount; ++i) {
                const CSRelayFrame& frame = frames.astRelayData[i];
                to.pack_array(3);
                to.pack_uint32(frame.dwFrameId);
                to.pack_array(frame.bCount);
                for (size_t k = 0; k < frame.bCount; ++k) {
                    putData(to, frame.astRelayData[k]);
                }
                to.pack_uint32(frame.dwLastHasDataFrameId);
            }
            break;
        }
        case cmd::stCSRelayMsgStatUserRes:
            to.pack_array(3);
            putText(to, m.stBody.stCSRelayMsgStatUserRes.szRoomRetStr);
            putText(to, m.stBody.stCSRelayMsgStatUserRes.szUserRetStr);
            putText(to, m.stBody.stCSRelayMsgStatUserRes.szProcessRetStr);
            break;
        default:
            to.pack_uint32(heartBeat(m));
            break;
        }
    }

    size_t pack(const Message& m, char*, size_t) {
        growing.clear();
        putMessage(msgpack::packer<msgpack::sbuffer>(growing), m);
        return growing.size();
    }

    const char* packed(const char*) const { return growing.data(); }

    static const msgpack::object* array(const msgpack::object& from, uint32_t size) {
        return from.type == msgpack::type::ARRAY && from.via.array.size == size ? from.via.array.ptr
                                                                                : nullptr;
    }

    template <class T>
    static T number(const msgpack::object& from) {
        return from.as<T>();
    }

    template <size_t Capacity>
    static bool getText(const msgpack::object& from, char (&to)[Capacity]) {
        return from.type == msgpack::type::BIN && setText(to, from.via.bin.ptr, from.via.bin.size);
    }

    static bool getData(const msgpack::object& from, CSRelayData& to) {
        const msgpack::object* const field = array(from, 4);
        if (field == nullptr || field[1].type != msgpack::type::BIN) {
            return false;
        }
        to.dwObjectId = number<uint32_t>(field[0]);
        to.bUserStatusFlag = number<uint8_t>(field[2]);
        to.wSequance = number<uint16_t>(field[3]);
        return setPayload(to, field[1].via.bin.ptr, field[1].via.bin.size);
    }

    static bool getFrames(const msgpack::object& from, CSRelayFramePack& to) {
        if (from.type != msgpack::type::ARRAY || from.via.array.size > 5) {
            return false;
        }
        to.bCount = static_cast<uint8_t>(from.via.array.size);
        for (size_t i = 0; i < to.bCount; ++i) {
            const msgpack::object* const field = array(from.via.array.ptr[i], 3);
            if (field == nullptr || field[1].type != msgpack::type::ARRAY || field[1].via.array.size > 100) {
                return false;
            }
            CSRelayFrame& frame = to.astRelayData[i];
            frame.dwFrameId = number<uint32_t>(field[0]);
            frame.bCount = static_cast<uint8_t>(field[1].via.array.size);
            for (size_t k = 0; k < frame.bCount; ++k) {
                if (!getData(field[1].via.array.ptr[k], frame.astRelayData[k])) {
                    return false;
                }
            }
            frame.dwLastHasDataFrameId = number<uint32_t>(field[2]);
        }
        return true;
    }

    bool unpack(Message& m, const char* memory, size_t size) {
        zone.clear();
        size_t offset = 0;
        bool referenced = false;
        const msgpack::object root =
            msgpack::unpack(zone, memory, size, offset, referenced,
                            [](msgpack::type::object_type, size_t, void*) { return true; });
        const msgpack::object* const field = array(root, 6);
        if (field == nullptr) {
            return false;
        }
        m.stHead.dwUserID = number<uint32_t>(field[0]);
        m.stHead.dwRoomID = number<uint32_t>(field[1]);
        m.stHead.bVersion = number<uint8_t>(field[2]);
        m.stHead.wAsyncID = number<uint16_t>(field[3]);
        m.stHead.bCmdId = number<uint8_t>(field[4]);
        const msgpack::object& body = field[5];
        switch (m.stHead.bCmdId) {
        case cmd::stRelayLoginReq: {
            const msgpack::object* const login = array(body, 2);
            if (login == nullptr) {
                return false;
            }
            m.stBody.stRelayLoginReq.dwReserve = number<uint32_t>(login[1]);
            return getText(login[0], m.stBody.stRelayLoginReq.szSigBuf);
        }
        case cmd::stRelayInputing: {
            const msgpack::object* const input = array(body, 2);
            if (input == nullptr) {
                return false;
            }
            m.stBody.stRelayInputing.bRepeatCount = number<uint8_t>(input[1]);
            return getData(input[0], m.stBody.stRelayInputing.stRelayData);
        }
        case cmd::stRelayLockStep:
            return getFrames(body, m.stBody.stRelayLockStep);
        case cmd::stCSRelayMsgStatUserRes: {
            const msgpack::object* const texts = array(body, 3);
            CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
            return texts != nullptr && getText(texts[0], answer.szRoomRetStr) &&
                   getText(texts[1], answer.szUserRetStr) && getText(texts[2], answer.szProcessRetStr);
        }
        default:
            m.stBody.stCSRelayMsgHeartBeatReq.dwUnused = number<uint32_t>(body);
            return true;
        }
    }

    msgpack::sbuffer growing;
    msgpack::zone zone;
};

/// The same with a buffer of ours.
struct MsgpackToMemory : Msgpack {
    size_t pack(const Message& m, char* memory, size_t size) {
        Memory out{memory, memory + size};
        putMessage(msgpack::packer<Memory>(out), m);
        return out.full ? 0 : static_cast<size_t>(out.at - memory);
    }

    const char* packed(const char* memory) const { return memory; }
};

} // namespace

void addMsgpack() {
    add<Msgpack>("msgpack");
    add<MsgpackToMemory>("msgpack.memory");
}

} // namespace peers
