/// @file
/// Messages in their wire form, put together by hand.
#ifndef KORVAN_TESTS_TOOL_WIRE_H
#define KORVAN_TESTS_TOOL_WIRE_H

#include "protocol/cs_relay_msg.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace wire {

inline std::string big(uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    }
    return text;
}

/// A head of user 1001 in room 7, with asynchronous id 258.
inline std::string head(uint8_t command, uint8_t version = 3) {
    return big(1001, 4) + big(7, 4) + big(version, 1) + big(258, 2) + big(command, 1);
}

/// A string with its length and its NUL.
inline std::string text(const std::string& characters) {
    return big(characters.size() + 1, 4) + characters + '\0';
}

inline std::string heartBeat() {
    return head(cs_relay_msg::cmd::stCSRelayMsgHeartBeatReq) + big(0, 4);
}

inline std::string login(const std::string& signature) {
    return head(cs_relay_msg::cmd::stRelayLoginReq) + text(signature) + big(0, 4);
}

/// An input datum with this many bytes.
inline std::string data(size_t bytes) {
    return big(1, 4) + big(bytes, 2) + std::string(bytes, 'x') + big(1, 1) + big(2, 2);
}

/// The largest message there is.
inline std::string largest() {
    std::string frame = big(1, 4) + big(100, 1);
    for (int i = 0; i < 100; ++i) {
        frame += data(1024);
    }
    frame += big(0, 4);
    std::string message = head(cs_relay_msg::cmd::stRelayLockStep) + big(5, 1);
    for (int i = 0; i < 5; ++i) {
        message += frame;
    }
    return message;
}

inline std::string file(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The sample session.
inline std::string session() {
    return file(CAPTURES "/session.bin");
}

/// Its messages: every command, every version.
inline std::vector<std::string> sessionMessages() {
    const std::string bytes = session();
    const auto message = std::make_unique<cs_relay_msg::CSRelayMsg>();
    std::vector<std::string> messages;
    size_t used = 0;
    for (size_t at = 0; at < bytes.size(); at += used) {
        if (message->unpack(bytes.data() + at, bytes.size() - at, &used) != cs_relay_msg::BIX_OK) {
            break;
        }
        messages.push_back(bytes.substr(at, used));
    }
    return messages;
}

} // namespace wire

#endif
