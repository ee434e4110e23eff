#include "tools/relaymsg/CommandLine.h"

namespace relaymsg {

namespace {

constexpr const char* HELP = R"(Example:
  relaymsg decode session.bin

`relaymsg COMMAND --help` tells more of a command.
)";

/// What a build lacks for want of a library.
std::string missing() {
    std::string text;
#ifndef RELAYMSG_JSON
    text += "\nThis build leaves out `encode` and `schema`, which need nlohmann-json.\n";
#endif
#ifndef RELAYMSG_PCAP
    text += "\nThis build reads no captures, which needs libpcap.\n";
#endif
    return text;
}

} // namespace

void addAll(CLI::App& app, ExitStatus& status) {
    app.name("relaymsg");
    app.description("Works with recorded messages between a lockstep game and its relay server.");
    app.set_version_flag("--version", "relaymsg " RELAYMSG_VERSION);
    app.require_subcommand(1);
    app.footer(HELP + missing());
    addDecode(app, status);
    addStats(app, status);
    addDiff(app, status);
#ifdef RELAYMSG_JSON
    addEncode(app, status);
    addSchema(app, status);
#endif
    addNew(app, status);
}

} // namespace relaymsg
