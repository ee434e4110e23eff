/// @file
/// Takes from messages what must not be passed on.
#ifndef KORVAN_TOOLS_RELAYMSG_REDACTION_H
#define KORVAN_TOOLS_RELAYMSG_REDACTION_H

#include "protocol/Schema.h"

#include <cstddef>

namespace relaymsg {

/// Whether the field identifies a person or opens a door.
bool isSecret(const cs_relay_msg::schema::Field& field);

/// Overwrites the signatures and addresses in the message at @p bytes, as far as it can be decoded, with
/// asterisks. Lengths stay. Returns whether there were any.
bool redact(char* bytes, size_t size);

} // namespace relaymsg

#endif
