/// @file
/// The command `diff`: compares two recorded streams.
#ifndef KORVAN_TOOLS_RELAYMSG_DIFF_H
#define KORVAN_TOOLS_RELAYMSG_DIFF_H

#include "tools/relaymsg/Input.h"

#include <string>

namespace relaymsg {

/// How the comparison ended: the exit status, which is that of `diff`.
enum class DiffStatus : int { Same, Different, Trouble };

struct DiffOptions {
    std::string a;
    std::string b;
    InputOptions input;
    bool redact = false;
    size_t window = 32; ///< how many messages of either stream are looked through for one that is in both
};

DiffStatus diff(const DiffOptions& options);

} // namespace relaymsg

#endif
