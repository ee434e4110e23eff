#include "tools/relaymsg/Progress.h"

#include "tools/relaymsg/Output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace relaymsg {

namespace {

void printToTerminal(const std::string& text) {
    Output terminal(STDERR_FILENO);
    terminal.append(text);
    terminal.flush();
}

/// Whether the terminal can draw a line again.
bool knowsLines() {
    const char* const kind = std::getenv("TERM");
    return kind != nullptr && std::string_view(kind) != "dumb";
}

} // namespace

std::string progressText(uint64_t done, uint64_t total, double seconds) {
    constexpr size_t WIDTH = 30;
    constexpr double MIB = 1024 * 1024;
    const double part =
        total == 0 ? 1 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    std::string bar(static_cast<size_t>(part * WIDTH), '#');
    bar.resize(WIDTH, ' ');
    char text[128];
    const double rate = seconds > 0 ? static_cast<double>(done) / MIB / seconds : 0;
    std::snprintf(text, sizeof(text), "[%s] %3d%%  %.0f of %.0f MiB  %.0f MiB/s", bar.c_str(),
                  static_cast<int>(part * 100), static_cast<double>(done) / MIB,
                  static_cast<double>(total) / MIB, rate);
    return text;
}

Progress::Progress() : terminal_(::isatty(STDERR_FILENO) != 0 && knowsLines()) {}

void Progress::show(uint64_t done, uint64_t total) {
    if (!terminal_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now - start_ < std::chrono::seconds(1) || now - last_ < std::chrono::milliseconds(200)) {
        return;
    }
    last_ = now;
    shown_ = true;
    printToTerminal('\r' + progressText(done, total, std::chrono::duration<double>(now - start_).count()) +
                    "\x1b[K");
}

void Progress::clear() {
    if (shown_) {
        printToTerminal("\r\x1b[K");
        shown_ = false;
    }
}

} // namespace relaymsg
