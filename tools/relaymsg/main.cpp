#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Diff.h"
#include "tools/relaymsg/TextEscape.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

using namespace relaymsg;

int run(int argc, char** argv) {
    CLI::App app;
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "relaymsg: " + escaped(error.what()) +
               "\n  `relaymsg --help` and `relaymsg COMMAND --help` tell more.\n";
    });
    ExitStatus status = ExitStatus::Ok;
    addAll(app, status);
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
