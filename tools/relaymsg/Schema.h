/// @file
/// The command `schema`: tells the protocol.
#ifndef KORVAN_TOOLS_RELAYMSG_SCHEMA_H
#define KORVAN_TOOLS_RELAYMSG_SCHEMA_H

#include "tools/relaymsg/ExitStatus.h"

#include <string>

namespace relaymsg {

/// Prints the protocol as JSON.
ExitStatus printSchema();

/// Says what changed since the file @p path was printed.
ExitStatus checkSchema(const std::string& path);

} // namespace relaymsg

#endif
