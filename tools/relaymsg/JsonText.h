/// @file
/// Messages as JSON.
///
/// A message is one object of its records and fields by their names. What JSON cannot say is said so: a
/// 64-bit integer is a string of its digits, an array of bytes a string of hexadecimal digits, a text that is
/// no UTF-8 an object {"hex": "..."}. A field that the message's version does not carry is absent, and so is
/// the body of an unknown command. Thus nothing is lost: MessageJson.h makes the same bytes of it.
#ifndef KORVAN_TOOLS_RELAYMSG_JSON_TEXT_H
#define KORVAN_TOOLS_RELAYMSG_JSON_TEXT_H

#include "tools/relaymsg/FieldWalk.h"
#include "tools/relaymsg/MessageReader.h"

#include <string>
#include <string_view>

namespace relaymsg {

/// Appends @p text, which is UTF-8, as a JSON string. Characters that could deceive its reader are escaped.
/// False, and nothing appended, if it is no UTF-8.
bool appendJsonString(std::string& to, std::string_view text);

/// Appends the value of a field.
void appendJsonValue(std::string& to, const Leaf& leaf);

/// The keys beside a message that tell where it came from; they are no part of it.
inline constexpr const char* PACKET_KEY = "packet";
inline constexpr const char* GUESS_KEY = "guess";

/// Appends the message that @p stream stands at, as one line without its end. From a capture, it has the
/// member "packet": {"number":12,"time":1795276189.250000,"protocol":"udp","from":"10.0.0.2:50000",
/// "to":"10.0.0.1:9000"}; if it was searched for, "guess":true.
void appendJson(std::string& to, const MessageReader& stream);

/// Appends the message at the start of @p bytes, which can be decoded, as one line without its end.
void appendJson(std::string& to, std::string_view bytes);

} // namespace relaymsg

#endif
