/// @file
/// Where bytes come from: a file, a text that is turned into bytes, a test.
#ifndef KORVAN_TOOLS_RELAYMSG_BYTE_SOURCE_H
#define KORVAN_TOOLS_RELAYMSG_BYTE_SOURCE_H

#include <cstddef>
#include <string>
#include <utility>

namespace relaymsg {

class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Puts at least one byte, and no more than @p size, to @p to and returns how many; waits for the first
    /// but not for more. 0: there are no more, for the reason that `error` gives.
    virtual size_t read(char* to, size_t size) = 0;

    /// Why the bytes ended before their time, as a sentence whose subject is their source; empty if they
    /// simply ended.
    virtual const std::string& error() const { return error_; }

protected:
    /// Ends the bytes here.
    size_t fail(std::string sentence) {
        error_ = std::move(sentence);
        return 0;
    }

private:
    std::string error_;
};

} // namespace relaymsg

#endif
