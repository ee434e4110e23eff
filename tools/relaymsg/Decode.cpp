#include "tools/relaymsg/Decode.h"

#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/FileSource.h"
#include "tools/relaymsg/MessageStream.h"
#include "tools/relaymsg/Output.h"
#include "tools/relaymsg/Printer.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace relaymsg {

namespace {

class Decoding {
public:
    explicit Decoding(const DecodeOptions& options) : file_(options.file), out_(STDOUT_FILENO) {
        file_.onWait([this] { out_.flush(); });
        bytes_ = openForm(file_, options.form);
        if (options.summary) {
            printer_ = std::make_unique<SummaryPrinter>(out_);
        } else {
            printer_ = std::make_unique<TextPrinter>(out_, options.indent, options.separator);
        }
    }

    ExitStatus run() {
        MessageStream stream(*bytes_);
        MessageStream::Next next;
        while ((next = stream.next()) == MessageStream::Next::Message && out_.error() == 0) {
            printer_->message(stream);
            if (stream.command() == nullptr) {
                noteUnknown(stream);
            }
        }
        if (out_.error() == 0) {
            status_ = finish(stream, next);
        }
        out_.flush();
        if (out_.error() == EPIPE) { // its reader had enough
            return ExitStatus::Ok;
        }
        if (out_.error() != 0) {
            say(std::string("the output cannot be written: ") + std::strerror(out_.error()) + ".\n");
            return ExitStatus::Output;
        }
        return status_;
    }

private:
    void say(const std::string& text) {
        out_.flush(); // what was decoded comes first
        Output error(STDERR_FILENO);
        error.append("relaymsg: " + text);
        error.flush();
    }

    void sayOfInput(const std::string& text) { say(file_.name() + ": " + text); }

    void noteUnknown(const MessageStream& stream) {
        const bool first = unknown_.number == 0;
        unknown_ = {stream.number(), stream.offset() + stream.bytes().size(), stream.message().stHead.bCmdId};
        if (first) {
            sayOfInput(messageText(stream) + " has the unknown command " + std::to_string(unknown_.id) +
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
            sayOfInput(bytes_->error() + "\n");
            return ExitStatus::Input;
        }
        if (failed) {
            sayOfInput(failureText(stream, unknown_));
            return ExitStatus::Decode;
        }
        if (empty) {
            sayOfInput("is empty: there is no message in it.\n");
            return ExitStatus::Input;
        }
        return unknown_.number != 0 ? ExitStatus::UnknownCommand : ExitStatus::Ok;
    }

    FileSource file_;
    Output out_;
    std::unique_ptr<ByteSource> bytes_;
    std::unique_ptr<Printer> printer_;
    UnknownCommand unknown_;
    ExitStatus status_ = ExitStatus::Ok;
};

} // namespace

ExitStatus decode(const DecodeOptions& options) {
    return Decoding(options).run();
}

} // namespace relaymsg
