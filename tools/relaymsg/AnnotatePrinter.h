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
    /// @param hideRest whether bytes that could not be decoded are only counted
    AnnotatePrinter(Output& out, bool hideRest) : out_(out), hideRest_(hideRest) {}

    void message(const MessageReader& stream) override;
    void failure(MessageReader& stream) override;
    void gap(const MessageReader& stream) override { printGap(stream, out_); }

private:
    Output& out_;
    bool hideRest_;
};

} // namespace relaymsg

#endif
