#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Decode.h"
#include "tools/relaymsg/Separator.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(FILE holds messages one behind the other: as raw bytes, as base64, or as
hexadecimal text, plain with blanks and line ends or as xxd, xxd -p, hexdump -C
or od -Ax -tx1 print it. Or it is a capture, pcap or pcapng, with messages in UDP
datagrams and TCP streams. Without FILE, or with -, standard input is read; each
message is printed as soon as it is complete.

Of each message one line comes first:
  #2      @31             16 B  v3  stRelayLoginRes           user 1001  room 7  async 1
its number, its offset in the decoded bytes, its length, its version, its
command, and the user, the room and the asynchronous id of its head. Below it
stand its fields. Control characters, backslashes and bytes that are no UTF-8
appear as \n, \\, \x1b and the like.

In a capture each datagram and each direction of a TCP connection is a stream of
its own, in which offsets are counted; behind the line stand the packet, its time
and its flow. TCP is put in order. Where bytes are missing, that is said, and
nothing behind them is decoded; --resync searches there, as it does behind damage
in any stream, for three messages in a row, or fewer that end with the stream.
What it finds is marked as a guess. Fragments of IP packets are left out and
counted.

With --json each message is one line, from which `relaymsg encode` makes the
same bytes again:
  {"stHead":{"dwUserID":1001,...,"bCmdId":162},"stBody":{"stRelayLoginRes":{"dwReserve":0}}}
A 64-bit integer is a string of its digits, an array of bytes a string of
hexadecimal digits, a text that is no UTF-8 {"hex": "..."}. A field that the
message's version does not carry is absent; so is the body of an unknown
command. Beside stHead and stBody, "packet" tells the number, the time, the
protocol and the endpoints of a captured message, and "guess" is true where
--resync searched; `relaymsg encode` passes over both.

With --annotate each line below the first has an offset, the bytes from there
on, and on the first line of a field its path and its value:
  31        00 00 03 e9              stHead.dwUserID  1001

Examples:
  relaymsg decode session.bin
  relaymsg decode --command stRelayLoginReq --user 1001 --redact session.bin
  relaymsg decode --summary session.hex
  relaymsg decode --port 9000 session.pcap
  tcpdump -i any -U -w - port 9000 | relaymsg decode --summary
  relaymsg decode --json session.bin | jq 'select(.stHead.dwUserID == 1001)'
  nc -l 9000 | relaymsg decode --separator ' '

)";

} // namespace

void addDecode(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<DecodeOptions>();
    CLI::App& decode = *app.add_subcommand("decode", "Print the messages of a recorded stream");
    addFile(decode, options->file);
    addInput(decode, options->input);
    CLI::App& views = *decode.add_option_group("Views", "How messages are shown");
    views.require_option(0, 1);
    const auto addView = [&](const char* name, View view, const char* description) {
        views.add_flag_callback(
            name, [=] { options->view = view; }, description);
    };
    addView("--text", View::Text, "One line about each message, then its fields (the default)");
    addView("--summary", View::Summary, "Only the first line of each message, then totals per command");
    addView("--json", View::Json, "A JSON object for each message, one a line");
    addView("--annotate", View::Annotate, "One line about each message, then its bytes and what they are");
    addSelection(decode, options->selection);
    decode.add_flag("--resync", options->input.resync,
                    "Behind damage, go on where messages seem to follow each other again: a guess");
    decode.add_flag("--redact", options->redact,
                    "Show asterisks in place of signatures and addresses (szSigBuf, szUser_ip)");
    decode
        .add_option("--indent", options->indent,
                    "Levels of two blanks before the fields; -1: no blanks at all (default 1)")
        ->check(CLI::Range(-1, 100).description(""))
        ->type_name("N");
    addParsed(decode, "--separator", options->separator, parseSeparator,
              "must be one ASCII character, or one of \\n \\t \\r \\0 \\\\ \\xNN",
              "The character C behind each field (default \\n)")
        ->type_name("C");
    decode.footer(HELP + exitStatuses());
    decode.callback([options, &status] { status = relaymsg::decode(*options); });
}

} // namespace relaymsg
