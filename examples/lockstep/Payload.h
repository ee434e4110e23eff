/// What the codec carries without looking at it: the bytes that the game's own programs agree upon.
///
/// They are written and read with the codec's buffers: checked against the room, the same on every machine.
#pragma once

#include "examples/lockstep/Game.h"
#include "protocol/cs_relay_msg.h"

#include <string>

namespace lockstep {

inline constexpr uint32_t ROOM = 7;

/// `CSRelayMsgPack::bDataType` of the settings, which the relay sends behind its answer to a login.
inline constexpr uint8_t SETTINGS = 1;

struct Settings {
    uint32_t seed;
    uint32_t lastTick; ///< the game is over behind it
    uint16_t port;     ///< of the relay, for datagrams
};

/// The state of a client's game at a tick, for the relay to compare.
struct Check {
    uint32_t tick;
    uint64_t hash;
};

/// The signature with which a player logs in. A real game would get it from its login service.
std::string signature(uint32_t player);

/// Each `set` fills the bytes of a record and their count; each `get` is false if the bytes are not what is
/// expected: what comes from the network is not trusted, whoever sent it.
bool setSettings(cs_relay_msg::CSRelayMsgPack& pack, const Settings& settings);
bool getSettings(const cs_relay_msg::CSRelayMsgPack& pack, Settings& settings);
bool setMove(cs_relay_msg::CSRelayData& data, Move move);
bool getMove(const cs_relay_msg::CSRelayData& data, Move& move);
bool setCheck(cs_relay_msg::CSRelayData& data, const Check& check);
bool getCheck(const cs_relay_msg::CSRelayData& data, Check& check);

} // namespace lockstep
