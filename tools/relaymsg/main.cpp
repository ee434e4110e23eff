#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Diff.h"
#include "tools/relaymsg/TextEscape.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

using namespace relaymsg;

constexpr const char* HELP = R"(Example:
  relaymsg decode session.bin

`relaymsg COMMAND --help` tells more of a command.
)";

int run(int argc, char** argv) {
    CLI::App app("Works with recorded messages between a lockstep game and its relay server.", "relaymsg");
    app.set_version_flag("--version", "relaymsg " RELAYMSG_VERSION);
    app.require_subcommand(1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "relaymsg: " + escaped(error.what()) +
               "\n  `relaymsg --help` and `relaymsg COMMAND --help` tell more.\n";
    });
    ExitStatus status = ExitStatus::Ok;
    addDecode(app, status);
    addStats(app, status);
    addDiff(app, status);
#ifdef RELAYMSG_JSON
    addEncode(app, status);
    addSchema(app, status);
    app.footer(HELP);
#else
    app.footer(HELP +
               std::string("\nThis build leaves out `encode` and `schema`, which need nlohmann-json.\n"));
#endif
    addNew(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool diff = app.got_subcommand("diff"); // in whose statuses 1 means something else
        const auto wrong = diff ? static_cast<int>(DiffStatus::Trouble) : static_cast<int>(ExitStatus::Usage);
        return app.exit(error) == 0 ? 0 : wrong;
    }
    return static_cast<int>(status);
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
