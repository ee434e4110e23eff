#include "tools/relaymsg/Statistics.h"

#include "tools/relaymsg/Origin.h"
#include "tools/relaymsg/SummaryLine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace relaymsg {

namespace {

/// Hundredths of a percent.
uint64_t share(uint64_t part, uint64_t whole) {
    return whole == 0 ? 0
                      : static_cast<uint64_t>(
                            std::llround(static_cast<double>(part) * 10000 / static_cast<double>(whole)));
}

template <class... Values>
std::string format(const char* words, Values... values) {
    char text[256];
    const int length = std::snprintf(text, sizeof(text), words, values...);
    return {text, static_cast<size_t>(length)};
}

constexpr int64_t SECOND = 1000000000;

unsigned long long wide(uint64_t value) {
    return value;
}

/// Thousandths as a number, rounded down to hundredths.
std::string rateText(uint64_t rate) {
    return format("%llu.%02llu", wide(rate / 1000), wide(rate % 1000 / 10));
}

std::string nameOf(size_t id) {
    return std::string(std::string_view(CommandName(static_cast<uint8_t>(id))));
}

std::string userRow(const std::string& user, const Total& total) {
    return format("%-24s %12llu %16llu\n", user.c_str(), wide(total.messages), wide(total.bytes));
}

std::string totalJson(const Total& total) {
    return "\"messages\":" + std::to_string(total.messages) + ",\"bytes\":" + std::to_string(total.bytes);
}

} // namespace

void Statistics::addTime(int64_t nanoseconds) {
    const int64_t second = nanoseconds / SECOND;
    times_.first = times_.count == 0 ? nanoseconds : std::min(times_.first, nanoseconds);
    times_.last = times_.count == 0 ? nanoseconds : std::max(times_.last, nanoseconds);
    times_.inSecond = times_.count == 0 || second != times_.second ? 1 : times_.inSecond + 1;
    times_.mostInSecond = std::max(times_.mostInSecond, times_.inSecond);
    times_.second = second;
    ++times_.count;
}

uint64_t Statistics::Times::rate(uint64_t messages) const {
    const double seconds = (static_cast<double>(last) - static_cast<double>(first)) / SECOND;
    return last == first ? 0 : static_cast<uint64_t>(static_cast<double>(messages) * 1000 / seconds);
}

Total& Statistics::totalOf(uint32_t user) {
    const auto known = users_.find(user);
    return known != users_.end() ? known->second : users_.size() < mostUsers_ ? users_[user] : others_;
}

Total Statistics::all() const {
    Total all;
    for (const Command& command : commands_) {
        const Total total = command.total();
        all.messages += total.messages;
        all.bytes += total.bytes;
    }
    return all;
}

std::string Statistics::table() const {
    const Total all = this->all();
    const auto rate = [&](const Total& total) {
        return times_.count == 0 ? "\n" : format(" %10s\n", rateText(times_.rate(total.messages)).c_str());
    };
    std::string text = format("%-24s %12s %16s %8s %8s %8s %8s %8s", "command", "messages", "bytes", "share",
                              "min", "median", "p99", "max");
    text += times_.count == 0 ? "\n" : format(" %10s\n", "a second");
    for (size_t id = 0; id < commands_.size(); ++id) {
        const Total total = commands_[id].total();
        const Histogram& sizes = commands_[id].sizes;
        if (total.messages != 0) {
            const uint64_t part = share(total.bytes, all.bytes);
            text += format("%-24s %12llu %16llu %4llu.%02llu%% %8u %8u %8u %8u", nameOf(id).c_str(),
                           wide(total.messages), wide(total.bytes), wide(part / 100), wide(part % 100),
                           sizes.least(), sizes.percentile(50), sizes.percentile(99), sizes.most());
            text += rate(total);
        }
    }
    text += userRow("total", all);
    if (times_.count != 0) {
        text += "\nfrom " + timeText(times_.first) + " to " + timeText(times_.last) + ": " +
                rateText(times_.rate(all.messages)) + " messages a second, at most " +
                std::to_string(times_.mostInSecond) + " in one\n";
    }
    text += format("\n%-24s %12s %16s\n", "user", "messages", "bytes");
    const std::map<uint32_t, Total> users(users_.begin(), users_.end());
    for (const auto& [user, total] : users) {
        text += userRow(std::to_string(user), total);
    }
    if (others_.messages != 0) {
        text += userRow("others", others_);
        text += "Only the first " + std::to_string(mostUsers_) +
                " users are told apart; --users N changes that.\n";
    }
    return text;
}

std::string Statistics::json() const {
    const Total all = this->all();
    std::string text = '{' + totalJson(all) + ",\"commands\":[";
    const char* comma = "";
    for (size_t id = 0; id < commands_.size(); ++id) {
        const Total total = commands_[id].total();
        const Histogram& sizes = commands_[id].sizes;
        if (total.messages != 0) {
            const uint64_t part = share(total.bytes, all.bytes);
            text +=
                comma + format("{\"id\":%zu,\"name\":\"%s\",", id, nameOf(id).c_str()) + totalJson(total) +
                format(",\"share\":%llu.%02llu,\"min\":%u,\"median\":%u,\"p99\":%u,\"max\":%u",
                       wide(part / 100), wide(part % 100), sizes.least(), sizes.percentile(50),
                       sizes.percentile(99), sizes.most()) +
                (times_.count == 0 ? "}" : ",\"perSecond\":" + rateText(times_.rate(total.messages)) + '}');
            comma = ",";
        }
    }
    text += "],\"users\":[";
    comma = "";
    const std::map<uint32_t, Total> users(users_.begin(), users_.end());
    for (const auto& [user, total] : users) {
        text += comma + format("{\"id\":%u,", user) + totalJson(total) + '}';
        comma = ",";
    }
    text += "],\"otherUsers\":{" + totalJson(others_) + '}';
    if (times_.count != 0) {
        text += ",\"first\":" + secondsText(times_.first) + ",\"last\":" + secondsText(times_.last) +
                ",\"perSecond\":" + rateText(times_.rate(all.messages)) +
                ",\"mostInASecond\":" + std::to_string(times_.mostInSecond);
    }
    return text + "}\n";
}

} // namespace relaymsg
