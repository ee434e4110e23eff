#include "tools/relaymsg/JsonValues.h"

namespace relaymsg {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Tells where an object or array ends.
class Nesting {
public:
    /// Takes the next character; true if it closes the value.
    bool closes(char c) {
        if (inString_) {
            inString_ = escaped_ || c != '"';
            escaped_ = !escaped_ && c == '\\';
            return false;
        }
        inString_ = c == '"';
        depth_ += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        return depth_ <= 0;
    }

private:
    int64_t depth_ = 0;
    bool inString_ = false;
    bool escaped_ = false;
};

} // namespace

/// Whether there is a character to take; reads on if necessary.
bool JsonValues::peek() {
    if (at_ == chunk_.size()) {
        chunk_.resize(64 * 1024);
        chunk_.resize(source_.read(chunk_.data(), chunk_.size()));
        at_ = 0;
    }
    return !chunk_.empty();
}

void JsonValues::take() {
    lineNow_ += chunk_[at_] == '\n' ? 1U : 0U;
    ++at_;
}

bool JsonValues::next() {
    while (peek() && isBlank(chunk_[at_])) {
        take();
    }
    if (!peek()) {
        return false;
    }
    text_.clear();
    ++number_;
    line_ = lineNow_;
    const bool nested = chunk_[at_] == '{' || chunk_[at_] == '[';
    Nesting nesting;
    while (peek() && text_.size() < LONGEST && (nested || chunk_[at_] != '\n')) {
        const char c = chunk_[at_];
        text_ += c;
        take();
        if (nested && nesting.closes(c)) {
            break;
        }
    }
    return true;
}

} // namespace relaymsg
