/// @file
/// The command `encode`: makes messages of JSON.
#ifndef KORVAN_TOOLS_RELAYMSG_ENCODE_H
#define KORVAN_TOOLS_RELAYMSG_ENCODE_H

#include "tools/relaymsg/ExitStatus.h"

#include <cstdint>
#include <string>

namespace relaymsg {

struct EncodeOptions {
    std::string file = "-";
    bool hex = false;        ///< hexadecimal digits, a line for each message; otherwise the bytes
    uint32_t cutVersion = 0; ///< 0: the one in the message's head
};

ExitStatus encode(const EncodeOptions& options);

} // namespace relaymsg

#endif
