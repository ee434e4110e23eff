/// @file
/// For the two libraries that serialise through an archive: one walk over the record for both directions, and
/// a stream over plain memory that is used again.
#ifndef KORVAN_BENCH_ARCHIVE_H
#define KORVAN_BENCH_ARCHIVE_H

#include "Peer.h"

#include <streambuf>

namespace peers {

/// A stream buffer over plain memory.
class MemoryStream : public std::streambuf {
public:
    void write(char* memory, size_t size) { setp(memory, memory + size); }
    void read(const char* memory, size_t size) {
        char* const start = const_cast<char*>(memory); // a get area is never written
        setg(start, start, start + size);
    }
    size_t written() const { return static_cast<size_t>(pptr() - pbase()); }
};

/// Walks a message. @p Archive has `number(value)` and `bytes(data, size)`, and `READS` says whether these
/// read.
/// @p M is Message, const where it is written.
template <class Archive>
struct Walk {
    Archive& archive;

// A field of a packed record has no reference: its value goes through a local.
#define KORVAN_BENCH_FIELD(field)                                                                            \
    do {                                                                                                     \
        auto value = field;                                                                                  \
        archive.number(value);                                                                               \
        if constexpr (Archive::READS) {                                                                      \
            field = value;                                                                                   \
        }                                                                                                    \
    } while (false)

    template <class Text>
    bool text(Text& array) {
        uint16_t size = 0;
        if constexpr (!Archive::READS) {
            size = static_cast<uint16_t>(std::strlen(array));
        }
        archive.number(size);
        if (size >= sizeof(array)) {
            return false;
        }
        archive.bytes(array, size);
        if constexpr (Archive::READS) {
            array[size] = '\0';
        }
        return true;
    }

    template <class Data>
    bool data(Data& one) {
        KORVAN_BENCH_FIELD(one.dwObjectId);
        KORVAN_BENCH_FIELD(one.wRelayLen);
        if (one.wRelayLen > sizeof(one.szRelayBuf)) {
            return false;
        }
        archive.bytes(one.szRelayBuf, one.wRelayLen);
        KORVAN_BENCH_FIELD(one.bUserStatusFlag);
        KORVAN_BENCH_FIELD(one.wSequance);
        return true;
    }

    template <class Frame>
    bool frame(Frame& one) {
        KORVAN_BENCH_FIELD(one.dwFrameId);
        KORVAN_BENCH_FIELD(one.bCount);
        if (one.bCount > 100) {
            return false;
        }
        for (size_t i = 0; i < one.bCount; ++i) {
            if (!data(one.astRelayData[i])) {
                return false;
            }
        }
        KORVAN_BENCH_FIELD(one.dwLastHasDataFrameId);
        return true;
    }

    template <class Frames>
    bool frames(Frames& all) {
        KORVAN_BENCH_FIELD(all.bCount);
        if (all.bCount > 5) {
            return false;
        }
        for (size_t i = 0; i < all.bCount; ++i) {
            if (!frame(all.astRelayData[i])) {
                return false;
            }
        }
        return true;
    }

    template <class M>
    bool message(M& m) {
        KORVAN_BENCH_FIELD(m.stHead.dwUserID);
        KORVAN_BENCH_FIELD(m.stHead.dwRoomID);
        KORVAN_BENCH_FIELD(m.stHead.bVersion);
        KORVAN_BENCH_FIELD(m.stHead.wAsyncID);
        KORVAN_BENCH_FIELD(m.stHead.bCmdId);
        bool good = true;
        switch (m.stHead.bCmdId) {
        case cmd::stRelayLoginReq:
            good = text(m.stBody.stRelayLoginReq.szSigBuf);
            KORVAN_BENCH_FIELD(m.stBody.stRelayLoginReq.dwReserve);
            return good;
        case cmd::stRelayInputing:
            good = data(m.stBody.stRelayInputing.stRelayData);
            KORVAN_BENCH_FIELD(m.stBody.stRelayInputing.bRepeatCount);
            return good;
        case cmd::stRelayLockStep:
            return frames(m.stBody.stRelayLockStep);
        case cmd::stCSRelayMsgStatUserRes:
            return text(m.stBody.stCSRelayMsgStatUserRes.szRoomRetStr) &&
                   text(m.stBody.stCSRelayMsgStatUserRes.szUserRetStr) &&
                   text(m.stBody.stCSRelayMsgStatUserRes.szProcessRetStr);
        default:
            KORVAN_BENCH_FIELD(m.stBody.stCSRelayMsgHeartBeatReq.dwUnused);
            return true;
        }
    }

#undef KORVAN_BENCH_FIELD
};

} // namespace peers

#endif
