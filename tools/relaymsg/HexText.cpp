#include "tools/relaymsg/HexText.h"

#include "tools/relaymsg/HexDigits.h"
#include "tools/relaymsg/TextEscape.h"

#include <algorithm>
#include <cstdio>

namespace relaymsg {

namespace {

constexpr size_t CHUNK = 64 * 1024;
constexpr size_t RECOGNISED = 32;      // characters of the first line that are enough to tell the form
constexpr size_t LONGEST_LINE = 65536; // bytes of a line that `*` can repeat

bool isDigit(char c) {
    return digitValue(c) >= 0;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

size_t countDigits(std::string_view text) {
    return static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
}

/// Whether the line goes on with bytes of two digits each, one blank apart.
bool hasPairs(std::string_view text) {
    return text.size() >= 2 && countDigits(text) == 2 && (text.size() == 2 || isBlank(text[2]));
}

std::string hex(uint64_t number) {
    char text[24];
    std::snprintf(text, sizeof(text), "%08llx", static_cast<unsigned long long>(number));
    return text;
}

} // namespace

bool HexText::canBegin(std::string_view start) {
    return std::all_of(start.begin(), start.end(),
                       [](char c) { return isDigit(c) || isBlank(c) || c == '\n' || c == ':'; });
}

const std::string& HexText::error() const {
    return text_.error().empty() ? ByteSource::error() : text_.error();
}

/// Gets more text behind that which is there.
void HexText::fill() {
    ahead_.erase(0, next_);
    next_ = 0;
    const size_t had = ahead_.size();
    ahead_.resize(had + CHUNK);
    ahead_.resize(had + text_.read(ahead_.data() + had, CHUNK));
    over_ = ahead_.size() == had;
}

/// Finds out the form, once enough of the first line is there.
bool HexText::recognise() {
    while (next_ < ahead_.size() && (isBlank(ahead_[next_]) || ahead_[next_] == '\n')) {
        const bool lineEnds = ahead_[next_] == '\n';
        line_ += lineEnds ? 1 : 0;
        column_ = lineEnds ? 1 : column_ + 1;
        ++next_;
    }
    std::string_view line = std::string_view(ahead_).substr(next_);
    const size_t end = line.find('\n');
    if (line.empty() || (end == std::string_view::npos && line.size() < RECOGNISED && !over_)) {
        return false;
    }
    line = line.substr(0, std::min(end, RECOGNISED));
    const size_t digits = countDigits(line);
    const std::string_view rest = line.substr(digits);
    if (digits > 0 && !rest.empty() && rest[0] == ':') {
        form_ = Form::Xxd;
    } else if (digits >= 8 && rest.substr(0, 2) == "  " && hasPairs(rest.substr(2))) {
        form_ = Form::Hexdump;
    } else if (digits == 6 && rest.substr(0, 1) == " " && hasPairs(rest.substr(1))) {
        form_ = Form::Od;
    } else {
        form_ = Form::Plain;
    }
    return true;
}

bool HexText::refuse(uint64_t column, const std::string& reason) {
    fail("line " + std::to_string(line_) + ", column " + std::to_string(column) + ": " + reason);
    return false;
}

bool HexText::refuseCharacter(char c) {
    return refuse(column_, "'" + escaped({&c, 1}) + "' is no hexadecimal digit.");
}

void HexText::emit(uint8_t byte) {
    *to_++ = static_cast<char>(byte);
    --free_;
    ++expected_;
    if (form_ != Form::Plain && lineBytes_.size() < LONGEST_LINE) {
        lineBytes_ += static_cast<char>(byte);
    }
}

bool HexText::endGroup() {
    const uint64_t digits = groupDigits_;
    groupDigits_ = 0;
    if (digits % 2 != 0) {
        return refuse(groupColumn_,
                      "an odd number of digits (" + std::to_string(digits) +
                          ") stands together, but each byte has two. (Text with offsets is read "
                          "as xxd, hexdump -C and od -Ax -tx1 print it.)");
    }
    if (digits > 2 && (form_ == Form::Hexdump || form_ == Form::Od)) {
        return refuse(groupColumn_, std::to_string(digits) +
                                        " digits stand together, but in this form each byte stands alone.");
    }
    return true;
}

bool HexText::acceptData(char c) {
    if (isDigit(c)) {
        if (groupDigits_++ == 0) {
            groupColumn_ = column_;
        }
        blanks_ = 0;
        digits_ = static_cast<uint8_t>(digits_ << 4 | digitValue(c));
        if (groupDigits_ % 2 == 0) {
            emit(digits_);
        }
        return true;
    }
    const bool gutter = (form_ == Form::Hexdump && c == '|') || (form_ == Form::Od && c == '>');
    if (!gutter && !isBlank(c)) {
        return refuseCharacter(c);
    }
    ++blanks_;
    if (gutter || (form_ == Form::Xxd && blanks_ == 2)) {
        state_ = State::Gutter;
    }
    return endGroup();
}

bool HexText::acceptOffset(char c) {
    if (isDigit(c)) {
        if (offset_ >> 60 != 0) {
            return refuse(1, "the offset is too large.");
        }
        offset_ = offset_ << 4 | static_cast<uint64_t>(digitValue(c));
        return true;
    }
    if (form_ == Form::Xxd ? c != ':' : !isBlank(c)) {
        return form_ == Form::Xxd && isBlank(c) ? refuse(column_, "a colon must follow the offset.")
                                                : refuseCharacter(c);
    }
    return endOffset();
}

/// Compares the offset with the data before it.
bool HexText::endOffset() {
    state_ = State::AfterOffset;
    if (!anyOffset_) {
        anyOffset_ = true;
        expected_ = offset_;
    }
    if (!starred_) {
        return offset_ == expected_ ||
               refuse(1, "the offset is " + hex(offset_) + ", but the data before it ends at " +
                             hex(expected_) + ".");
    }
    starred_ = false;
    const uint64_t skipped = offset_ - expected_;
    if (offset_ <= expected_ || skipped % lineBytes_.size() != 0) {
        return refuse(1, "from " + hex(expected_) + " to the offset " + hex(offset_) +
                             " are no whole repetitions of the line before '*'.");
    }
    repeatsLeft_ = skipped;
    repeatAt_ = 0;
    expected_ = offset_;
    return true;
}

bool HexText::endLine() {
    if (state_ == State::Offset) {
        if (form_ == Form::Xxd) {
            return refuse(column_, "a colon must follow the offset.");
        }
        if (!endOffset()) {
            return false;
        }
    } else if (!endGroup()) {
        return false;
    }
    state_ = State::LineStart;
    ++line_;
    column_ = 0;
    return true;
}

/// Takes one character of the text; at most one byte comes of it.
bool HexText::accept(char c) {
    if (c == '\n') {
        return endLine();
    }
    switch (state_) {
    case State::LineStart:
        if (form_ == Form::Plain) {
            state_ = State::Data;
            return acceptData(c);
        }
        if (c == '*' && !lineBytes_.empty() && lineBytes_.size() < LONGEST_LINE && !starred_) {
            starred_ = true;
            starLine_ = line_;
            state_ = State::Star;
            return true;
        }
        if (isBlank(c)) {
            return true;
        }
        offset_ = 0;
        state_ = State::Offset;
        return isDigit(c) ? acceptOffset(c) : refuseCharacter(c);
    case State::Offset:
        return acceptOffset(c);
    case State::AfterOffset: // any number of blanks
        if (isBlank(c)) {
            return true;
        }
        lineBytes_.clear();
        state_ = State::Data;
        return acceptData(c);
    case State::Data:
        return acceptData(c);
    case State::Star:
        return isBlank(c) || refuseCharacter(c);
    case State::Gutter:
        break;
    }
    return true;
}

/// The text is over. Its end ends the line, unless the text was cut off.
void HexText::finish() {
    finished_ = true;
    if (text_.error().empty() && endLine() && starred_) {
        line_ = starLine_;
        refuse(1, "the text ends behind '*', so how often the line before it is repeated is not told.");
    }
}

size_t HexText::read(char* to, size_t size) {
    to_ = to;
    free_ = size;
    while (free_ != 0 && ByteSource::error().empty()) {
        if (repeatsLeft_ != 0) {
            *to_++ = lineBytes_[repeatAt_++ % lineBytes_.size()];
            --free_;
            --repeatsLeft_;
        } else if (next_ < ahead_.size() && (form_ != Form::Unknown || recognise())) {
            if (accept(ahead_[next_])) {
                ++next_;
                ++column_;
            }
        } else if (over_) {
            if (finished_) {
                break;
            }
            finish();
        } else if (free_ == size) {
            fill();
        } else {
            break; // do not wait: some bytes are there
        }
    }
    return static_cast<size_t>(to_ - to);
}

} // namespace relaymsg
