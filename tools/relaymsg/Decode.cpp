#include "tools/relaymsg/Decode.h"

#include "tools/relaymsg/AnnotatePrinter.h"
#include "tools/relaymsg/Printer.h"
#include "tools/relaymsg/Reading.h"

#include <memory>

namespace relaymsg {

namespace {

std::unique_ptr<Printer> makePrinter(const DecodeOptions& options, Output& out) {
    switch (options.view) {
    case View::Summary:
        return std::make_unique<SummaryPrinter>(out);
    case View::Json:
        return std::make_unique<JsonPrinter>(out);
    case View::Annotate:
        return std::make_unique<AnnotatePrinter>(out, options.redact);
    case View::Text:
        break;
    }
    return std::make_unique<TextPrinter>(out, options.indent, options.separator);
}

} // namespace

ExitStatus decode(const DecodeOptions& options) {
    Job job(options.file);
    const auto printer = makePrinter(options, job.out());
    Reading reading(job, options.input);
    const auto redact = [&](MessageReader& stream) {
        if (options.redact) {
            stream.redact();
        }
    };
    const auto take = [&](MessageReader& stream) {
        redact(stream);
        printer->message(stream);
    };
    const auto fail = [&](MessageReader& stream, MessageReader::Next what) {
        if (what == MessageReader::Next::Gap) {
            printer->gap(stream);
        } else {
            redact(stream);
            printer->failure(stream);
        }
    };
    reading.each(options.selection, take, fail);
    if (reading.any()) {
        printer->end();
    }
    return job.end(reading.end());
}

} // namespace relaymsg
