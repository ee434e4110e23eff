// The tool's own readers: raw bytes and every form of hexadecimal text, then message after message of them.
//
// Holds: bytes, messages and complaints do not depend on how the input is cut into reads; the messages lie
// one behind the other; and what is printed of them, hostile text included, is lines of which no control
// character is part. (Byte 0: the form. Byte 1: the cuts.)
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "tests/tool/Sources.h"
#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/InputForm.h"
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
    const std::unique_ptr<ByteSource> opened = openForm(source, form);
    Beginning beginning(*opened);
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

/// All that the tool tells of the messages.
std::string reportOf(std::string_view text, InputForm form, CutSource::NextSize cuts, bool summary) {
    CutSource source(text, std::move(cuts));
    const std::unique_ptr<ByteSource> opened = openForm(source, form);
    Beginning beginning(*opened);
    MessageStream stream(beginning);
    Printed printed;
    {
        Output out(printed.fd());
        TextPrinter lines(out, 1, '\n');
        SummaryPrinter totals(out);
        Printer& printer = summary ? static_cast<Printer&>(totals) : lines;
        uint64_t end = 0, messages = 0;
        MessageStream::Next next;
        while ((next = stream.next()) == MessageStream::Next::Message) {
            KORVAN_REQUIRE(stream.offset() == end && stream.number() == ++messages);
            end += stream.bytes().size();
            printer.message(stream);
        }
        if (next == MessageStream::Next::Failure) {
            KORVAN_REQUIRE(stream.offset() == end);
            printer.failure(stream);
            out.append(failureText(stream, {}));
        }
        printer.end();
        out.flush();
        KORVAN_REQUIRE(out.error() == 0);
    }
    return printed.text();
}

bool isClean(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return c == '\n' || (static_cast<unsigned char>(c) >= ' ' && c != '\x7F');
    });
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return 0;
    }
    constexpr InputForm FORMS[] = {InputForm::Detect, InputForm::Raw, InputForm::Hex};
    const InputForm form = FORMS[data[0] % 3];
    const unsigned seed = data[1];
    const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);

    KORVAN_REQUIRE(bytesOf(text, form, whole()) == bytesOf(text, form, randomPieces(seed)));
    const bool summary = data[0] / 3 % 2 != 0;
    const std::string report = reportOf(text, form, whole(), summary);
    KORVAN_REQUIRE(report == reportOf(text, form, randomPieces(seed), summary));
    KORVAN_REQUIRE(isClean(report));
    return 0;
}
