#include "tools/relaymsg/Diff.h"

#include "tools/relaymsg/FieldDiff.h"
#include "tools/relaymsg/Reading.h"
#include "tools/relaymsg/SummaryLine.h"

#include <deque>
#include <functional>
#include <optional>

namespace relaymsg {

namespace {

/// A message that was read and not yet compared.
struct Kept {
    explicit Kept(const MessageReader& stream)
        : number(stream.number()), offset(stream.offset()), command(stream.message().stHead.bCmdId),
          user(stream.message().stHead.dwUserID), bytes(stream.bytes()),
          hash(std::hash<std::string_view>()(bytes)) {}

    uint64_t number;
    uint64_t offset;
    uint8_t command;
    uint32_t user;
    std::string bytes;
    size_t hash;
};

bool same(const Kept& a, const Kept& b) {
    return a.hash == b.hash && a.bytes == b.bytes;
}

/// Whether one could be a changed form of the other.
bool alike(const Kept& a, const Kept& b) {
    return a.command == b.command && a.user == b.user;
}

/// One of the streams, and the messages ahead in it.
class Side {
public:
    Side(Job& job, FileSource& file, const DiffOptions& options) : reading_(job, file, options.input) {}

    /// Looks as far ahead as @p count messages.
    void fill(size_t count) {
        while (!over_ && ahead.size() < count) {
            over_ = !reading_.nextMessage();
            if (!over_) {
                ahead.emplace_back(reading_.messages());
                reading_.noteUnknown();
            }
        }
    }

    /// Whether the stream was one of messages, to its end; says so if not.
    bool good() {
        const ExitStatus status = reading_.end();
        return status == ExitStatus::Ok || status == ExitStatus::UnknownCommand;
    }

    std::deque<Kept> ahead;

private:
    Reading reading_;
    bool over_ = false;
};

class Comparison {
public:
    explicit Comparison(const DiffOptions& options)
        : window_(options.window), job_(options.a), fileB_(options.b), a_(job_, job_.file(), options),
          b_(job_, fileB_, options), redact_(options.redact) {}

    DiffStatus run() {
        while (job_.out().error() == 0) {
            a_.fill(1);
            b_.fill(1);
            if (a_.ahead.empty() && b_.ahead.empty()) {
                break;
            }
            if (!a_.ahead.empty() && !b_.ahead.empty() && same(a_.ahead.front(), b_.ahead.front())) {
                a_.ahead.pop_front();
                b_.ahead.pop_front();
            } else {
                differ();
            }
        }
        const bool goodA = a_.good();
        const bool goodB = b_.good();
        const bool written = job_.end(ExitStatus::Ok) == ExitStatus::Ok;
        return !goodA || !goodB || !written ? DiffStatus::Trouble
               : different_                 ? DiffStatus::Different
                                            : DiffStatus::Same;
    }

private:
    /// Where the streams meet again: so many messages of each come before.
    struct Meeting {
        size_t a;
        size_t b;
    };

    Meeting meet() const {
        const size_t inA = a_.ahead.size();
        const size_t inB = b_.ahead.size();
        for (size_t sum = 1; sum + 1 < inA + inB; ++sum) {
            for (size_t a = sum < inB ? 0 : sum - inB + 1; a <= sum && a < inA; ++a) {
                if (same(a_.ahead[a], b_.ahead[sum - a])) {
                    return {a, sum - a};
                }
            }
        }
        return {std::min<size_t>(inA, 1), std::min<size_t>(inB, 1)}; // not within sight: go on with the next
    }

    void differ() {
        different_ = true;
        a_.fill(window_);
        b_.fill(window_);
        Meeting left = meet();
        while (left.a != 0) {
            const Kept& message = a_.ahead.front();
            size_t at = 0;
            while (at < left.b && !alike(message, b_.ahead[at])) {
                ++at;
            }
            if (at == left.b) {
                printOne("-", message);
            } else {
                for (; at != 0; --at, --left.b) {
                    printOne("+", b_.ahead.front());
                    b_.ahead.pop_front();
                }
                printPair(message, b_.ahead.front());
                b_.ahead.pop_front();
                --left.b;
            }
            a_.ahead.pop_front();
            --left.a;
        }
        for (; left.b != 0; --left.b) {
            printOne("+", b_.ahead.front());
            b_.ahead.pop_front();
        }
    }

    static std::string where(const Kept& message) {
        return '#' + std::to_string(message.number) + " @" + std::to_string(message.offset);
    }

    static std::string what(const Kept& message) {
        return std::string(std::string_view(CommandName(message.command))) + "  user " +
               std::to_string(message.user) + '\n';
    }

    void printOne(const char* sign, const Kept& message) {
        job_.out().append(std::string(sign) + ' ' + where(message) + "  " + what(message));
    }

    void printPair(const Kept& a, const Kept& b) {
        job_.out().append("! " + where(a) + "  " + where(b) + "  " + what(a));
        job_.out().append(fieldDifferences(a.bytes, b.bytes, redact_));
    }

    size_t window_;
    Job job_;
    FileSource fileB_;
    Side a_;
    Side b_;
    bool redact_;
    bool different_ = false;
};

} // namespace

DiffStatus diff(const DiffOptions& options) {
    return Comparison(options).run();
}

} // namespace relaymsg
