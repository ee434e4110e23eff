/// @file
/// The protocol as a dissector for Wireshark.
#ifndef KORVAN_TOOLS_RELAYMSG_SCHEMA_LUA_H
#define KORVAN_TOOLS_RELAYMSG_SCHEMA_LUA_H

#include <string>

namespace relaymsg {

/// A Lua program: the protocol's tables, and behind them what tools/wireshark/engine.lua does with them.
std::string schemaLua();

} // namespace relaymsg

#endif
