#include "tools/relaymsg/Decode.h"

#include "tools/relaymsg/AnnotatePrinter.h"
#include "tools/relaymsg/Printer.h"
#include "tools/relaymsg/Reading.h"

#include <memory>

namespace relaymsg {

namespace {

std::unique_ptr<Printer> makePrinter(const DecodeOptions& options, Output& out, ByteSource& input) {
    switch (options.view) {
    case View::Summary:
        return std::make_unique<SummaryPrinter>(out);
    case View::Json:
        return std::make_unique<JsonPrinter>(out);
    case View::Annotate:
        return std::make_unique<AnnotatePrinter>(out, input, options.redact);
    case View::Text:
        break;
    }
    return std::make_unique<TextPrinter>(out, options.indent, options.separator);
}

} // namespace

ExitStatus decode(const DecodeOptions& options) {
    Job job(options.file);
    const auto bytes = openForm(job.file(), options.form);
    const auto printer = makePrinter(options, job.out(), *bytes);
    Reading reading(job, *bytes);
    reading.each(options.selection, [&](MessageStream& stream) {
        if (options.redact) {
            stream.redact();
        }
        printer->message(stream);
    });
    if (reading.failed()) {
        if (options.redact) {
            reading.stream().redact();
        }
        printer->failure(reading.stream());
    }
    if (reading.any()) {
        printer->end();
    }
    return job.end(reading.end());
}

} // namespace relaymsg
