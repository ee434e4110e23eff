#include "tools/relaymsg/Printer.h"

#include "tools/relaymsg/FieldText.h"
#include "tools/relaymsg/JsonText.h"

#include <cstdio>

namespace relaymsg {

template <class Render>
void TextPrinter::text(Render render) {
    escape_.write(buffer_.fit(render), out_);
    if (separator_ != '\n') {
        out_.append('\n');
    }
}

void TextPrinter::message(const MessageReader& stream) {
    printSummary(stream, out_);
    text([&](Korvan::BixWriteBuf& buffer) { return stream.message().visualize(buffer, indent_, '\0'); });
}

void TextPrinter::failure(MessageReader& stream) {
    printFailedSummary(stream, out_);
    text([&](Korvan::BixWriteBuf& buffer) { return printFields(stream.bytes(), buffer, indent_, '\0'); });
}

void SummaryPrinter::message(const MessageReader& stream) {
    printSummary(stream, out_);
    Total& total = totals_[stream.message().stHead.bCmdId];
    ++total.count;
    total.bytes += stream.bytes().size();
}

void SummaryPrinter::failure(MessageReader& stream) {
    printFailedSummary(stream, out_);
}

void SummaryPrinter::end() {
    constexpr int NAME = static_cast<int>(CommandName::WIDTH);
    char line[128];
    const auto print = [&](std::string_view name, const char* format, auto count, auto bytes) {
        const int nameLength = static_cast<int>(name.size());
        const int length =
            std::snprintf(line, sizeof(line), format, NAME, nameLength, name.data(), count, bytes);
        out_.append({line, static_cast<size_t>(length)});
    };
    constexpr const char* ROW = "%-*.*s %12llu %16llu\n";
    unsigned long long count = 0;
    unsigned long long bytes = 0;
    out_.append('\n');
    print("command", "%-*.*s %12s %16s\n", "messages", "bytes");
    for (size_t id = 0; id < totals_.size(); ++id) {
        const Total& total = totals_[id];
        if (total.count != 0) {
            print(CommandName(static_cast<uint8_t>(id)), ROW, static_cast<unsigned long long>(total.count),
                  static_cast<unsigned long long>(total.bytes));
        }
        count += total.count;
        bytes += total.bytes;
    }
    print("total", ROW, count, bytes);
}

void JsonPrinter::message(const MessageReader& stream) {
    line_.clear();
    appendJson(line_, stream);
    line_ += '\n';
    out_.append(line_);
}

} // namespace relaymsg
