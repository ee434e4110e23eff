/// @file
/// How far a long input has been read, on a terminal.
#ifndef KORVAN_TOOLS_RELAYMSG_PROGRESS_H
#define KORVAN_TOOLS_RELAYMSG_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace relaymsg {

/// The bar for @p done of @p total bytes, @p seconds after the start: one line without its end.
std::string progressText(uint64_t done, uint64_t total, double seconds);

/// Draws a bar on standard error, if that is a terminal; otherwise does nothing at all. Inputs that take less
/// than a second have none.
class Progress {
public:
    Progress();
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// So much of the input has been read.
    void show(uint64_t done, uint64_t total);

    /// Takes the bar away, so that something else can be printed.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool terminal_;
    bool shown_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
};

} // namespace relaymsg

#endif
