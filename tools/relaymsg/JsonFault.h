/// @file
/// What is wrong with a JSON text.
#ifndef KORVAN_TOOLS_RELAYMSG_JSON_FAULT_H
#define KORVAN_TOOLS_RELAYMSG_JSON_FAULT_H

#include <string>

namespace relaymsg {

/// Thrown where JSON is read.
struct JsonFault {
    std::string path;     ///< the value, such as .stHead.dwUserID; empty for the text itself
    std::string sentence; ///< its subject is that value
};

} // namespace relaymsg

#endif
