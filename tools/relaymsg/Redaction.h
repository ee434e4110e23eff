/// @file
/// Takes from messages what must not be passed on.
#ifndef KORVAN_TOOLS_RELAYMSG_REDACTION_H
#define KORVAN_TOOLS_RELAYMSG_REDACTION_H

#include <cstddef>

namespace relaymsg {

/// Overwrites the signatures and addresses in the message at @p bytes, as far as it can be decoded, with
/// asterisks. Lengths stay. Returns whether there were any.
bool redact(char* bytes, size_t size);

} // namespace relaymsg

#endif
