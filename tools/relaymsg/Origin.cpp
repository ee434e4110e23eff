#include "tools/relaymsg/Origin.h"

#include <arpa/inet.h>
#include <cstdio>
#include <ctime>

namespace relaymsg {

std::string endpointText(const Flow& flow, const Endpoint& endpoint) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(flow.v6 ? AF_INET6 : AF_INET, endpoint.address.data(), text, sizeof(text));
    const std::string address = flow.v6 ? '[' + std::string(text) + ']' : text;
    return address + ':' + std::to_string(endpoint.port);
}

std::string flowText(const Flow& flow) {
    return std::string(flow.protocol()) + ' ' + endpointText(flow, flow.from) + " > " +
           endpointText(flow, flow.to);
}

namespace {

constexpr int64_t SECOND = 1000000000;

struct Time {
    explicit Time(int64_t nanoseconds) : seconds(nanoseconds / SECOND), fraction(nanoseconds % SECOND) {
        if (fraction < 0) {
            fraction += SECOND;
            --seconds;
        }
    }
    std::string fractionText() const {
        char text[16];
        std::snprintf(text, sizeof(text), ".%06d", static_cast<int>(fraction / 1000));
        return text;
    }

    int64_t seconds;
    int64_t fraction;
};

} // namespace

std::string secondsText(int64_t nanoseconds) {
    const Time time(nanoseconds);
    return std::to_string(time.seconds) + time.fractionText();
}

std::string timeText(int64_t nanoseconds) {
    const Time time(nanoseconds);
    const auto seconds = static_cast<std::time_t>(time.seconds);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    const size_t length = std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &parts);
    return std::string(text, length) + time.fractionText() + 'Z';
}

} // namespace relaymsg
