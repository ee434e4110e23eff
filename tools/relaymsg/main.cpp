#include "tools/relaymsg/CommandLine.h"
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
#ifdef RELAYMSG_JSON
    addEncode(app, status);
    app.footer(HELP);
#else
    app.footer(HELP + std::string("\nThis build leaves out `encode`, which needs nlohmann-json.\n"));
#endif
    addNew(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(app.exit(error) == 0 ? ExitStatus::Ok : ExitStatus::Usage);
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
