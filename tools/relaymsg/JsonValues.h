/// @file
/// JSON values one behind the other, as a rule one a line, in constant memory.
#ifndef KORVAN_TOOLS_RELAYMSG_JSON_VALUES_H
#define KORVAN_TOOLS_RELAYMSG_JSON_VALUES_H

#include "tools/relaymsg/ByteSource.h"

#include <cstdint>
#include <string>

namespace relaymsg {

class JsonValues {
public:
    /// Reads from @p source, which must outlive this.
    explicit JsonValues(ByteSource& source) : source_(source) {}

    /// Finds the text of the next value; false if there is none. A value that breaks off or is longer than
    /// that of any message is cut there, so it is no JSON.
    bool next();

    const std::string& text() const { return text_; }

    /// The number of the value, from 1, and of the line on which it begins.
    /// @{
    uint64_t number() const { return number_; }
    uint64_t line() const { return line_; }
    /// @}

    static constexpr size_t LONGEST = 4 * 1024 * 1024; ///< bytes; four times the largest message's

private:
    bool peek();
    void take();

    ByteSource& source_;
    std::string chunk_; // read, from at_ on not looked at
    size_t at_ = 0;
    std::string text_;
    uint64_t number_ = 0;
    uint64_t line_ = 1;
    uint64_t lineNow_ = 1;
};

} // namespace relaymsg

#endif
