#include "tools/relaymsg/Decode.h"

#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/MessageStream.h"
#include "tools/relaymsg/Printer.h"

#include <memory>

namespace relaymsg {

namespace {

std::unique_ptr<Printer> makePrinter(const DecodeOptions& options, Output& out) {
    switch (options.view) {
    case View::Summary:
        return std::make_unique<SummaryPrinter>(out);
    case View::Json:
        return std::make_unique<JsonPrinter>(out);
    case View::Text:
        break;
    }
    return std::make_unique<TextPrinter>(out, options.indent, options.separator);
}

class Decoding {
public:
    explicit Decoding(const DecodeOptions& options)
        : job_(options.file), bytes_(openForm(job_.file(), options.form)),
          printer_(makePrinter(options, job_.out())) {}

    ExitStatus run() {
        MessageStream stream(*bytes_);
        MessageStream::Next next;
        while ((next = stream.next()) == MessageStream::Next::Message && job_.out().error() == 0) {
            printer_->message(stream);
            if (stream.command() == nullptr) {
                noteUnknown(stream);
            }
        }
        return job_.end(job_.out().error() == 0 ? finish(stream, next) : ExitStatus::Output);
    }

private:
    void noteUnknown(const MessageStream& stream) {
        const bool first = unknown_.number == 0;
        unknown_ = {stream.number(), stream.offset() + stream.bytes().size(), stream.message().stHead.bCmdId};
        if (first) {
            job_.sayOfInput(messageText(stream) + " has the unknown command " + std::to_string(unknown_.id) +
                            ".\n"
                            "  The length of its body cannot be known. Decoding goes on behind its head;\n"
                            "  what follows may be that body.\n");
        }
    }

    ExitStatus finish(const MessageStream& stream, MessageStream::Next next) {
        const bool failed = next == MessageStream::Next::Failure;
        const bool empty = stream.number() == 0;
        if (failed) {
            printer_->failure(stream);
        }
        if (!empty) {
            printer_->end();
        }
        if (!bytes_->error().empty()) {
            job_.sayOfInput(bytes_->error() + "\n");
            return ExitStatus::Input;
        }
        if (failed) {
            job_.sayOfInput(failureText(stream, unknown_));
            return ExitStatus::Decode;
        }
        if (empty) {
            job_.sayOfInput("is empty: there is no message in it.\n");
            return ExitStatus::Input;
        }
        return unknown_.number != 0 ? ExitStatus::UnknownCommand : ExitStatus::Ok;
    }

    Job job_;
    std::unique_ptr<ByteSource> bytes_;
    std::unique_ptr<Printer> printer_;
    UnknownCommand unknown_;
};

} // namespace

ExitStatus decode(const DecodeOptions& options) {
    return Decoding(options).run();
}

} // namespace relaymsg
