#include "Works.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace works {

namespace {

using namespace cs_relay_msg;

constexpr size_t TEXT_PER_WIRE_BYTE = 24; // a datum without payload has 9 bytes and 170 characters
constexpr size_t TEXT_AT_LEAST = 4096;
constexpr uint8_t VERSION = 3; // what `pack` stamps by default, so that a decoded record equals its source

/// A sequence of bytes that looks like game data and is the same on every run.
class Bytes {
public:
    uint8_t next() {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<uint8_t>(state >> 56);
    }
    uint32_t below(uint32_t bound) { return (next() * 256u + next()) % bound; }

private:
    uint64_t state = 2026;
};

Bytes& bytes() {
    static Bytes source;
    return source;
}

MessagePtr makeMessage(uint8_t command) {
    auto message = std::make_unique<Message>();
    message->stHead.dwUserID = 1001;
    message->stHead.dwRoomID = 70'007;
    message->stHead.bVersion = VERSION;
    message->stHead.wAsyncID = 258;
    message->stHead.bCmdId = command;
    message->stBody.construct(command);
    return message;
}

template <size_t Capacity>
void fillText(char (&text)[Capacity], size_t length) {
    for (size_t i = 0; i < length; ++i) {
        text[i] = static_cast<char>('a' + bytes().next() % 26);
    }
    text[length] = '\0';
}

void fillData(CSRelayData& data, uint32_t object, uint16_t length) {
    data.dwObjectId = object;
    data.wRelayLen = length;
    for (size_t i = 0; i < length; ++i) {
        data.szRelayBuf[i] = bytes().next();
    }
    data.bUserStatusFlag = static_cast<uint8_t>(object % 3);
    data.wSequance = static_cast<uint16_t>(20'000 + bytes().below(20'000));
}

void fillFrame(CSRelayFrame& frame, uint32_t id, uint8_t count, uint16_t length) {
    frame.dwFrameId = id;
    frame.bCount = count;
    for (uint8_t i = 0; i < count; ++i) {
        fillData(frame.astRelayData[i], 1001u + i, length);
    }
    frame.dwLastHasDataFrameId = id - 1;
}

MessagePtr makeLogin(size_t length) {
    auto message = makeMessage(cmd::stRelayLoginReq);
    fillText(message->stBody.stRelayLoginReq.szSigBuf, length);
    message->stBody.stRelayLoginReq.dwReserve = 7;
    return message;
}

MessagePtr makeStatistics(size_t length) {
    auto message = makeMessage(cmd::stCSRelayMsgStatUserRes);
    CSRelayStatRes& answer = message->stBody.stCSRelayMsgStatUserRes;
    fillText(answer.szRoomRetStr, length);
    fillText(answer.szUserRetStr, length);
    fillText(answer.szProcessRetStr, length);
    return message;
}

std::vector<Work> makeAll() {
    std::vector<Work> list;
    list.push_back(make('A', makeMessage(cmd::stCSRelayMsgHeartBeatReq)));
    list.push_back(make('B', makeLogin(64)));
    list.push_back(make('C', makeInput(24)));
    list.push_back(make('D', makeFramePack(5, 10, 24)));
    list.push_back(make('E', makeStatistics(2000)));
    list.push_back(make('G', makeFramePack(5, 100, 1024)));
    return list;
}

/// Two payload sizes for each of four players' inputs; one frame with 0 to 4 inputs in three variants, as the
/// server sends it each tick; a pack of three frames to a client that fell behind; and heartbeats.
Stream makeStream() {
    constexpr size_t MESSAGES = 1000;
    constexpr uint32_t PLAYERS = 4;
    constexpr uint16_t LENGTHS[] = {8, 12, 18, 24, 24, 30, 40, 56};
    Stream stream;
    std::vector<const Message*> inputs, withData, empty, heartbeats;
    const auto keep = [&stream](std::vector<const Message*>& kind, MessagePtr message) {
        kind.push_back(message.get());
        stream.pool.push_back(std::move(message));
    };
    for (uint32_t i = 0; i < 2 * PLAYERS; ++i) {
        auto message = makeInput(LENGTHS[i]);
        message->stHead.dwUserID = 1001 + i % PLAYERS;
        keep(inputs, std::move(message));
    }
    for (uint8_t count = 1; count <= PLAYERS; ++count) {
        for (size_t variant = 0; variant < 3; ++variant) {
            keep(withData, makeFramePack(1, count, LENGTHS[(count + 3 * variant) % 8]));
        }
    }
    keep(withData, makeFramePack(3, 2, 24));
    keep(empty, makeFramePack(1, 0, 0));
    keep(empty, makeFramePack(2, 0, 0));
    keep(heartbeats, makeMessage(cmd::stCSRelayMsgHeartBeatReq));
    keep(heartbeats, makeMessage(cmd::stCSRelayMsgHeartBeatRes));

    while (stream.order.size() < MESSAGES) {
        const uint32_t dice = bytes().below(100); // in percent of the messages
        const auto& kind = dice < 50 ? inputs : dice < 78 ? withData : dice < 96 ? empty : heartbeats;
        stream.order.push_back(kind[bytes().below(static_cast<uint32_t>(kind.size()))]);
    }
    for (const Message* message : stream.order) {
        std::vector<char> wire(Message::maxWireSize);
        std::vector<char> text(65'536);
        size_t wireSize = 0;
        size_t textSize = 0;
        if (message->pack(wire.data(), wire.size(), &wireSize) != 0 ||
            message->visualize(text.data(), text.size(), &textSize) != 0) {
            std::fprintf(stderr, "a message of the stream cannot be packed\n");
            std::abort();
        }
        stream.wire.insert(stream.wire.end(), wire.data(), wire.data() + wireSize);
        stream.text.append(text.data(), textSize);
    }
    return stream;
}

} // namespace

Work make(char letter, MessagePtr record) {
    Work work{letter, std::move(record), std::vector<char>(Message::maxWireSize), {}};
    size_t size = 0;
    int32_t result = work.record->pack(work.wire.data(), work.wire.size(), &size);
    work.wire.resize(size);
    work.wire.shrink_to_fit();
    work.text.resize(size * TEXT_PER_WIRE_BYTE + TEXT_AT_LEAST);
    if (result == 0) {
        result = work.record->visualize(work.text.data(), work.text.size(), &size);
    }
    work.text.resize(size);
    if (result != 0) {
        std::fprintf(stderr, "work %c cannot be packed or rendered: %d\n", letter, result);
        std::abort();
    }
    return work;
}

MessagePtr makeInput(uint16_t length) {
    auto message = makeMessage(cmd::stRelayInputing);
    fillData(message->stBody.stRelayInputing.stRelayData, 1001, length);
    message->stBody.stRelayInputing.bRepeatCount = 2;
    return message;
}

MessagePtr makeFramePack(uint8_t frames, uint8_t count, uint16_t length) {
    auto message = makeMessage(cmd::stRelayLockStep);
    message->stBody.stRelayLockStep.bCount = frames;
    for (uint8_t i = 0; i < frames; ++i) {
        fillFrame(message->stBody.stRelayLockStep.astRelayData[i], 12'340u + i, count, length);
    }
    return message;
}

const std::vector<Work>& all() {
    static const std::vector<Work> list = makeAll();
    return list;
}

const Stream& stream() {
    static const Stream made = makeStream();
    return made;
}

} // namespace works
