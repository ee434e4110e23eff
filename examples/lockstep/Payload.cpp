#include "examples/lockstep/Payload.h"

#include "protocol/Stream.h"

namespace lockstep {

using namespace cs_relay_msg;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

namespace {

/// Reads a payload of exactly these bytes.
template <class Read>
bool readWhole(const uint8_t* bytes, size_t size, Read read) {
    BixReadBuf in(reinterpret_cast<const char*>(bytes), size);
    return read(in) && in.getLeftSize() == 0;
}

} // namespace

std::string signature(uint32_t player) {
    return "player-" + std::to_string(player);
}

bool setSettings(CSRelayMsgPack& pack, const Settings& settings) {
    char bytes[10];
    BixWriteBuf out(bytes, sizeof(bytes));
    pack.bDataType = SETTINGS;
    return out.writeUInt32(settings.seed) == BIX_OK && out.writeUInt32(settings.lastTick) == BIX_OK &&
           out.writeUInt16(settings.port) == BIX_OK &&
           setBytes(pack, &CSRelayMsgPack::szData, bytes, out.getUsedSize()) == BIX_OK;
}

bool getSettings(const CSRelayMsgPack& pack, Settings& settings) {
    return pack.bDataType == SETTINGS && readWhole(pack.szData, pack.wLength, [&](BixReadBuf& in) {
               return in.readUInt32(settings.seed) == BIX_OK && in.readUInt32(settings.lastTick) == BIX_OK &&
                      in.readUInt16(settings.port) == BIX_OK;
           });
}

bool setMove(CSRelayData& data, Move move) {
    return setBytes(data, &CSRelayData::szRelayBuf, &move, sizeof(move)) == BIX_OK;
}

bool getMove(const CSRelayData& data, Move& move) {
    if (data.wRelayLen != sizeof(move) || data.szRelayBuf[0] > static_cast<uint8_t>(Move::Right)) {
        return false;
    }
    move = static_cast<Move>(data.szRelayBuf[0]);
    return true;
}

bool setCheck(CSRelayData& data, const Check& check) {
    char bytes[12];
    BixWriteBuf out(bytes, sizeof(bytes));
    return out.writeUInt32(check.tick) == BIX_OK && out.writeUInt64(check.hash) == BIX_OK &&
           setBytes(data, &CSRelayData::szRelayBuf, bytes, out.getUsedSize()) == BIX_OK;
}

bool getCheck(const CSRelayData& data, Check& check) {
    return readWhole(data.szRelayBuf, data.wRelayLen, [&](BixReadBuf& in) {
        return in.readUInt32(check.tick) == BIX_OK && in.readUInt64(check.hash) == BIX_OK;
    });
}

} // namespace lockstep
