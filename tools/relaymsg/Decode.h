/// @file
/// The command `decode`: shows the messages of a recorded stream.
#ifndef KORVAN_TOOLS_RELAYMSG_DECODE_H
#define KORVAN_TOOLS_RELAYMSG_DECODE_H

#include "tools/relaymsg/ExitStatus.h"
#include "tools/relaymsg/Input.h"
#include "tools/relaymsg/Selection.h"

#include <string>

namespace relaymsg {

/// How messages are shown.
enum class View { Text, Summary, Json, Annotate };

struct DecodeOptions {
    std::string file = "-";
    InputOptions input;
    View view = View::Text;
    int indent = 1;
    char separator = '\n';
    bool redact = false;
    Selection selection;
};

/// Runs the command: messages to standard output, what is wrong to standard error.
ExitStatus decode(const DecodeOptions& options);

} // namespace relaymsg

#endif
