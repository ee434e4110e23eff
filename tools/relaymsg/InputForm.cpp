#include "tools/relaymsg/InputForm.h"

#include "tools/relaymsg/Base64Text.h"
#include "tools/relaymsg/HexText.h"
#include "tools/relaymsg/PacketFile.h"

#include <algorithm>
#include <cstring>

namespace relaymsg {

namespace {

/// The bytes of a source, the first of which were looked at before.
class Peeked : public ByteSource {
public:
    explicit Peeked(ByteSource& source) : source_(source) {}

    /// The first bytes, @p size of them unless there are fewer. Only before the first read.
    std::string_view peek(size_t size) {
        while (start_.size() < size) {
            char bytes[TEXT_DETECTION_SIZE];
            const size_t count = source_.read(bytes, std::min(sizeof(bytes), size - start_.size()));
            if (count == 0) {
                break;
            }
            start_.append(bytes, count);
        }
        return start_;
    }

    size_t read(char* to, size_t size) override {
        if (taken_ == start_.size()) {
            return source_.read(to, size);
        }
        const size_t count = std::min(size, start_.size() - taken_);
        std::memcpy(to, start_.data() + taken_, count);
        taken_ += count;
        return count;
    }

    const std::string& error() const override { return source_.error(); }

private:
    ByteSource& source_;
    std::string start_;
    size_t taken_ = 0;
};

/// Text, and the bytes that it stands for.
template <class Text>
class TextInput : public ByteSource {
public:
    explicit TextInput(std::unique_ptr<ByteSource> text) : text_(std::move(text)), bytes_(*text_) {}

    size_t read(char* to, size_t size) override { return bytes_.read(to, size); }
    const std::string& error() const override { return bytes_.error(); }

private:
    std::unique_ptr<ByteSource> text_;
    Text bytes_;
};

} // namespace

std::optional<InputForm> parseForm(std::string_view name) {
    if (name == "raw") {
        return InputForm::Raw;
    }
    if (name == "hex") {
        return InputForm::Hex;
    }
    if (name == "base64") {
        return InputForm::Base64;
    }
    if (name == "pcap") {
        return InputForm::Capture;
    }
    return std::nullopt;
}

InputForm detectForm(std::string_view start) {
    return isCapture(start)              ? InputForm::Capture
           : HexText::canBegin(start)    ? InputForm::Hex
           : Base64Text::canBegin(start) ? InputForm::Base64
                                         : InputForm::Raw;
}

OpenedForm openForm(ByteSource& input, InputForm form) {
    auto peeked = std::make_unique<Peeked>(input);
    if (form == InputForm::Detect) {
        form = detectForm(peeked->peek(DETECTION_SIZE));
        if (form == InputForm::Hex || form == InputForm::Base64) {
            form = detectForm(peeked->peek(TEXT_DETECTION_SIZE));
        }
    }
    if (form == InputForm::Hex) {
        return {form, std::make_unique<TextInput<HexText>>(std::move(peeked))};
    }
    if (form == InputForm::Base64) {
        return {form, std::make_unique<TextInput<Base64Text>>(std::move(peeked))};
    }
    return {form, std::move(peeked)};
}

} // namespace relaymsg
