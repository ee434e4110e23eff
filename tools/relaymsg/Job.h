/// @file
/// What a command that turns one input into output has: both of them, and a voice.
#ifndef KORVAN_TOOLS_RELAYMSG_JOB_H
#define KORVAN_TOOLS_RELAYMSG_JOB_H

#include "tools/relaymsg/ExitStatus.h"
#include "tools/relaymsg/FileSource.h"
#include "tools/relaymsg/Output.h"
#include "tools/relaymsg/Progress.h"

#include <string>
#include <string_view>

namespace relaymsg {

class Job {
public:
    /// Reads @p path, or standard input if it is "-", and prints to standard output: at the latest when it
    /// has to wait for input. Of a long file, a terminal that is standard error shows how far it is.
    explicit Job(const std::string& path);

    FileSource& file() { return file_; }
    Output& out() { return out_; }

    /// Says something on standard error, behind all that was printed before.
    void say(const std::string& text);

    /// The same of the input.
    void sayOfInput(const std::string& text) { say(file_.name() + ": " + text); }

    /// Prints what is left. Returns @p status unless the output could not be written.
    ExitStatus end(ExitStatus status);

private:
    FileSource file_;
    Output out_;
    Progress progress_;
};

/// Prints @p text to standard output.
ExitStatus print(std::string_view text);

} // namespace relaymsg

#endif
