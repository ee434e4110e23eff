/// @file
/// What `scan` must find, told by `CSRelayMsg::unpack` alone.
#ifndef KORVAN_TESTS_STREAM_ORACLE_H
#define KORVAN_TESTS_STREAM_ORACLE_H

#include "protocol/Stream.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace oracle {

using namespace cs_relay_msg;

struct Verdict {
    ScanStatus status;
    int32_t code; ///< Malformed
    size_t size;  ///< Complete, UnknownCommand: bytes of the message
    size_t need;  ///< Need: bytes that complete the shortest message that begins so
};

inline bool operator==(const Verdict& a, const Verdict& b) {
    return a.status == b.status && a.code == b.code && a.size == b.size && a.need == b.need;
}

/// Looks for bytes behind a prefix that make it a message.
///
/// Zeros come first, since they make every count and length as small as it can be. Where `unpack` then fails
/// at bytes that may still be chosen, the smallest choice that it takes is made there; where it fails at
/// bytes of the prefix, no choice helps.
class Oracle {
public:
    Verdict operator()(const char* prefix, size_t size) {
        if (bytes_.size() < size + CSRelayMsg::maxWireSize) {
            bytes_.resize(size + CSRelayMsg::maxWireSize);
        }
        std::copy_n(prefix, size, bytes_.begin());
        given_ = touched_ = size;
        const Verdict verdict = judge();
        std::fill_n(bytes_.begin(), touched_, '\0');
        return verdict;
    }

private:
    Verdict judge() {
        size_t used = 0;
        if (message_->unpack(bytes_.data(), given_, &used) == BIX_OK) {
            return {known() ? ScanStatus::Complete : ScanStatus::UnknownCommand, 0, used, 0};
        }
        for (;;) {
            const int32_t code = message_->unpack(bytes_.data(), bytes_.size(), &used);
            if (code == BIX_OK) {
                return {ScanStatus::Need, 0, 0, used - given_};
            }
            const bool mended = code == BIX_ERR_VERSION_OUT_OF_RANGE ? choose(8, 1)
                                : code == BIX_ERR_STRING_EMPTY       ? choose(used - 1, 1)
                                : code == BIX_ERR_STRING_MALFORMED   ? chooseText(used)
                                                                     : false;
            if (!mended) {
                // Nothing but a length can ask for more than this; with that many bytes it is too long.
                return {ScanStatus::Malformed,
                        code == BIX_ERR_READ_UNDERFLOW ? BIX_ERR_STRING_TOO_LONG : code, 0, 0};
            }
        }
    }

    bool known() const { return commandName(message_->stHead.bCmdId) != nullptr; }

    /// Sets a byte that is not given. Returns whether that changed anything.
    bool choose(size_t at, char byte) {
        if (at < given_ || bytes_[at] == byte) {
            return false;
        }
        bytes_[at] = byte;
        touched_ = std::max(touched_, at + 1);
        return true;
    }

    /// Makes what is not given of the text that ends at @p end a text.
    bool chooseText(size_t end) {
        size_t begin = 0;
        (void)message_->unpack(bytes_.data(), end - 1, &begin); // stops behind the length
        bool changed = false;
        for (size_t i = begin; i + 1 < end; ++i) {
            changed = choose(i, 'a') || changed;
        }
        return choose(end - 1, '\0') || changed;
    }

    std::unique_ptr<CSRelayMsg> message_ = std::make_unique<CSRelayMsg>();
    std::vector<char> bytes_ = std::vector<char>(2 * CSRelayMsg::maxWireSize);
    size_t given_ = 0;
    size_t touched_ = 0;
};

/// Whether a scan of these bytes, cut into pieces of 0 to 8 by @p seed, finds at each cut what the oracle
/// says, and a malformed message at the earliest byte. For tests and fuzzers: knows no test framework.
inline bool scanAgrees(Oracle& oracle, const char* bytes, size_t size, uint32_t seed) {
    ScanState state;
    ScanResult result = scan(state, nullptr, 0);
    while (result.status == ScanStatus::Need && result.size < size) {
        seed = seed * 1103515245u + 12345u;
        const size_t piece = std::min<size_t>(size - result.size, (seed >> 16) % 9);
        result = scan(state, bytes + result.size, piece);
        const bool ended =
            result.status == ScanStatus::Complete || result.status == ScanStatus::UnknownCommand;
        const Verdict found{result.status, result.code, ended ? result.size : 0, result.need};
        if (!(found == oracle(bytes, result.size)) || result.size + result.need > CSRelayMsg::maxWireSize) {
            return false;
        }
    }
    return result.status != ScanStatus::Malformed || oracle(bytes, result.offset).status == ScanStatus::Need;
}

} // namespace oracle

#endif
