#include "tools/relaymsg/SummaryLine.h"

#include <charconv>
#include <cstring>

namespace relaymsg {

namespace {

/// A line put together in place. Its parts are numbers and names of this program, so it has an end.
class Line {
public:
    void put(char c) { *at_++ = c; }
    void put(std::string_view text) {
        std::memcpy(at_, text.data(), text.size());
        at_ += text.size();
    }
    void number(uint64_t value) { at_ = std::to_chars(at_, text_ + sizeof(text_), value).ptr; }

    /// Blanks up to this column.
    void padTo(size_t column) {
        while (at_ < text_ + column) {
            put(' ');
        }
    }
    size_t column() const { return static_cast<size_t>(at_ - text_); }
    std::string_view text() const { return {text_, column()}; }

private:
    char text_[256];
    char* at_ = text_;
};

// Where the words of a line begin, as long as those before are of an ordinary size.
constexpr size_t OFFSET = 8;
constexpr size_t LENGTH = 20;

void putOffset(Line& line, uint64_t offset) {
    line.put(' ');
    line.padTo(OFFSET);
    line.put('@');
    line.number(offset);
    line.put(' ');
    line.padTo(LENGTH);
}

/// The offset, and the length, whose last digit stands in column 25 unless not @p wide.
void putPlace(Line& line, uint64_t offset, uint64_t length, bool wide = true) {
    putOffset(line, offset);
    for (uint64_t most = wide ? 99999 : 9999; most > length; most /= 10) {
        line.put(' '); // lengths of up to six digits end in one column
    }
    line.number(length);
}

void endLine(Line& line, const MessageReader& stream, Output& out) {
    out.append(line.text());
    if (const Origin* origin = stream.origin()) {
        out.append("  packet " + std::to_string(origin->packet) + "  " + timeText(origin->nanoseconds) +
                   "  " + flowText(origin->flow));
    }
    out.append(stream.guessed() ? "  guess\n" : "\n");
}

void printSkipped(const MessageReader& stream, Output& out) {
    Line line;
    line.put("skipped");
    putPlace(line, stream.offset() - stream.skipped(), stream.skipped());
    line.put(" B");
    endLine(line, stream, out);
}

} // namespace

CommandName::CommandName(uint8_t id) {
    if (const char* name = cs_relay_msg::commandName(id)) {
        name_ = name;
        return;
    }
    constexpr std::string_view OPENING = "unknown(";
    std::memcpy(unknown_, OPENING.data(), OPENING.size());
    char* const end = std::to_chars(unknown_ + OPENING.size(), std::end(unknown_), id).ptr;
    *end = ')';
    name_ = {unknown_, static_cast<size_t>(end + 1 - unknown_)};
}

void printSummary(const MessageReader& stream, Output& out) {
    if (stream.skipped() != 0) {
        printSkipped(stream, out);
    }
    const cs_relay_msg::CSRelayMsgHead& head = stream.message().stHead;
    Line line;
    line.put('#');
    line.number(stream.number());
    const bool known = stream.command() != nullptr;
    putPlace(line, stream.offset(), stream.bytes().size(), known);
    line.put(known ? " B  v" : "+ B  v");
    line.number(head.bVersion);
    line.put("  ");
    const size_t command = line.column();
    line.put(CommandName(head.bCmdId));
    line.padTo(command + CommandName::WIDTH);
    line.put("  user ");
    line.number(head.dwUserID);
    line.put("  room ");
    line.number(head.dwRoomID);
    line.put("  async ");
    line.number(head.wAsyncID);
    endLine(line, stream, out);
}

void printGap(const MessageReader& stream, Output& out) {
    Line line;
    line.put("gap");
    putPlace(line, stream.offset(), stream.missing());
    line.put(" B missing");
    endLine(line, stream, out);
}

void printFailedSummary(const MessageReader& stream, Output& out) {
    Line line;
    line.put('#');
    line.number(stream.number());
    putOffset(line, stream.offset());
    line.put("failed  ");
    line.put(Korvan::resultName(stream.stop().code));
    line.put(" at ");
    out.append(line.text());
    Line end;
    out.append(stream.stop().path);
    endLine(end, stream, out);
}

} // namespace relaymsg
