/// @file
/// How decoded messages are shown. Each way of showing them is one Printer.
#ifndef KORVAN_TOOLS_RELAYMSG_PRINTER_H
#define KORVAN_TOOLS_RELAYMSG_PRINTER_H

#include "tools/relaymsg/MessageReader.h"
#include "tools/relaymsg/Output.h"
#include "tools/relaymsg/SummaryLine.h"
#include "tools/relaymsg/TextBuffer.h"
#include "tools/relaymsg/TextEscape.h"

#include <array>
#include <cstdint>
#include <string>

namespace relaymsg {

class Printer {
public:
    virtual ~Printer() = default;

    /// The message that @p stream stands at.
    virtual void message(const MessageReader& stream) = 0;

    /// What could be read of the message at which @p stream failed.
    virtual void failure(MessageReader& stream) = 0;

    /// Bytes are missing where @p stream stands.
    virtual void gap(const MessageReader&) {}

    /// There is nothing more to show.
    virtual void end() {}
};

/// A summary line for each message, and below it its fields.
class TextPrinter : public Printer {
public:
    /// @param indent the level of the fields, two blanks each; negative for none at any depth
    /// @param separator the character behind each field
    TextPrinter(Output& out, int indent, char separator)
        : out_(out), escape_(separator), indent_(indent), separator_(separator) {}

    void message(const MessageReader& stream) override;
    void failure(MessageReader& stream) override;
    void gap(const MessageReader& stream) override { printGap(stream, out_); }

private:
    template <class Render>
    void text(Render render);

    Output& out_;
    TextBuffer buffer_;
    TextEscape escape_;
    int indent_;
    char separator_;
};

/// A summary line for each message, and at the end the totals of each command.
class SummaryPrinter : public Printer {
public:
    explicit SummaryPrinter(Output& out) : out_(out) {}

    void message(const MessageReader& stream) override;
    void failure(MessageReader& stream) override;
    void gap(const MessageReader& stream) override { printGap(stream, out_); }
    void end() override;

private:
    struct Total {
        uint64_t count = 0;
        uint64_t bytes = 0;
    };

    Output& out_;
    std::array<Total, 256> totals_; // by command id
};

/// A JSON object for each message, one a line. A message that failed is none.
class JsonPrinter : public Printer {
public:
    explicit JsonPrinter(Output& out) : out_(out) {}

    void message(const MessageReader& stream) override;
    void failure(MessageReader&) override {}

private:
    Output& out_;
    std::string line_;
};

} // namespace relaymsg

#endif
