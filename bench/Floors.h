/// @file
/// The floors: what an expert would write by hand for version 3 of this wire and these records alone.
/// Straight lines of loads, byte swaps and stores; the room is checked once per piece whose size is known.
/// Each function returns the bytes used, 0 if they do not fit or the input is malformed.
///
/// The policy tells how a payload is copied; everything else is the same in all of them.
#ifndef KORVAN_BENCH_FLOORS_H
#define KORVAN_BENCH_FLOORS_H

#include "protocol/cs_relay_msg.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace floors {

using namespace cs_relay_msg;
using Message = CSRelayMsg;

// ---- Big-endian integers ----

KORVAN_ALWAYS_INLINE uint16_t swapped(uint16_t v) {
    return __builtin_bswap16(v);
}
KORVAN_ALWAYS_INLINE uint32_t swapped(uint32_t v) {
    return __builtin_bswap32(v);
}

template <class T>
KORVAN_ALWAYS_INLINE void put(char* to, T value) {
    value = swapped(value);
    std::memcpy(to, &value, sizeof(value));
}

template <class T>
KORVAN_ALWAYS_INLINE T get(const char* from) {
    T value;
    std::memcpy(&value, from, sizeof(value));
    return swapped(value);
}

KORVAN_ALWAYS_INLINE uint8_t get8(const char* from) {
    return static_cast<uint8_t>(*from);
}

// ---- How a payload is copied ----
// Each gets the room left at both ends besides the length, which it may use to move more than was asked for.

/// The library's copy. The length is hidden: where g++ sees a bound it copies by `rep movs`, which takes
/// twice as long for a payload of some ten bytes.
KORVAN_ALWAYS_INLINE void libraryCopy(void* to, const void* from, size_t n) {
    __asm__("" : "+r"(n));
    std::memcpy(to, from, n);
}

/// F1: the library's copy.
struct LibraryCopy {
    static KORVAN_ALWAYS_INLINE void copy(void* to, size_t, const void* from, size_t, size_t n) {
        libraryCopy(to, from, n);
    }
};

/// F1+: up to 32 bytes by two moves of a fixed size that overlap, so that no byte past the payload changes.
struct ExactMoves {
    template <size_t N>
    static KORVAN_ALWAYS_INLINE void twice(char* to, const char* from, size_t n) {
        char head[N];
        char tail[N];
        std::memcpy(head, from, N);
        std::memcpy(tail, from + n - N, N);
        std::memcpy(to, head, N);
        std::memcpy(to + n - N, tail, N);
    }
    static KORVAN_ALWAYS_INLINE void copy(void* to, size_t, const void* from, size_t, size_t n) {
        char* const target = static_cast<char*>(to);
        const char* const source = static_cast<const char*>(from);
        if (n > 32) {
            libraryCopy(to, from, n);
        } else if (n >= 16) {
            twice<16>(target, source, n);
        } else if (n >= 8) {
            twice<8>(target, source, n);
        } else if (n >= 4) {
            twice<4>(target, source, n);
        } else if (n != 0) {
            target[0] = source[0];
            target[n / 2] = source[n / 2];
            target[n - 1] = source[n - 1];
        }
    }
};

/// F1w: up to 32 bytes by one move of 32, where both ends have room for it. It changes bytes past the
/// payload, which the codec must not: it shows what that promise costs.
struct WideMove {
    static KORVAN_ALWAYS_INLINE void copy(void* to, size_t toRoom, const void* from, size_t fromRoom,
                                          size_t n) {
        if (n <= 32 && toRoom >= 32 && fromRoom >= 32) {
            char block[32];
            std::memcpy(block, from, 32);
            std::memcpy(to, block, 32);
        } else {
            libraryCopy(to, from, n);
        }
    }
};

// ---- The floor ----

template <class Payload>
struct Floor {
    static constexpr size_t HEAD = 12;
    static constexpr size_t DATA_OPENING = 6;
    static constexpr size_t DATA_CLOSING = 3;
    static constexpr size_t MAX_PAYLOAD = sizeof(CSRelayData::szRelayBuf);

    static KORVAN_ALWAYS_INLINE void putHead(char* to, const CSRelayMsgHead& head) {
        put<uint32_t>(to, head.dwUserID);
        put<uint32_t>(to + 4, head.dwRoomID);
        to[8] = 3;
        put<uint16_t>(to + 9, head.wAsyncID);
        to[11] = static_cast<char>(head.bCmdId);
    }

    static KORVAN_ALWAYS_INLINE void getHead(const char* from, CSRelayMsgHead& head) {
        head.dwUserID = get<uint32_t>(from);
        head.dwRoomID = get<uint32_t>(from + 4);
        head.bVersion = get8(from + 8);
        head.wAsyncID = get<uint16_t>(from + 9);
        head.bCmdId = get8(from + 11);
    }

    // A: heartbeat, request and answer alike

    static KORVAN_ALWAYS_INLINE size_t packHeartBeat(const Message& m, char* to, size_t room) {
        if (room < HEAD + 4) {
            return 0;
        }
        putHead(to, m.stHead);
        put<uint32_t>(to + HEAD, m.stBody.stCSRelayMsgHeartBeatReq.dwUnused);
        return HEAD + 4;
    }

    static KORVAN_ALWAYS_INLINE size_t unpackHeartBeat(Message& m, const char* from, size_t room) {
        if (room < HEAD + 4) {
            return 0;
        }
        getHead(from, m.stHead);
        m.stBody.stCSRelayMsgHeartBeatReq.dwUnused = get<uint32_t>(from + HEAD);
        return HEAD + 4;
    }

    // Strings

    template <size_t Capacity>
    static KORVAN_ALWAYS_INLINE size_t textLength(const char (&text)[Capacity]) {
        return text[Capacity - 1] == '\0' ? std::strlen(text) : strnlen(text, Capacity - 1);
    }

    /// Packs a text of @p length characters, which fits.
    static KORVAN_ALWAYS_INLINE void putText(char* to, const char* text, size_t length) {
        put<uint32_t>(to, static_cast<uint32_t>(length + 1));
        libraryCopy(to + 4, text, length);
        to[4 + length] = '\0';
    }

    /// Unpacks a text and returns the bytes used, 0 on failure.
    template <size_t Capacity>
    static KORVAN_ALWAYS_INLINE size_t getText(char (&text)[Capacity], const char* from, size_t room) {
        if (room < 4) {
            return 0;
        }
        const size_t length = get<uint32_t>(from);
        from += 4;
        if (length > room - 4 || length > Capacity || length == 0 || from[length - 1] != '\0' ||
            std::strlen(from) + 1 != length) {
            return 0;
        }
        libraryCopy(text, from, length);
        return 4 + length;
    }

    // B: login

    static KORVAN_ALWAYS_INLINE size_t packLogin(const Message& m, char* to, size_t room) {
        const CSRelayMsgLoginReq& login = m.stBody.stRelayLoginReq;
        const size_t length = textLength(login.szSigBuf);
        if (room < HEAD + 4 + length + 1 + 4) {
            return 0;
        }
        putHead(to, m.stHead);
        putText(to + HEAD, login.szSigBuf, length);
        put<uint32_t>(to + HEAD + 4 + length + 1, login.dwReserve);
        return HEAD + 4 + length + 1 + 4;
    }

    static KORVAN_ALWAYS_INLINE size_t unpackLogin(Message& m, const char* from, size_t room) {
        if (room < HEAD) {
            return 0;
        }
        getHead(from, m.stHead);
        CSRelayMsgLoginReq& login = m.stBody.stRelayLoginReq;
        const size_t text = getText(login.szSigBuf, from + HEAD, room - HEAD);
        if (text == 0 || room - HEAD - text < 4) {
            return 0;
        }
        login.dwReserve = get<uint32_t>(from + HEAD + text);
        return HEAD + text + 4;
    }

    // One datum

    /// Packs @p data and @p more bytes that the caller adds: checks the room for both, returns the end or
    /// null.
    static KORVAN_ALWAYS_INLINE char* putData(char* to, const char* end, const CSRelayData& data,
                                              size_t more) {
        const size_t length = data.wRelayLen;
        const size_t room = static_cast<size_t>(end - to);
        if (length > MAX_PAYLOAD || room < DATA_OPENING + length + DATA_CLOSING + more) {
            return nullptr;
        }
        put<uint32_t>(to, data.dwObjectId);
        put<uint16_t>(to + 4, data.wRelayLen);
        to += DATA_OPENING;
        Payload::copy(to, room - DATA_OPENING, data.szRelayBuf, MAX_PAYLOAD, length);
        to += length;
        to[0] = static_cast<char>(data.bUserStatusFlag);
        put<uint16_t>(to + 1, data.wSequance);
        return to + DATA_CLOSING;
    }

    /// Unpacks into @p data; @p more bytes must follow. Returns the end, null on failure.
    static KORVAN_ALWAYS_INLINE const char* getData(const char* from, const char* end, CSRelayData& data,
                                                    size_t more) {
        size_t room = static_cast<size_t>(end - from);
        if (room < DATA_OPENING + DATA_CLOSING + more) {
            return nullptr;
        }
        room -= DATA_OPENING;
        data.dwObjectId = get<uint32_t>(from);
        const uint16_t length = get<uint16_t>(from + 4);
        data.wRelayLen = length;
        if (length > MAX_PAYLOAD || room - DATA_CLOSING - more < length) {
            return nullptr;
        }
        from += DATA_OPENING;
        Payload::copy(data.szRelayBuf, MAX_PAYLOAD, from, room, length);
        from += length;
        data.bUserStatusFlag = get8(from);
        data.wSequance = get<uint16_t>(from + 1);
        return from + DATA_CLOSING;
    }

    // C: input

    static KORVAN_ALWAYS_INLINE size_t packInput(const Message& m, char* to, size_t room) {
        if (room < HEAD + DATA_OPENING) {
            return 0;
        }
        const CSRelayInput& input = m.stBody.stRelayInputing;
        putHead(to, m.stHead);
        char* const at = putData(to + HEAD, to + room, input.stRelayData, 1);
        if (at == nullptr) {
            return 0;
        }
        *at = static_cast<char>(input.bRepeatCount);
        return static_cast<size_t>(at + 1 - to);
    }

    static KORVAN_ALWAYS_INLINE size_t unpackInput(Message& m, const char* from, size_t room) {
        if (room < HEAD) {
            return 0;
        }
        CSRelayInput& input = m.stBody.stRelayInputing;
        getHead(from, m.stHead);
        const char* const at = getData(from + HEAD, from + room, input.stRelayData, 1);
        if (at == nullptr) {
            return 0;
        }
        input.bRepeatCount = get8(at);
        return static_cast<size_t>(at + 1 - from);
    }

    // D and G: frame pack

    static KORVAN_ALWAYS_INLINE size_t packFramePack(const Message& m, char* to, size_t room) {
        const CSRelayFramePack& frames = m.stBody.stRelayLockStep;
        if (room < HEAD + 1 || frames.bCount > 5) {
            return 0;
        }
        const char* const end = to + room;
        putHead(to, m.stHead);
        char* at = to + HEAD;
        *at++ = static_cast<char>(frames.bCount);
        for (size_t i = 0; i < frames.bCount; ++i) {
            const CSRelayFrame& frame = frames.astRelayData[i];
            if (end - at < 9 || frame.bCount > 100) {
                return 0;
            }
            put<uint32_t>(at, frame.dwFrameId);
            at[4] = static_cast<char>(frame.bCount);
            at += 5;
            for (size_t k = 0; k < frame.bCount; ++k) {
                at = putData(at, end, frame.astRelayData[k], 4);
                if (at == nullptr) {
                    return 0;
                }
            }
            put<uint32_t>(at, frame.dwLastHasDataFrameId);
            at += 4;
        }
        return static_cast<size_t>(at - to);
    }

    static KORVAN_ALWAYS_INLINE size_t unpackFramePack(Message& m, const char* from, size_t room) {
        CSRelayFramePack& frames = m.stBody.stRelayLockStep;
        if (room < HEAD + 1) {
            return 0;
        }
        const char* const end = from + room;
        getHead(from, m.stHead);
        const char* at = from + HEAD;
        const uint8_t count = get8(at++);
        frames.bCount = count;
        if (count > 5) {
            return 0;
        }
        for (size_t i = 0; i < count; ++i) {
            CSRelayFrame& frame = frames.astRelayData[i];
            if (end - at < 9) {
                return 0;
            }
            frame.dwFrameId = get<uint32_t>(at);
            const uint8_t data = get8(at + 4);
            frame.bCount = data;
            if (data > 100) {
                return 0;
            }
            at += 5;
            for (size_t k = 0; k < data; ++k) {
                at = getData(at, end, frame.astRelayData[k], 4);
                if (at == nullptr) {
                    return 0;
                }
            }
            frame.dwLastHasDataFrameId = get<uint32_t>(at);
            at += 4;
        }
        return static_cast<size_t>(at - from);
    }

    // E: statistics answer

    static KORVAN_ALWAYS_INLINE size_t packStatistics(const Message& m, char* to, size_t room) {
        const CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
        const size_t first = textLength(answer.szRoomRetStr);
        const size_t second = textLength(answer.szUserRetStr);
        const size_t third = textLength(answer.szProcessRetStr);
        const size_t size = HEAD + first + second + third + 3 * 5;
        if (room < size) {
            return 0;
        }
        putHead(to, m.stHead);
        putText(to + HEAD, answer.szRoomRetStr, first);
        putText(to + HEAD + first + 5, answer.szUserRetStr, second);
        putText(to + HEAD + first + 5 + second + 5, answer.szProcessRetStr, third);
        return size;
    }

    static KORVAN_ALWAYS_INLINE size_t unpackStatistics(Message& m, const char* from, size_t room) {
        if (room < HEAD) {
            return 0;
        }
        CSRelayStatRes& answer = m.stBody.stCSRelayMsgStatUserRes;
        getHead(from, m.stHead);
        size_t used = HEAD;
        const size_t first = getText(answer.szRoomRetStr, from + used, room - used);
        used += first;
        const size_t second = first == 0 ? 0 : getText(answer.szUserRetStr, from + used, room - used);
        used += second;
        const size_t third = second == 0 ? 0 : getText(answer.szProcessRetStr, from + used, room - used);
        return third == 0 ? 0 : used + third;
    }

    // Any of these, as F needs them

    static KORVAN_ALWAYS_INLINE size_t packAny(const Message& m, char* to, size_t room) {
        switch (m.stHead.bCmdId) {
        case cmd::stRelayInputing:
            return packInput(m, to, room);
        case cmd::stRelayLockStep:
            return packFramePack(m, to, room);
        case cmd::stCSRelayMsgHeartBeatReq:
        case cmd::stCSRelayMsgHeartBeatRes:
            return packHeartBeat(m, to, room);
        default:
            return 0;
        }
    }

    static KORVAN_ALWAYS_INLINE size_t unpackAny(Message& m, const char* from, size_t room) {
        if (room < HEAD) {
            return 0;
        }
        switch (get8(from + 11)) {
        case cmd::stRelayInputing:
            return unpackInput(m, from, room);
        case cmd::stRelayLockStep:
            return unpackFramePack(m, from, room);
        case cmd::stCSRelayMsgHeartBeatReq:
        case cmd::stCSRelayMsgHeartBeatRes:
            return unpackHeartBeat(m, from, room);
        default:
            return 0;
        }
    }
};

/// The same as ordinary calls: defined in a source of its own, as the codec is.
template <class Payload>
struct FloorCall {
    static size_t packHeartBeat(const Message& m, char* to, size_t room);
    static size_t unpackHeartBeat(Message& m, const char* from, size_t room);
    static size_t packLogin(const Message& m, char* to, size_t room);
    static size_t unpackLogin(Message& m, const char* from, size_t room);
    static size_t packInput(const Message& m, char* to, size_t room);
    static size_t unpackInput(Message& m, const char* from, size_t room);
    static size_t packFramePack(const Message& m, char* to, size_t room);
    static size_t unpackFramePack(Message& m, const char* from, size_t room);
    static size_t packStatistics(const Message& m, char* to, size_t room);
    static size_t unpackStatistics(Message& m, const char* from, size_t room);
    static size_t packAny(const Message& m, char* to, size_t room);
    static size_t unpackAny(Message& m, const char* from, size_t room);
};

} // namespace floors

#endif
