/// @file
/// The command `stats`: counts the messages of a recorded stream.
#ifndef KORVAN_TOOLS_RELAYMSG_STATS_H
#define KORVAN_TOOLS_RELAYMSG_STATS_H

#include "tools/relaymsg/ExitStatus.h"
#include "tools/relaymsg/Input.h"
#include "tools/relaymsg/Selection.h"

#include <string>

namespace relaymsg {

struct StatsOptions {
    std::string file = "-";
    InputOptions input;
    bool json = false;
    size_t users = 100;
    Selection selection;
};

ExitStatus stats(const StatsOptions& options);

} // namespace relaymsg

#endif
