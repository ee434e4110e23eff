#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Encode.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(FILE holds messages as `relaymsg decode --json` and `relaymsg new` print them:
JSON objects one behind the other, as a rule one a line. Without FILE, or with
-, standard input is read.

Every field that the version in a message's head carries must be there, and no
other; only the count of an array may be left out. A value that is wrong is
refused with its path, which jq understands. Nothing is guessed.

A message is packed for the version in its head. --cut-version packs for
another one: fields that it does not carry are left out, and fields that it
adds get their defaults.

Examples:
  relaymsg decode --json session.bin | relaymsg encode > same.bin
  relaymsg new stRelayLoginReq | jq '.stHead.dwUserID = 1001' | relaymsg encode --hex
  relaymsg encode --cut-version 1 session.jsonl > old.bin

)";

} // namespace

void addEncode(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<EncodeOptions>();
    CLI::App& encode = *app.add_subcommand("encode", "Make messages of JSON");
    encode.add_option("FILE", options->file, "What to read; - is standard input")->type_name("");
    encode.add_flag("--hex", options->hex,
                    "Print hexadecimal digits, a line for each message, in place of the bytes");
    addVersion(encode, "--cut-version", options->cutVersion,
               "Pack all messages for version N; by default each for its own");
    encode.footer(HELP + exitStatuses());
    encode.callback([options, &status] { status = relaymsg::encode(*options); });
}

} // namespace relaymsg
