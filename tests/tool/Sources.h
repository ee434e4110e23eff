/// @file
/// Bytes for the tool's parts to read.
#ifndef KORVAN_TESTS_TOOL_SOURCES_H
#define KORVAN_TESTS_TOOL_SOURCES_H

#include "tools/relaymsg/ByteSource.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <string_view>

/// Hands out a text in pieces.
class CutSource : public relaymsg::ByteSource {
public:
    using NextSize = std::function<size_t()>; ///< bytes of the next piece, at least 1

    CutSource(std::string_view bytes, NextSize nextSize) : bytes_(bytes), nextSize_(std::move(nextSize)) {}

    size_t read(char* to, size_t size) override {
        const size_t count = std::min({size, nextSize_(), bytes_.size() - given_});
        std::memcpy(to, bytes_.data() + given_, count);
        given_ += count;
        if (count == 0 && !ending_.empty()) {
            fail(ending_);
        }
        return count;
    }

    /// Bytes handed out so far.
    size_t given() const { return given_; }

    /// Lets the bytes end with this error.
    void endWith(std::string error) { ending_ = std::move(error); }

private:
    std::string_view bytes_;
    NextSize nextSize_;
    size_t given_ = 0;
    std::string ending_;
};

inline CutSource::NextSize whole() {
    return [] { return static_cast<size_t>(-1); };
}

inline CutSource::NextSize pieces(size_t size) {
    return [=] { return size; };
}

inline CutSource::NextSize randomPieces(unsigned seed) {
    return [random = std::mt19937(seed)]() mutable {
        const size_t most = random() % 4 == 0 ? 5000 : 20;
        return 1 + random() % most;
    };
}

#endif
