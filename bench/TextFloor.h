/// @file
/// The text floor: the text of A, C and D written by hand at indentation 0, with tables of digits. Labels are
/// literals with their indentation; the room is checked once per piece of a known greatest size.
#ifndef KORVAN_BENCH_TEXT_FLOOR_H
#define KORVAN_BENCH_TEXT_FLOOR_H

#include "Floors.h"

#include <array>

namespace floors {

/// "00" to "99", one behind the other.
inline constexpr std::array<char, 200> DECIMAL_PAIRS = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// "00" to "ff", one behind the other.
inline constexpr std::array<char, 512> HEX_PAIRS = [] {
    std::array<char, 512> pairs{};
    for (size_t i = 0; i < 256; ++i) {
        pairs[2 * i] = "0123456789abcdef"[i / 16];
        pairs[2 * i + 1] = "0123456789abcdef"[i % 16];
    }
    return pairs;
}();

struct TextFloor {
    static constexpr size_t HEAD_AT_MOST = 160;
    static constexpr size_t BODY_AT_MOST = 100;
    static constexpr size_t FRAME_AT_MOST = 160;
    static constexpr size_t DATA_AT_MOST = 220; // and 5 for each byte of payload

    template <size_t N>
    static KORVAN_ALWAYS_INLINE char* text(char* to, const char (&literal)[N]) {
        std::memcpy(to, literal, N - 1);
        return to + N - 1;
    }

    static KORVAN_ALWAYS_INLINE char* pair(char* to, const char* table, uint32_t i) {
        std::memcpy(to, table + 2 * i, 2);
        return to + 2;
    }

    static KORVAN_ALWAYS_INLINE char* hex(char* to, uint8_t value) {
        return pair(text(to, "0x"), HEX_PAIRS.data(), value);
    }

    static KORVAN_ALWAYS_INLINE char* decimal(char* to, uint32_t value) {
        const uint32_t digits = value < 10           ? 1
                                : value < 100        ? 2
                                : value < 1000       ? 3
                                : value < 10000      ? 4
                                : value < 100000     ? 5
                                : value < 1000000    ? 6
                                : value < 10000000   ? 7
                                : value < 100000000  ? 8
                                : value < 1000000000 ? 9
                                                     : 10;
        char* const end = to + digits;
        char* at = end;
        while (value >= 100) {
            at -= 2;
            pair(at, DECIMAL_PAIRS.data(), value % 100);
            value /= 100;
        }
        if (value >= 10) {
            pair(to, DECIMAL_PAIRS.data(), value);
        } else {
            *to = static_cast<char>('0' + value);
        }
        return end;
    }

    static KORVAN_ALWAYS_INLINE char* bytes(char* to, const uint8_t* payload, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            to = hex(text(to, " "), payload[i]);
        }
        return to;
    }

    static KORVAN_ALWAYS_INLINE char* head(char* to, const CSRelayMsgHead& h) {
        to = decimal(text(to, "[stHead]\n  [dwUserID]: "), h.dwUserID);
        to = decimal(text(to, "\n  [dwRoomID]: "), h.dwRoomID);
        to = hex(text(to, "\n  [bVersion]: "), h.bVersion);
        to = decimal(text(to, "\n  [wAsyncID]: "), h.wAsyncID);
        to = hex(text(to, "\n  [bCmdId]: "), h.bCmdId);
        return text(to, "\n[stBody]\n");
    }

    static KORVAN_ALWAYS_INLINE size_t closed(const char* start, char* end) {
        *end = '\0';
        return static_cast<size_t>(end - start);
    }

    static KORVAN_ALWAYS_INLINE size_t heartBeat(const Message& m, char* to, size_t room) {
        if (room < HEAD_AT_MOST + BODY_AT_MOST) {
            return 0;
        }
        char* at = text(head(to, m.stHead), "  [stCSRelayMsgHeartBeatReq]\n    [dwUnused]: ");
        at = decimal(at, m.stBody.stCSRelayMsgHeartBeatReq.dwUnused);
        return closed(to, text(at, "\n"));
    }

    static KORVAN_ALWAYS_INLINE size_t input(const Message& m, char* to, size_t room) {
        const CSRelayInput& in = m.stBody.stRelayInputing;
        const CSRelayData& data = in.stRelayData;
        const size_t length = data.wRelayLen;
        if (length > sizeof(data.szRelayBuf) ||
            room < HEAD_AT_MOST + BODY_AT_MOST + DATA_AT_MOST + 5 * length) {
            return 0;
        }
        char* at = head(to, m.stHead);
        at = decimal(text(at, "  [stRelayInputing]\n    [stRelayData]\n      [dwObjectId]: "),
                     data.dwObjectId);
        at = decimal(text(at, "\n      [wRelayLen]: "), data.wRelayLen);
        at = text(decimal(text(at, "\n      [szRelayBuf]("), data.wRelayLen), "):");
        at = bytes(at, data.szRelayBuf, length);
        at = hex(text(at, "\n      [bUserStatusFlag]: "), data.bUserStatusFlag);
        at = decimal(text(at, "\n      [wSequance]: "), data.wSequance);
        at = hex(text(at, "\n    [bRepeatCount]: "), in.bRepeatCount);
        return closed(to, text(at, "\n"));
    }

    static KORVAN_ALWAYS_INLINE size_t framePack(const Message& m, char* to, size_t room) {
        const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
        if (frames.bCount > 5 || room < HEAD_AT_MOST + BODY_AT_MOST) {
            return 0;
        }
        const char* const end = to + room;
        char* at = head(to, m.stHead);
        at = text(hex(text(at, "  [stRelayLockStep]\n    [bCount]: "), frames.bCount), "\n");
        for (uint32_t i = 0; i < frames.bCount; ++i) {
            const CSRelayFrame& frame = frames.astRelayData[i];
            if (frame.bCount > 100 || static_cast<size_t>(end - at) < FRAME_AT_MOST) {
                return 0;
            }
            at = decimal(text(at, "    [astRelayData]["), i);
            at = decimal(text(at, "]\n      [dwFrameId]: "), frame.dwFrameId);
            at = text(hex(text(at, "\n      [bCount]: "), frame.bCount), "\n");
            for (uint32_t k = 0; k < frame.bCount; ++k) {
                const CSRelayData& data = frame.astRelayData[k];
                const size_t length = data.wRelayLen;
                if (length > sizeof(data.szRelayBuf) ||
                    static_cast<size_t>(end - at) < DATA_AT_MOST + 5 * length) {
                    return 0;
                }
                at = decimal(text(at, "      [astRelayData]["), k);
                at = decimal(text(at, "]\n        [dwObjectId]: "), data.dwObjectId);
                at = decimal(text(at, "\n        [wRelayLen]: "), data.wRelayLen);
                at = text(decimal(text(at, "\n        [szRelayBuf]("), data.wRelayLen), "):");
                at = bytes(at, data.szRelayBuf, length);
                at = hex(text(at, "\n        [bUserStatusFlag]: "), data.bUserStatusFlag);
                at = decimal(text(at, "\n        [wSequance]: "), data.wSequance);
                at = text(at, "\n");
            }
            if (static_cast<size_t>(end - at) < 64) {
                return 0;
            }
            at = decimal(text(at, "      [dwLastHasDataFrameId]: "), frame.dwLastHasDataFrameId);
            at = text(at, "\n");
        }
        return closed(to, at);
    }
};

/// The same as ordinary calls.
struct TextFloorCall {
    static size_t heartBeat(const Message& m, char* to, size_t room);
    static size_t input(const Message& m, char* to, size_t room);
    static size_t framePack(const Message& m, char* to, size_t room);
};

} // namespace floors

#endif
