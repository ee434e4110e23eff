/// @file
/// Private: a message as its head and its member, wherever the two lie. `CSRelayMsg` is packed and unpacked
/// by the same steps.
#ifndef KORVAN_PROTOCOL_ENVELOPE_H
#define KORVAN_PROTOCOL_ENVELOPE_H

#include "protocol/cs_relay_msg.h"

#include <cstdint>

namespace cs_relay_msg::envelope {

/// Packs @p head, the member that it selects, which lies at @p member, and the version.
int32_t pack(const CSRelayMsgHead& head, const void* member, Korvan::BixWriteBuf& buffer,
             uint32_t cutVer) noexcept;

/// Looks at the version, then unpacks the head. The cursor stays.
int32_t unpackHead(CSRelayMsgHead& head, const Korvan::BixReadBuf& buffer) noexcept;

/// Unpacks the head and the member that it selects, for which there is room at @p member.
int32_t unpack(CSRelayMsgHead& head, void* member, Korvan::BixReadBuf& buffer) noexcept;

} // namespace cs_relay_msg::envelope

#endif
