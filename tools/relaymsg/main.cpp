#include "tools/relaymsg/Decode.h"
#include "tools/relaymsg/Separator.h"
#include "tools/relaymsg/TextEscape.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace relaymsg;

std::string exitStatuses() {
    std::string text = "Exit status:\n";
    for (const ExitMeaning& meaning : EXIT_MEANINGS) {
        text += "  " + std::to_string(static_cast<int>(meaning.status)) + "  " + meaning.words + "\n";
    }
    return text;
}

constexpr const char* DECODE_HELP =
    R"(FILE holds messages one behind the other: as raw bytes, or as hexadecimal text,
plain with blanks and line ends or as xxd, xxd -p, hexdump -C or od -Ax -tx1
print it. Without FILE, or with -, standard input is read; each message is
printed as soon as it is complete.

Of each message one line comes first:
  #2      @31             16 B  v3  stRelayLoginRes           user 1001  room 7  async 1
its number, its offset in the decoded bytes, its length, its version, its
command, and the user, the room and the asynchronous id of its head. Below it
stand its fields. Control characters, backslashes and bytes that are no UTF-8
appear as \n, \\, \x1b and the like.

Examples:
  relaymsg decode session.bin
  relaymsg decode --summary session.hex
  nc -l 9000 | relaymsg decode --separator ' '

)";

constexpr const char* TOOL_HELP = R"(Example:
  relaymsg decode session.bin

`relaymsg decode --help` tells more of the command.
)";

/// Adds the option @p name, whose text @p parse turns into a value for @p target, or into nothing.
template <class Value>
CLI::Option* addParsed(CLI::App& app, const char* name, Value& target,
                       std::optional<Value> (*parse)(std::string_view), const char* requirement,
                       const char* description) {
    const auto take = [=, &target](const std::string& text) {
        const std::optional<Value> value = parse(text);
        if (!value) {
            throw CLI::ValidationError(name, requirement);
        }
        target = *value;
    };
    return app.add_option_function<std::string>(name, take, description);
}

void addDecode(CLI::App& app, DecodeOptions& options) {
    CLI::App& decode = *app.add_subcommand("decode", "Print the messages of a recorded stream");
    decode.add_option("FILE", options.file, "What to read; - is standard input")->type_name("");
    addParsed(decode, "--format", options.form, parseForm, "must be raw or hex",
              "The form of the input; by default its first bytes tell it")
        ->type_name("raw|hex");
    decode.add_flag("--summary", options.summary,
                    "Only the first line of each message, then totals per command");
    decode
        .add_option("--indent", options.indent,
                    "Levels of two blanks before the fields; -1: no blanks at all (default 1)")
        ->check(CLI::Range(-1, 100).description(""))
        ->type_name("N");
    addParsed(decode, "--separator", options.separator, parseSeparator,
              "must be one ASCII character, or one of \\n \\t \\r \\0 \\\\ \\xNN",
              "The character C behind each field (default \\n)")
        ->type_name("C");
    decode.footer(DECODE_HELP + exitStatuses());
}

int run(int argc, char** argv) {
    CLI::App app("Works with recorded messages between a lockstep game and its relay server.", "relaymsg");
    app.set_version_flag("--version", "relaymsg " RELAYMSG_VERSION);
    app.require_subcommand(1);
    app.footer(TOOL_HELP);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "relaymsg: " + escaped(error.what()) +
               "\n  `relaymsg --help` and `relaymsg COMMAND --help` tell more.\n";
    });
    DecodeOptions options;
    addDecode(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(app.exit(error) == 0 ? ExitStatus::Ok : ExitStatus::Usage);
    }
    return static_cast<int>(decode(options));
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe is told by the write
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "relaymsg: " << error.what() << '\n';
        return static_cast<int>(ExitStatus::Output);
    }
}
