/// Cuts a TCP stream into messages.
#pragma once

#include "protocol/Stream.h"

#include <string>
#include <string_view>

namespace lockstep {

/// One for each connection. Holds no more than the bytes of one unfinished message.
class Framer {
public:
    /// No message of this peer is longer than @p limit: one that would be ends the stream before it takes the
    /// memory.
    explicit Framer(size_t limit) : limit_(limit) {}

    /// Takes what the socket gave and calls `handle(std::string_view message)` for each message that is now
    /// whole;
    /// @p handle returns whether to go on.
    ///
    /// False means that the stream is to be closed, since nothing in it tells where another message begins:
    /// `problem()` says why. It is empty if it was @p handle that wanted the end.
    template <class Handle>
    bool take(std::string_view bytes, Handle handle) {
        while (!bytes.empty()) {
            const cs_relay_msg::ScanResult found = cs_relay_msg::scan(state_, bytes.data(), bytes.size());
            message_.append(bytes.substr(0, found.used));
            bytes.remove_prefix(found.used);
            if (found.status == cs_relay_msg::ScanStatus::Complete) {
                const bool goOn = handle(std::string_view(message_));
                message_.clear(); // its memory stays for the next one
                if (!goOn) {
                    return false;
                }
            } else if (found.status != cs_relay_msg::ScanStatus::Need || found.size + found.need > limit_) {
                problem_ = describe(found);
                return false;
            }
        }
        return true;
    }

    const std::string& problem() const { return problem_; }

private:
    std::string describe(const cs_relay_msg::ScanResult& found) const;

    size_t limit_;
    cs_relay_msg::ScanState state_;
    std::string message_;
    std::string problem_;
};

} // namespace lockstep
