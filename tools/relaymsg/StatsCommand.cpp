#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Stats.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(Of each command: how many messages there are, how many bytes they have and which
share of all that is, and their sizes: the smallest, the one that half of them
do not exceed, the one that 99 of 100 do not exceed, and the largest. From 256
bytes on, the two in the middle are rounded up, by less than 1 percent. Of a
capture, also how many messages there were a second, from the first to the last.

Examples:
  relaymsg stats session.bin
  relaymsg stats --filter 'udp port 9000' session.pcap
  relaymsg stats --json --user 1001 session.bin | jq '.commands[] | select(.max > 1000)'

)";

} // namespace

void addStats(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<StatsOptions>();
    CLI::App& stats = *app.add_subcommand("stats", "Count the messages of a recorded stream");
    addFile(stats, options->file);
    addInput(stats, options->input);
    stats.add_flag("--json", options->json, "Print one JSON object in place of the tables");
    stats.add_option("--users", options->users, "Tell the first N users apart (default 100)")->type_name("N");
    addSelection(stats, options->selection);
    stats.footer(HELP + exitStatuses());
    stats.callback([options, &status] { status = relaymsg::stats(*options); });
}

} // namespace relaymsg
