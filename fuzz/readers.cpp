// The tool's own readers: raw bytes and every form of hexadecimal text, then message after message of them.
//
// Holds: bytes, messages and complaints do not depend on how the input is cut into reads; the messages lie
// one behind the other; and what is printed of them, hostile text included, is lines of which no control
// character is part. Captures in the same way, given as the records of a pcap file. (Byte 0: the form. Byte
// 1: the cuts; of a capture, also its links and its limits.)
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "tests/tool/Sources.h"
#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/Input.h"
#include "tools/relaymsg/JsonFault.h"
#include "tools/relaymsg/MessageJson.h"
#include "tools/relaymsg/MessageStream.h"
#include "tools/relaymsg/Output.h"
#include "tools/relaymsg/Printer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

using namespace relaymsg;

namespace {

constexpr size_t MOST = 64 * 1024; ///< a `*` in a dump can stand for more bytes than there is time for

/// The first so many bytes of another source.
class Beginning : public ByteSource {
public:
    explicit Beginning(ByteSource& source) : source_(source) {}

    size_t read(char* to, size_t size) override {
        const size_t count = source_.read(to, std::min(size, left_));
        left_ -= count;
        return count;
    }
    const std::string& error() const override { return source_.error(); }

private:
    ByteSource& source_;
    size_t left_ = MOST;
};

std::string bytesOf(std::string_view text, InputForm form, CutSource::NextSize cuts) {
    CutSource source(text, std::move(cuts));
    const OpenedForm opened = openForm(source, form);
    Beginning beginning(*opened.bytes);
    std::string bytes;
    char piece[512];
    while (const size_t count = beginning.read(piece, sizeof(piece))) {
        bytes.append(piece, count);
        if (bytes.size() == MOST) {
            return bytes;
        }
    }
    return bytes + "|" + beginning.error();
}

/// A file in memory, so that what the tool prints can be looked at.
class Printed {
public:
    Printed() : fd_(memfd_create("printed", 0)) { KORVAN_REQUIRE(fd_ >= 0); }
    ~Printed() { close(fd_); }
    Printed(const Printed&) = delete;
    Printed& operator=(const Printed&) = delete;

    int fd() const { return fd_; }
    std::string text() const {
        std::string text(static_cast<size_t>(lseek(fd_, 0, SEEK_END)), '\0');
        KORVAN_REQUIRE(pread(fd_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
        return text;
    }

private:
    int fd_;
};

enum class Print { Lines, Totals, Json };

std::unique_ptr<Printer> printerFor(Print print, Output& out) {
    switch (print) {
    case Print::Lines:
        return std::make_unique<TextPrinter>(out, 1, '\n');
    case Print::Totals:
        return std::make_unique<SummaryPrinter>(out);
    case Print::Json:
        break;
    }
    return std::make_unique<JsonPrinter>(out);
}

struct Report {
    std::string printed;
    std::string messages; ///< the bytes of those that could be decoded
};

/// All that the tool tells of the messages.
Report reportOf(std::string_view text, InputForm form, CutSource::NextSize cuts, Print print) {
    CutSource source(text, std::move(cuts));
    const OpenedForm opened = openForm(source, form);
    Beginning beginning(*opened.bytes);
    MessageStream stream(beginning);
    Printed printed;
    Output out(printed.fd());
    const std::unique_ptr<Printer> printer = printerFor(print, out);
    Report report;
    uint64_t messages = 0;
    MessageStream::Next next;
    while ((next = stream.next()) == MessageStream::Next::Message) {
        KORVAN_REQUIRE(stream.offset() == report.messages.size() && stream.number() == ++messages);
        report.messages += stream.bytes();
        printer->message(stream);
    }
    if (next == MessageStream::Next::Failure) {
        KORVAN_REQUIRE(stream.offset() == report.messages.size());
        printer->failure(stream);
        if (print != Print::Json) {
            out.append(failureText(stream, {}));
        }
    }
    printer->end();
    out.flush();
    KORVAN_REQUIRE(out.error() == 0);
    report.printed = printed.text();
    return report;
}

std::string packed(const cs_relay_msg::CSRelayMsg& message) {
    std::string wire(cs_relay_msg::CSRelayMsg::maxWireSize, '\0');
    size_t used = 0;
    KORVAN_REQUIRE(message.pack(wire.data(), wire.size(), &used, message.stHead.bVersion) == 0);
    wire.resize(used);
    return wire;
}

/// The messages of JSON, an object a line, as bytes.
std::string fromJson(std::string_view lines) {
    static const auto message = std::make_unique<cs_relay_msg::CSRelayMsg>();
    std::string bytes;
    while (!lines.empty()) {
        const size_t end = std::min(lines.find('\n'), lines.size() - 1);
        readMessage(lines.substr(0, end), *message);
        bytes += packed(*message);
        lines.remove_prefix(end + 1);
    }
    return bytes;
}

void readHostileJson(std::string_view text) {
    static const auto message = std::make_unique<cs_relay_msg::CSRelayMsg>();
    try {
        readMessage(text, *message);
    } catch (const JsonFault& fault) {
        KORVAN_REQUIRE(!fault.sentence.empty());
        return;
    }
    KORVAN_REQUIRE(!packed(*message).empty());
}

/// All that the tool tells of a capture.
std::string captureReport(std::string_view file, const InputOptions& options, CutSource::NextSize cuts) {
    CutSource source(file, std::move(cuts));
    Input input(source, options);
    MessageReader& messages = input.messages();
    Printed printed;
    Output out(printed.fd());
    SummaryPrinter printer(out);
    for (MessageReader::Next next; (next = messages.next()) != MessageReader::Next::End;) {
        if (next == MessageReader::Next::Message) {
            printer.message(messages);
        } else if (next == MessageReader::Next::Gap) {
            printer.gap(messages);
            out.append(gapText(messages));
        } else {
            printer.failure(messages);
            out.append(failureText(messages, {}));
        }
    }
    for (const std::string& sentence : messages.leftOut()) {
        out.append(sentence + '\n');
    }
    out.append(messages.error() + '\n');
    out.flush();
    return printed.text();
}

bool isClean(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return c == '\n' || (static_cast<unsigned char>(c) >= ' ' && c != '\x7F');
    });
}

/// @param shape the link, and how much is kept
void readCapture(unsigned shape, std::string_view records) {
    constexpr char LINKS[] = {1, 101, 113, 0};
    std::string file("\xd4\xc3\xb2\xa1\x02\0\x04\0\0\0\0\0\0\0\0\0\0\0\x04\0\0\0\0\0", 24);
    file[20] = LINKS[shape % 4];
    file += records;
    InputOptions options;
    options.form = InputForm::Capture;
    options.resync = (shape & 4) != 0;
    options.capture.connections = 1 + shape / 8 % 4;
    options.capture.held = shape / 32 % 2;
    const std::string report = captureReport(file, options, whole());
    KORVAN_REQUIRE(report == captureReport(file, options, randomPieces(shape)));
    KORVAN_REQUIRE(isClean(report));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return 0;
    }
    constexpr InputForm FORMS[] = {InputForm::Detect, InputForm::Raw, InputForm::Hex, InputForm::Base64};
    if ((data[0] & 0x10) != 0) {
        readCapture(data[1], {reinterpret_cast<const char*>(data) + 2, size - 2});
        return 0;
    }
    const InputForm form = FORMS[data[0] % 4];
    const unsigned what = data[0] / 4 % 4;
    const unsigned seed = data[1];
    const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);
    if (what == 3) {
        readHostileJson(text);
        return 0;
    }
    KORVAN_REQUIRE(bytesOf(text, form, whole()) == bytesOf(text, form, randomPieces(seed)));
    const Print print = static_cast<Print>(what);
    const Report report = reportOf(text, form, whole(), print);
    KORVAN_REQUIRE(report.printed == reportOf(text, form, randomPieces(seed), print).printed);
    KORVAN_REQUIRE(isClean(report.printed));
    if (print == Print::Json) {
        KORVAN_REQUIRE(fromJson(report.printed) == report.messages);
    }
    return 0;
}
