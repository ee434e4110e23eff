/// @file
/// The text of the fields that a message has on the wire.
#ifndef KORVAN_TOOLS_RELAYMSG_FIELD_TEXT_H
#define KORVAN_TOOLS_RELAYMSG_FIELD_TEXT_H

#include "tools/relaymsg/FieldWalk.h"

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstdint>
#include <string_view>

namespace relaymsg {

/// Appends a line for each field that can be read from the message at the start of @p bytes, as
/// `CSRelayMsg::visualize` writes it. A field that is not on the wire has no line. For a message that cannot
/// be decoded, where `visualize` would show what an earlier message left in the record.
///
/// @return 0; -1 if there is not enough room
int32_t printFields(std::string_view bytes, Korvan::BixWriteBuf& buffer, int indent, char separator);

} // namespace relaymsg

#endif
