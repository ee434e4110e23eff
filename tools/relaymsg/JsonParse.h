/// @file
/// JSON text as values, taken strictly.
#ifndef KORVAN_TOOLS_RELAYMSG_JSON_PARSE_H
#define KORVAN_TOOLS_RELAYMSG_JSON_PARSE_H

#include "tools/relaymsg/JsonFault.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace relaymsg {

/// The path of the member @p key of the object at @p path.
std::string memberPath(const std::string& path, const std::string& key);

/// The path of an element of the array at @p path.
std::string elementPath(const std::string& path, size_t index);

/// The value that @p text is. Throws a JsonFault if it is none, if an object has two members of one name, or
/// if it is nested deeper than anything that is read here.
nlohmann::json parseJson(std::string_view text);

} // namespace relaymsg

#endif
