/// @file
/// Base64 text as bytes.
#ifndef KORVAN_TOOLS_RELAYMSG_BASE64_TEXT_H
#define KORVAN_TOOLS_RELAYMSG_BASE64_TEXT_H

#include "tools/relaymsg/ByteSource.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace relaymsg {

/// Takes the common alphabet and that for addresses, line ends anywhere, and several texts one behind the
/// other, each padded to its end.
class Base64Text : public ByteSource {
public:
    /// Reads the text from @p text, which must outlive this.
    explicit Base64Text(ByteSource& text) : text_(text) {}

    size_t read(char* to, size_t size) override;
    const std::string& error() const override;

    /// Whether all of @p start can be the start of such a text.
    static bool canBegin(std::string_view start);

private:
    bool fill();
    void accept(char c);
    void refuse(const std::string& reason);

    ByteSource& text_;
    std::string ahead_; // text not looked at yet begins at next_
    size_t next_ = 0;
    uint64_t line_ = 1;
    uint64_t column_ = 0;

    uint32_t bits_ = 0;  // of the group of four under way
    int characters_ = 0; // taken of it
    int padding_ = 0;    // of these

    std::string bytes_; // of the last group, from given_ on not handed out
    size_t given_ = 0;
};

} // namespace relaymsg

#endif
