/// @file
/// Memory for text of a size that is not known beforehand.
#ifndef KORVAN_TOOLS_RELAYMSG_TEXT_BUFFER_H
#define KORVAN_TOOLS_RELAYMSG_TEXT_BUFFER_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <string_view>
#include <vector>

namespace relaymsg {

class TextBuffer {
public:
    /// Runs @p render, which appends to a `Korvan::BixWriteBuf&` and returns a result code, with more and
    /// more room until its text fits. Returns the text, which stays until the next call.
    template <class Render>
    std::string_view fit(Render render) {
        for (;;) {
            Korvan::BixWriteBuf buffer(room_.data(), room_.size());
            if (render(buffer) != Korvan::BIX_ERR_WRITE_OVERFLOW) {
                return {room_.data(), buffer.getUsedSize()};
            }
            room_.resize(room_.size() * 2);
        }
    }

private:
    std::vector<char> room_ = std::vector<char>(64 * 1024);
};

} // namespace relaymsg

#endif
