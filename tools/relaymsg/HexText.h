/// @file
/// Hexadecimal text as bytes: plain digits with blanks and line ends, and what `xxd`, `xxd -p`, `hexdump -C`
/// and `od -Ax -tx1` print.
///
/// The first line tells which of these it is. Offsets are no data, but must agree with the data; so must a
/// `*`, which stands for as many repetitions of the line before it as the next offset tells.
#ifndef KORVAN_TOOLS_RELAYMSG_HEX_TEXT_H
#define KORVAN_TOOLS_RELAYMSG_HEX_TEXT_H

#include "tools/relaymsg/ByteSource.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace relaymsg {

class HexText : public ByteSource {
public:
    /// Reads the text from @p text, which must outlive this.
    explicit HexText(ByteSource& text) : text_(text) {}

    size_t read(char* to, size_t size) override;
    const std::string& error() const override;

    /// Whether all of @p start can be the start of such a text.
    static bool canBegin(std::string_view start);

private:
    enum class Form { Unknown, Plain, Xxd, Hexdump, Od };
    enum class State { LineStart, Offset, AfterOffset, Data, Gutter, Star };

    void fill();
    bool recognise();
    bool accept(char c);
    bool acceptOffset(char c);
    bool acceptData(char c);
    bool endGroup();
    bool endOffset();
    bool endLine();
    void finish();
    bool refuse(uint64_t column, const std::string& reason);
    bool refuseCharacter(char c);
    void emit(uint8_t byte);

    ByteSource& text_;
    std::string ahead_; // text not looked at yet begins at next_
    size_t next_ = 0;
    bool over_ = false;     // there is no more text
    bool finished_ = false; // and its end was taken into account

    Form form_ = Form::Unknown;
    State state_ = State::LineStart;
    uint64_t line_ = 1;
    uint64_t column_ = 1;
    uint64_t groupColumn_ = 0;
    uint64_t groupDigits_ = 0;
    uint32_t blanks_ = 0;
    uint8_t digits_ = 0; // the last two digits

    uint64_t offset_ = 0;    // the number at the start of the line
    uint64_t expected_ = 0;  // what it must be
    bool anyOffset_ = false; // one has been read
    bool starred_ = false;   // the line before was `*`
    uint64_t starLine_ = 0;
    std::string lineBytes_;    // of the last line with data
    uint64_t repeatsLeft_ = 0; // bytes still to be made from it
    size_t repeatAt_ = 0;

    char* to_ = nullptr; // the target of the read under way
    size_t free_ = 0;
};

} // namespace relaymsg

#endif
