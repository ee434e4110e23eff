#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/PacketFile.h"
#include "tools/relaymsg/TextEscape.h"

namespace relaymsg {

void addInput(CLI::App& app, InputOptions& options) {
    addParsed(app, "--format", options.form, parseForm, "must be raw, hex, base64 or pcap",
              "The form of the input; by default its first bytes tell it")
        ->type_name("raw|hex|base64|pcap");
    CaptureOptions& capture = options.capture;
    app.add_option("--port", capture.ports, "Of a capture, only packets to or from port N; may be repeated")
        ->allow_extra_args(false)
        ->type_name("N");
    const auto takeFilter = [&capture](const std::string& filter) {
        const std::string fault = filterFault(filter);
        if (!fault.empty()) {
            throw CLI::ValidationError("--filter", escaped(fault));
        }
        capture.filter = filter;
    };
    app.add_option_function<std::string>(
           "--filter", takeFilter,
           "Of a capture, only packets that the capture filter F of pcap-filter(7) holds")
        ->type_name("F");
    app.add_option("--connections", capture.connections,
                   "Of a capture, follow N TCP streams at a time, two for each connection (default 1000)")
        ->type_name("N");
    app.add_option("--hold", capture.held,
                   "Keep N MiB of TCP that waits for missing bytes, those of unfinished messages included "
                   "(default 64)")
        ->check(CLI::Range(size_t{0}, size_t{1} << 20).description(""))
        ->type_name("N");
}

} // namespace relaymsg
