/// @file
/// Messages byte by byte.
#ifndef KORVAN_TOOLS_RELAYMSG_ANNOTATE_PRINTER_H
#define KORVAN_TOOLS_RELAYMSG_ANNOTATE_PRINTER_H

#include "tools/relaymsg/Printer.h"

namespace relaymsg {

/// A summary line for each message, and below it its bytes with what they are. Of what could not be decoded,
/// the first bytes are shown and the others counted.
class AnnotatePrinter : public Printer {
public:
    /// @param input what the stream reads: after a failure, what is left of it is counted
    /// @param hideRest whether bytes that could not be decoded are only counted
    AnnotatePrinter(Output& out, ByteSource& input, bool hideRest)
        : out_(out), input_(input), hideRest_(hideRest) {}

    void message(const MessageStream& stream) override;
    void failure(const MessageStream& stream) override;

private:
    Output& out_;
    ByteSource& input_;
    bool hideRest_;
};

} // namespace relaymsg

#endif
