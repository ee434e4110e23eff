#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Diff.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(A and B hold messages as for `relaymsg decode`; one of them may be -, which is
standard input. Messages that are the same in both are not shown. The others:
  - #3 @31  stRelayLoginRes  user 1001              is only in A
  + #4 @52  stRelayLoginRes  user 1001              is only in B
  ! #3 @31  #4 @52  stRelayLoginRes  user 1001      differs; below it, its fields in A and in B
      - stBody.stRelayLoginRes.dwReserve  0
      + stBody.stRelayLoginRes.dwReserve  5
Two messages are compared if their command and their user are the same. Where
the streams part, --window messages of each are looked through for the place
where they meet again.

Examples:
  relaymsg diff before.bin after.bin
  relaymsg diff --redact --port 9000 client.pcap server.pcap

Exit status:
  0  the messages are the same
  1  they are not
  2  one of the inputs is no stream of messages, or the command line is wrong
)";

} // namespace

void addDiff(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App& diff = *app.add_subcommand("diff", "Compare the messages of two recorded streams");
    diff.add_option("A", options->a, "One stream")->type_name("")->required();
    diff.add_option("B", options->b, "The other")->type_name("")->required();
    addInput(diff, options->input);
    diff.add_option("--window", options->window, "Look through N messages of each stream (default 32)")
        ->check(CLI::Range(1, 1024).description(""))
        ->type_name("N");
    diff.add_flag("--redact", options->redact,
                  "Show asterisks in place of signatures and addresses (szSigBuf, szUser_ip)");
    diff.footer(HELP);
    diff.callback([options, &status] {
        if (options->a == "-" && options->b == "-") {
            throw CLI::ValidationError("A and B", "only one of them can be standard input");
        }
        status = static_cast<ExitStatus>(relaymsg::diff(*options)); // its statuses are its own
    });
}

} // namespace relaymsg
