/// @file
/// What the commands read: messages, in whatever form.
#ifndef KORVAN_TOOLS_RELAYMSG_INPUT_H
#define KORVAN_TOOLS_RELAYMSG_INPUT_H

#include "tools/relaymsg/CaptureOptions.h"
#include "tools/relaymsg/InputForm.h"
#include "tools/relaymsg/MessageReader.h"

namespace relaymsg {

struct InputOptions {
    InputForm form = InputForm::Detect;
    CaptureOptions capture;
    bool resync = false; ///< whether to go on behind damage, where messages seem to follow each other again
};

/// The messages of one input.
class Input {
public:
    /// Reads from @p source, which must outlive this.
    Input(ByteSource& source, const InputOptions& options);

    MessageReader& messages() { return *messages_; }

private:
    std::unique_ptr<ByteSource> bytes_;
    std::unique_ptr<MessageReader> messages_;
};

} // namespace relaymsg

#endif
