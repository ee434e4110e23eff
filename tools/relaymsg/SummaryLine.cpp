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

void beginLine(const MessageStream& stream, Line& line) {
    line.put('#');
    line.number(stream.number());
    line.put(' ');
    line.padTo(OFFSET);
    line.put('@');
    line.number(stream.offset());
    line.put(' ');
    line.padTo(LENGTH);
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

void printSummary(const MessageStream& stream, Output& out) {
    const cs_relay_msg::CSRelayMsgHead& head = stream.message().stHead;
    Line line;
    beginLine(stream, line);
    const bool known = stream.command() != nullptr;
    const size_t length = stream.bytes().size();
    for (size_t most = known ? 99999 : 9999; most > length && most > 9; most /= 10) {
        line.put(' '); // lengths of up to six digits end in one column
    }
    line.number(length);
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
    line.put('\n');
    out.append(line.text());
}

void printFailedSummary(const MessageStream& stream, Output& out) {
    Line line;
    beginLine(stream, line);
    line.put("failed  ");
    out.append(line.text());
    out.append(Korvan::resultName(stream.stop().code));
    out.append(" at ");
    out.append(stream.stop().path);
    out.append('\n');
}

} // namespace relaymsg
