/// @file
/// Private: the plain way to pack and to unpack: the table walked at run time, field by field, each through
/// the buffer's own operations.
///
/// Contained records go by their own operations, which are straight again as far as they can: so a message
/// that fails costs only a few times what one costs that does not.
///
/// It says what happens where something does not fit or is malformed: the result, the cursor, and what is
/// left in the buffer or in the record. What succeeds goes the straight way.
#ifndef KORVAN_PROTOCOL_PLAIN_H
#define KORVAN_PROTOCOL_PLAIN_H

#include "protocol/Schema.h"

#include <cstdint>

namespace cs_relay_msg::plain {

/// Packs a record at an effective version.
int32_t pack(const schema::Type& type, const char* record, Korvan::BixWriteBuf& buffer,
             uint32_t version) noexcept;

/// Unpacks a record at an effective version.
int32_t unpack(const schema::Type& type, char* record, Korvan::BixReadBuf& buffer, uint32_t version) noexcept;

} // namespace cs_relay_msg::plain

#endif
