#include "tools/relaymsg/AnnotatePrinter.h"

#include "tools/relaymsg/FieldWalk.h"
#include "tools/relaymsg/HexDigits.h"
#include "tools/relaymsg/JsonText.h"
#include "tools/relaymsg/SummaryLine.h"

#include <algorithm>

namespace relaymsg {

using cs_relay_msg::schema::Kind;

namespace {

constexpr size_t PER_LINE = 8;
constexpr size_t OFFSET_WIDTH = 8;
constexpr size_t UNDECODED = 64; // bytes that are shown where decoding ended

/// Prints rows of a message that begins at @p base in the stream.
class Rows : public FieldVisitor {
public:
    Rows(Output& out, std::string_view message, uint64_t base) : out_(out), message_(message), base_(base) {}

    void leaf(const Leaf& leaf) override {
        path_.clear();
        leaf.path.appendTo(path_);
        value_.clear();
        size_t start = leaf.offset;
        const size_t end = leaf.offset + leaf.size;
        if (leaf.field.kind == Kind::String) {
            const size_t text = end - leaf.bytes.size() - 1;
            row(start, text, path_ + " (length)", std::to_string(end - text));
            start = text;
        }
        end_ = end;
        if (leaf.field.kind == Kind::Bytes) {
            value_ = '(' + std::to_string(leaf.size) + " bytes)";
        } else {
            appendJsonValue(value_, leaf);
        }
        row(start, end, path_, value_);
    }

    /// The bytes from @p start to @p end in as many lines as it takes; what they are stands in the first.
    void row(size_t start, size_t end, const std::string& what, const std::string& value) {
        for (size_t at = start; at < end; at += PER_LINE) {
            const size_t count = std::min(PER_LINE, end - at);
            line_ = "  " + std::to_string(base_ + at);
            pad(2 + OFFSET_WIDTH);
            line_ += "  ";
            const size_t column = line_.size();
            for (size_t i = at; i < at + count; ++i) {
                appendHex(line_, message_.substr(i, 1));
                line_ += ' ';
            }
            if (at == start) {
                pad(column + 3 * PER_LINE);
                line_.append(1, ' ').append(what).append("  ").append(value);
            }
            line_.resize(line_.find_last_not_of(' ') + 1);
            line_ += '\n';
            out_.append(line_);
        }
    }

    size_t end() const { return end_; }

private:
    void pad(size_t column) { line_.resize(std::max(line_.size(), column), ' '); }

    Output& out_;
    std::string_view message_;
    uint64_t base_;
    size_t end_ = 0;
    std::string line_;
    std::string path_;
    std::string value_;
};

} // namespace

void AnnotatePrinter::message(const MessageReader& stream) {
    printSummary(stream, out_);
    Rows rows(out_, stream.bytes(), stream.offset());
    walkMessage(stream.bytes(), rows);
}

void AnnotatePrinter::failure(MessageReader& stream) {
    printFailedSummary(stream, out_);
    const std::string_view all = stream.availableBytes();
    Rows rows(out_, all, stream.offset());
    walkMessage(all, rows);
    const size_t shown = hideRest_ ? rows.end() : std::min(all.size(), rows.end() + UNDECODED);
    rows.row(rows.end(), shown, "(not decoded)", "");
    const uint64_t left = all.size() - shown + stream.countRest();
    if (left != 0) {
        out_.append("  and " + std::to_string(left) + " bytes more, not decoded\n");
    }
}

} // namespace relaymsg
