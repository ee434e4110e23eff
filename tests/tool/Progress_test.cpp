/// @file
/// The progress bar: on a terminal only, and gone at the end.
#include "tests/tool/Program.h"
#include "tools/relaymsg/Progress.h"

#include <gtest/gtest.h>

namespace {

TEST(Progress, drawsABar) {
    EXPECT_EQ(relaymsg::progressText(0, 100 << 20, 2),
              "[                              ]   0%  0 of 100 MiB  0 MiB/s");
    EXPECT_EQ(relaymsg::progressText(50 << 20, 100 << 20, 2),
              "[###############               ]  50%  50 of 100 MiB  25 MiB/s");
    EXPECT_EQ(relaymsg::progressText(200, 100, 0),
              "[##############################] 100%  0 of 0 MiB  0 MiB/s");
}

/// A file that takes a second to be read, since the reader of the output comes late.
Outcome readSlowly(const std::string& environment, const std::string& error) {
    std::string input;
    while (input.size() < 1500000) {
        input += wire::heartBeat();
    }
    const ScratchFile file(input);
    return shell(environment + " relaymsg decode --summary " + file.path() + " 2> " + error +
                 " | { sleep 1.3; cat > /dev/null; }");
}

TEST(Progress, isShownOnATerminalAndTakenAway) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) {
        GTEST_SKIP() << "no terminal can be made here";
    }
    const std::string name = ::ptsname(terminal);
    const int kept = ::open(name.c_str(), O_RDWR | O_NOCTTY); // what was written stays while it is open
    EXPECT_EQ(readSlowly("TERM=xterm", name).status, 0);
    char text[4096];
    const ssize_t size = ::read(terminal, text, sizeof(text));
    const std::string shown(text, static_cast<size_t>(std::max<ssize_t>(size, 0)));
    EXPECT_NE(shown.find("%  1 of 1 MiB"), std::string::npos) << shown;
    EXPECT_EQ(shown.substr(shown.size() < 4 ? 0 : shown.size() - 4), "\r\x1b[K");
    EXPECT_EQ(readSlowly("TERM=dumb", name).status, 0);
    EXPECT_LE(::read(terminal, text, sizeof(text)), 0) << "a terminal that cannot draw gets nothing";
    ::close(kept);
    ::close(terminal);
}

TEST(Progress, isNeverInAFile) {
    const ScratchFile error;
    EXPECT_EQ(readSlowly("TERM=xterm", error.path()).status, 0);
    EXPECT_EQ(error.content(), "");
}

} // namespace
