/// @file
/// How the tool ends.
#ifndef KORVAN_TOOLS_RELAYMSG_EXIT_STATUS_H
#define KORVAN_TOOLS_RELAYMSG_EXIT_STATUS_H

namespace relaymsg {

enum class ExitStatus : int { Ok, Usage, Input, Decode, UnknownCommand, Output, Json, Changed, Breaks };

/// One status in words.
struct ExitMeaning {
    ExitStatus status;
    const char* words;
};

/// All of them; `--help` shows them.
inline constexpr ExitMeaning EXIT_MEANINGS[] = {
    {ExitStatus::Ok, "all was done, or the reader of the output had enough"},
    {ExitStatus::Usage, "the command line is wrong"},
    {ExitStatus::Input,
     "the input cannot be read, holds no message, or is not of the form that it should be"},
    {ExitStatus::Decode, "a message could not be decoded, or bytes are missing; all before were decoded"},
    {ExitStatus::UnknownCommand,
     "all was decoded, but a command was unknown: what follows it may be its body"},
    {ExitStatus::Output, "the output could not be written"},
    {ExitStatus::Json, "a JSON text is wrong; all messages before it were encoded"},
    {ExitStatus::Changed, "schema --check: the protocol changed, but old peers understand it"},
    {ExitStatus::Breaks, "schema --check: the protocol changed, and old peers misunderstand it"},
};

} // namespace relaymsg

#endif
