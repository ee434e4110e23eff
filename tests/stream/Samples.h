/// @file
/// Messages with random content, and the commands by hand.
#ifndef KORVAN_TESTS_STREAM_SAMPLES_H
#define KORVAN_TESTS_STREAM_SAMPLES_H

#include "protocol/Stream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace samples {

using namespace cs_relay_msg;

/// Calls `f(id, member)` for each command with the pointer to its union member.
template <class F>
void forEachCommand(F f) {
    f(uint8_t{161}, &CSRelayMsgBody::stRelayLoginReq);
    f(uint8_t{162}, &CSRelayMsgBody::stRelayLoginRes);
    f(uint8_t{163}, &CSRelayMsgBody::stRelayStartReq);
    f(uint8_t{164}, &CSRelayMsgBody::stRelayStartRes);
    f(uint8_t{165}, &CSRelayMsgBody::stRelayInputing);
    f(uint8_t{167}, &CSRelayMsgBody::stRelayLockStep);
    f(uint8_t{168}, &CSRelayMsgBody::stRelaySyncReq);
    f(uint8_t{169}, &CSRelayMsgBody::stRelaySyncRes);
    f(uint8_t{170}, &CSRelayMsgBody::stRelayMsgPack);
    f(uint8_t{174}, &CSRelayMsgBody::stRelayStopReq);
    f(uint8_t{175}, &CSRelayMsgBody::stRelayStopRes);
    f(uint8_t{182}, &CSRelayMsgBody::stCSRelaySeekPlayReq);
    f(uint8_t{183}, &CSRelayMsgBody::stCSRelaySeekPlayRes);
    f(uint8_t{184}, &CSRelayMsgBody::stCSRelayMsgHeartBeatReq);
    f(uint8_t{185}, &CSRelayMsgBody::stCSRelayMsgHeartBeatRes);
    f(uint8_t{186}, &CSRelayMsgBody::stRelayBroadCastReq);
    f(uint8_t{187}, &CSRelayMsgBody::stRelayBroadCastRes);
    f(uint8_t{188}, &CSRelayMsgBody::stRelayInputCheckReq);
    f(uint8_t{189}, &CSRelayMsgBody::stRelayBroadCastCheckReq);
    f(uint8_t{190}, &CSRelayMsgBody::stRelayCheckReq);
    f(uint8_t{191}, &CSRelayMsgBody::stCSRelayMsgStatUserReq);
    f(uint8_t{192}, &CSRelayMsgBody::stCSRelayMsgStatUserRes);
    f(uint8_t{193}, &CSRelayMsgBody::stRelayReloginNotify);
    f(uint8_t{194}, &CSRelayMsgBody::stRelayError);
    f(uint8_t{195}, &CSRelayMsgBody::stRelayInputMulty);
}

inline std::vector<uint8_t> commandIds() {
    std::vector<uint8_t> ids;
    forEachCommand([&](uint8_t id, auto) { ids.push_back(id); });
    return ids;
}

/// A record of half a megabyte, zeroed, on the heap.
inline std::unique_ptr<CSRelayMsg> newMessage() {
    return std::make_unique<CSRelayMsg>();
}

using Random = std::mt19937;

inline uint32_t upTo(Random& random, uint64_t most) {
    return static_cast<uint32_t>(std::uniform_int_distribution<uint64_t>(0, most)(random));
}

/// Fills a record with random content, counts and text lengths at most @p largest and, at random, at it.
inline void fill(const schema::Type& type, char* record, uint32_t largest, Random& random) {
    for (size_t i = 0; i < type.fieldCount; ++i) {
        const schema::Field& field = type.fields[i];
        char* const member = record + field.offset;
        const bool isCount = i + 1 < type.fieldCount && type.fields[i + 1].countField == static_cast<int>(i);
        const uint32_t bound = isCount ? type.fields[i + 1].bound : field.bound - 1;
        const uint32_t most = std::min(bound, largest);
        const uint32_t size = upTo(random, 3) == 0 ? most : upTo(random, most);
        if (field.kind == schema::Kind::Scalar) {
            for (uint32_t byte = 0; byte < field.width; ++byte) {
                member[byte] = static_cast<char>(upTo(random, 255));
            }
            if (isCount && field.width == 1) {
                const auto count = static_cast<uint8_t>(size);
                std::memcpy(member, &count, sizeof(count));
            } else if (isCount && field.width == 2) {
                const auto count = static_cast<uint16_t>(size);
                std::memcpy(member, &count, sizeof(count));
            } else if (isCount) {
                std::memcpy(member, &size, sizeof(size));
            }
        } else if (field.type != nullptr) {
            for (uint32_t element = 0; element < field.bound; ++element) {
                fill(*field.type, member + element * field.width, largest, random);
            }
        } else {
            const bool isText = field.kind == schema::Kind::String;
            for (uint32_t byte = 0; byte < field.bound; ++byte) {
                member[byte] = static_cast<char>(isText ? 1 + upTo(random, 254) : upTo(random, 255));
            }
            if (isText) {
                member[size] = '\0';
            }
        }
    }
}

/// Fills a message for a command.
inline void fillMessage(CSRelayMsg& message, uint8_t id, uint32_t largest, Random& random) {
    fill(schema::typeOf<CSRelayMsgHead>(), reinterpret_cast<char*>(&message.stHead), largest, random);
    message.stHead.bCmdId = id;
    fill(*schema::findCommand(id)->type, reinterpret_cast<char*>(&message.stBody), largest, random);
}

/// The wire form of a message, which must be valid.
inline std::string wireOf(const CSRelayMsg& message, uint32_t cutVer) {
    std::string wire(CSRelayMsg::maxWireSize, '\0');
    size_t used = 0;
    if (message.pack(&wire[0], wire.size(), &used, cutVer) != 0) {
        used = 0;
    }
    wire.resize(used);
    return wire;
}

/// A wire message of a command with random content.
inline std::string randomWire(CSRelayMsg& scratch, uint8_t id, uint32_t version, uint32_t largest,
                              Random& random) {
    fillMessage(scratch, id, largest, random);
    return wireOf(scratch, version);
}

} // namespace samples

#endif
