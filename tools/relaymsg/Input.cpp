#include "tools/relaymsg/Input.h"

#include "tools/relaymsg/CaptureStream.h"
#include "tools/relaymsg/MessageStream.h"

namespace relaymsg {

namespace {

/// No bytes, for a reason.
class Refusal : public ByteSource {
public:
    explicit Refusal(const char* sentence) { fail(sentence); }
    size_t read(char*, size_t) override { return 0; }
};

} // namespace

Input::Input(ByteSource& source, const InputOptions& options) {
    OpenedForm opened = openForm(source, options.form);
    bytes_ = std::move(opened.bytes);
    if (opened.form == InputForm::Capture) {
        messages_ = std::make_unique<CaptureStream>(*bytes_, options.capture, options.resync);
        return;
    }
    if (options.capture.choose() && bytes_->error().empty()) {
        bytes_ = std::make_unique<Refusal>("is no capture: it has no packets for --port or --filter.");
    }
    messages_ = std::make_unique<MessageStream>(*bytes_, options.resync);
}

} // namespace relaymsg
