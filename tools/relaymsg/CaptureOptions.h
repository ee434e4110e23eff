/// @file
/// Which packets of a capture are wanted, and how much is kept of them.
#ifndef KORVAN_TOOLS_RELAYMSG_CAPTURE_OPTIONS_H
#define KORVAN_TOOLS_RELAYMSG_CAPTURE_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace relaymsg {

struct CaptureOptions {
    std::vector<uint16_t> ports; ///< of either side; none stands for all
    std::string filter;          ///< as libpcap understands it; empty for none
    size_t connections = 1000;   ///< TCP connections, each direction one, that are followed at a time
    size_t held = 64;            ///< MiB of TCP data that is kept for lack of what comes before or behind it

    bool wants(uint16_t port) const {
        for (const uint16_t wanted : ports) {
            if (wanted == port) {
                return true;
            }
        }
        return ports.empty();
    }
    bool choose() const { return !ports.empty() || !filter.empty(); }
};

} // namespace relaymsg

#endif
