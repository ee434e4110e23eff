/// @file
/// The text floors: the text of A, C and D written by hand, with tables of digits. Labels are literals; the
/// room is checked once per piece of a known greatest size.
///
/// `TextFloor` takes any indentation and separator, as `visualize` does. `FixedTextFloor` knows both
/// beforehand, so that the end of a line, the indentation and the label of the next are one literal.
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

/// Pieces of text; each returns the place behind what it wrote.
struct TextPieces {
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

    static KORVAN_ALWAYS_INLINE size_t closed(const char* start, char* end) {
        *end = '\0';
        return static_cast<size_t>(end - start);
    }
};

class TextFloor : TextPieces {
public:
    static KORVAN_ALWAYS_INLINE size_t heartBeat(const Message& m, char* to, size_t room, int indent,
                                                 char sep) {
        const TextFloor floor(indent, sep);
        if (room < floor.most(8, 220)) {
            return 0;
        }
        char* at = floor.head(m.stHead, to);
        at = floor.header(at, 1, "[stCSRelayMsgHeartBeatReq]");
        at = floor.number(at, 2, "[dwUnused]: ", m.stBody.stCSRelayMsgHeartBeatReq.dwUnused);
        return closed(to, at);
    }

    static KORVAN_ALWAYS_INLINE size_t input(const Message& m, char* to, size_t room, int indent, char sep) {
        const TextFloor floor(indent, sep);
        const CSRelayInput& in = m.stBody.stRelayInputing;
        const size_t length = in.stRelayData.wRelayLen;
        if (length > sizeof(in.stRelayData.szRelayBuf) || room < floor.most(15, 360 + 5 * length)) {
            return 0;
        }
        char* at = floor.head(m.stHead, to);
        at = floor.header(at, 1, "[stRelayInputing]");
        at = floor.header(at, 2, "[stRelayData]");
        at = floor.data(at, 3, in.stRelayData);
        at = floor.byte(at, 2, "[bRepeatCount]: ", in.bRepeatCount);
        return closed(to, at);
    }

    static KORVAN_ALWAYS_INLINE size_t framePack(const Message& m, char* to, size_t room, int indent,
                                                 char sep) {
        const TextFloor floor(indent, sep);
        const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
        if (frames.bCount > 5 || room < floor.most(9, 220)) {
            return 0;
        }
        const char* const end = to + room;
        char* at = floor.head(m.stHead, to);
        at = floor.header(at, 1, "[stRelayLockStep]");
        at = floor.byte(at, 2, "[bCount]: ", frames.bCount);
        for (uint32_t i = 0; i < frames.bCount; ++i) {
            const CSRelayFrame& frame = frames.astRelayData[i];
            if (frame.bCount > 100 || static_cast<size_t>(end - at) < floor.most(4, 120)) {
                return 0;
            }
            at = floor.element(at, 2, "[astRelayData][", i);
            at = floor.number(at, 3, "[dwFrameId]: ", frame.dwFrameId);
            at = floor.byte(at, 3, "[bCount]: ", frame.bCount);
            for (uint32_t k = 0; k < frame.bCount; ++k) {
                const CSRelayData& data = frame.astRelayData[k];
                const size_t length = data.wRelayLen;
                // A frame's last line is thought of as well.
                if (length > sizeof(data.szRelayBuf) ||
                    static_cast<size_t>(end - at) < floor.most(7, 200 + 5 * length)) {
                    return 0;
                }
                at = floor.element(at, 3, "[astRelayData][", k);
                at = floor.data(at, 4, data);
            }
            at = floor.number(at, 3, "[dwLastHasDataFrameId]: ", frame.dwLastHasDataFrameId);
        }
        return closed(to, at);
    }

private:
    static constexpr size_t STRIDE = 32; // blanks that one move writes
    static constexpr size_t DEEPEST = 4;

    KORVAN_ALWAYS_INLINE TextFloor(int indent, char sep)
        : base_(indent > 0 ? 2 * static_cast<size_t>(indent) : 0), step_(indent < 0 ? 0 : 2), sep_(sep) {}

    /// The greatest size of @p lines lines with @p characters characters behind their indentation.
    KORVAN_ALWAYS_INLINE size_t most(size_t lines, size_t characters) const {
        return lines * (base_ + DEEPEST * step_) + characters + STRIDE;
    }

    template <size_t N>
    KORVAN_ALWAYS_INLINE char* open(char* to, size_t level, const char (&label)[N]) const {
        const size_t blanks = base_ + level * step_;
        if (blanks <= STRIDE) {
            std::memset(to, ' ', STRIDE);
        } else {
            std::memset(to, ' ', blanks);
        }
        return text(to + blanks, label);
    }

    KORVAN_ALWAYS_INLINE char* close(char* to) const {
        *to = sep_;
        return to + 1;
    }

    template <size_t N>
    KORVAN_ALWAYS_INLINE char* header(char* to, size_t level, const char (&label)[N]) const {
        return close(open(to, level, label));
    }

    template <size_t N>
    KORVAN_ALWAYS_INLINE char* element(char* to, size_t level, const char (&label)[N], uint32_t index) const {
        return close(text(decimal(open(to, level, label), index), "]"));
    }

    template <size_t N>
    KORVAN_ALWAYS_INLINE char* number(char* to, size_t level, const char (&label)[N], uint32_t value) const {
        return close(decimal(open(to, level, label), value));
    }

    template <size_t N>
    KORVAN_ALWAYS_INLINE char* byte(char* to, size_t level, const char (&label)[N], uint8_t value) const {
        return close(hex(open(to, level, label), value));
    }

    KORVAN_ALWAYS_INLINE char* head(const CSRelayMsgHead& h, char* to) const {
        to = header(to, 0, "[stHead]");
        to = number(to, 1, "[dwUserID]: ", h.dwUserID);
        to = number(to, 1, "[dwRoomID]: ", h.dwRoomID);
        to = byte(to, 1, "[bVersion]: ", h.bVersion);
        to = number(to, 1, "[wAsyncID]: ", h.wAsyncID);
        to = byte(to, 1, "[bCmdId]: ", h.bCmdId);
        return header(to, 0, "[stBody]");
    }

    KORVAN_ALWAYS_INLINE char* data(char* to, size_t level, const CSRelayData& one) const {
        to = number(to, level, "[dwObjectId]: ", one.dwObjectId);
        to = number(to, level, "[wRelayLen]: ", one.wRelayLen);
        to = text(decimal(open(to, level, "[szRelayBuf]("), one.wRelayLen), "):");
        to = close(bytes(to, one.szRelayBuf, one.wRelayLen));
        to = byte(to, level, "[bUserStatusFlag]: ", one.bUserStatusFlag);
        return number(to, level, "[wSequance]: ", one.wSequance);
    }

    size_t base_; // blanks at level 0
    size_t step_; // blanks more per level
    char sep_;
};

struct FixedTextFloor : TextPieces {
    static constexpr size_t HEAD_AT_MOST = 160;
    static constexpr size_t BODY_AT_MOST = 100;
    static constexpr size_t FRAME_AT_MOST = 160;
    static constexpr size_t DATA_AT_MOST = 220; // and 5 for each byte of payload

    static KORVAN_ALWAYS_INLINE char* head(char* to, const CSRelayMsgHead& h) {
        to = decimal(text(to, "[stHead]\n  [dwUserID]: "), h.dwUserID);
        to = decimal(text(to, "\n  [dwRoomID]: "), h.dwRoomID);
        to = hex(text(to, "\n  [bVersion]: "), h.bVersion);
        to = decimal(text(to, "\n  [wAsyncID]: "), h.wAsyncID);
        to = hex(text(to, "\n  [bCmdId]: "), h.bCmdId);
        return text(to, "\n[stBody]\n");
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

/// Both as ordinary calls.
struct TextFloorCall {
    static size_t heartBeat(const Message& m, char* to, size_t room, int indent, char sep);
    static size_t input(const Message& m, char* to, size_t room, int indent, char sep);
    static size_t framePack(const Message& m, char* to, size_t room, int indent, char sep);
};
struct FixedTextFloorCall {
    static size_t heartBeat(const Message& m, char* to, size_t room);
    static size_t input(const Message& m, char* to, size_t room);
    static size_t framePack(const Message& m, char* to, size_t room);
};

} // namespace floors

#endif
