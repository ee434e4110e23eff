#include "tests/tool/Program.h"

#include <gtest/gtest.h>

namespace {

const std::string HEART_BEAT_TEXT =
    "#1      @0              16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n"
    "  [stHead]\n"
    "    [dwUserID]: 1001\n"
    "    [dwRoomID]: 7\n"
    "    [bVersion]: 0x03\n"
    "    [wAsyncID]: 258\n"
    "    [bCmdId]: 0xb8\n"
    "  [stBody]\n"
    "    [stCSRelayMsgHeartBeatReq]\n"
    "      [dwUnused]: 0\n";

/// Expects success without a word on standard error.
std::string good(const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
}

TEST(Program, decodesAFile) {
    const ScratchFile file(wire::heartBeat());
    EXPECT_EQ(good(runTool({"decode", file.path()})), HEART_BEAT_TEXT);
}

TEST(Program, decodesStandardInput) {
    EXPECT_EQ(good(runTool({"decode"}, wire::heartBeat())), HEART_BEAT_TEXT);
    EXPECT_EQ(good(runTool({"decode", "-"}, wire::heartBeat())), HEART_BEAT_TEXT);
}

TEST(Program, decodesHexadecimalText) {
    EXPECT_EQ(good(runTool({"decode"}, "000003E9 00000007 03 0102 B8 00000000\n")), HEART_BEAT_TEXT);
    EXPECT_EQ(good(runTool({"decode", "--format", "hex"}, "000003E9 00000007 03 0102 B8 00000000\n")),
              HEART_BEAT_TEXT);
    EXPECT_EQ(
        good(runTool({"decode"}, "00000000: 0000 03e9 0000 0007 0301 02b8 0000 0000  ................\n")),
        HEART_BEAT_TEXT);
}

TEST(Program, takesRawBytesForWhatTheyAreSaid) {
    EXPECT_EQ(good(runTool({"decode", "--format", "raw"}, wire::heartBeat())), HEART_BEAT_TEXT);
    EXPECT_EQ(runTool({"decode", "--format", "raw"}, "000003E9 00000007 03 0102 B8 00000000\n").status, 3);
}

TEST(Program, summarises) {
    EXPECT_EQ(
        good(runTool({"decode", "--summary"}, wire::heartBeat() + wire::login("abc") + wire::heartBeat())),
        "#1      @0              16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n"
        "#2      @16             24 B  v3  stRelayLoginReq           user 1001  room 7  async 258\n"
        "#3      @40             16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n"
        "\n"
        "command                      messages            bytes\n"
        "stRelayLoginReq                     1               24\n"
        "stCSRelayMsgHeartBeatReq            2               32\n"
        "total                               3               56\n");
}

TEST(Program, keepsTheWordsOfALineApartWhateverTheirLength) {
    const std::string largest =
        wire::big(0xffffffff, 4) + wire::big(0xffffffff, 4) + wire::largest().substr(8);
    EXPECT_EQ(good(runTool({"decode", "--summary"}, largest)).substr(0, 100),
              "#1      @0          516558 B  v3  stRelayLockStep           user 4294967295  room 4294967295  "
              "async ");
}

TEST(Program, indents) {
    const std::string input = wire::heartBeat();
    EXPECT_NE(good(runTool({"decode", "--indent", "0"}, input)).find("\n[stHead]\n  [dwUserID]: 1001\n"),
              std::string::npos);
    EXPECT_NE(good(runTool({"decode", "--indent", "2"}, input)).find("\n    [stHead]\n      [dwUserID]"),
              std::string::npos);
    EXPECT_NE(good(runTool({"decode", "--indent", "-1"}, input)).find("\n[stHead]\n[dwUserID]: 1001\n"),
              std::string::npos);
}

TEST(Program, separates) {
    const std::string input = wire::heartBeat() + wire::heartBeat();
    const std::string fields = "[stHead];[dwUserID]: 1001;[dwRoomID]: 7;[bVersion]: 0x03;[wAsyncID]: 258;"
                               "[bCmdId]: 0xb8;[stBody];[stCSRelayMsgHeartBeatReq];[dwUnused]: 0;\n";
    const std::string first = HEART_BEAT_TEXT.substr(0, HEART_BEAT_TEXT.find('\n') + 1);
    const std::string out = good(runTool({"decode", "--indent", "-1", "--separator", ";"}, input));
    EXPECT_EQ(out.substr(0, first.size() + fields.size() + 3), first + fields + "#2 ");
    EXPECT_NE(good(runTool({"decode", "--separator", "\\t"}, input)).find("\t    [dwRoomID]: 7\t"),
              std::string::npos);
    EXPECT_NE(
        good(runTool({"decode", "--separator", "\\0"}, input)).find(std::string("1001\0    [dwRoom", 16)),
        std::string::npos);
}

TEST(Program, showsHostileTextEscaped) {
    const std::string text = "\x1b[2J\n#9      @0\\\xff";
    for (const char* separator : {"\\n", ";", "\\0"}) {
        const std::string out = good(runTool({"decode", "--separator", separator}, wire::login(text)));
        EXPECT_NE(out.find("      [szSigBuf]: \\x1b[2J\\n#9      @0\\\\\\xff"), std::string::npos);
        EXPECT_EQ(out.find("\n#9"), std::string::npos);
        EXPECT_EQ(out.find('\x1b'), std::string::npos);
    }
}

TEST(Program, printsTheLargestMessage) {
    const std::string out = good(runTool({"decode"}, wire::largest()));
    EXPECT_NE(out.find("[astRelayData][4]"), std::string::npos);
    EXPECT_NE(out.find("[astRelayData][99]"), std::string::npos);
}

TEST(Program, tellsItsVersion) {
    EXPECT_EQ(good(runTool({"--version"})), "relaymsg " RELAYMSG_VERSION "\n");
}

TEST(Program, helps) {
    const std::string tool = good(runTool({"--help"}));
    EXPECT_NE(tool.find("decode"), std::string::npos);
    EXPECT_NE(tool.find("Example:\n  relaymsg decode session.bin\n"), std::string::npos);
    const std::string decode = good(runTool({"decode", "--help"}));
    for (const char* word :
         {"--format", "--summary", "--indent", "--separator", "Examples:", "Exit status:\n  0  "}) {
        EXPECT_NE(decode.find(word), std::string::npos) << word;
    }
}

TEST(Program, showsInItsHelpALineThatItPrints) {
    const std::string help = good(runTool({"decode", "--help"}));
    const std::string summary = good(runTool({"decode", "--summary", CAPTURES "/session.bin"}));
    const size_t start = help.find("#2 ");
    ASSERT_NE(start, std::string::npos);
    const std::string line = help.substr(start, help.find('\n', start) + 1 - start);
    EXPECT_NE(summary.find(line), std::string::npos) << line;
}

TEST(Program, printsAMessageOfALivePipeBeforeTheNextOne) {
    // The writer sends the second message only once the first one has been printed.
    const ScratchFile first(wire::heartBeat());
    const ScratchFile out;
    const Outcome outcome =
        shell("{ cat " + first.path() + "; for i in $(seq 500); do [ -s " + out.path() + " ] && { cat " +
              first.path() + "; exit; }; sleep 0.01; done; } | relaymsg decode --summary > " + out.path());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(out.content().find("\n#2 "), std::string::npos);
}

TEST(Program, isQuietWhenNobodyReadsOn) {
    std::string input;
    for (int i = 0; i < 20000; ++i) {
        input += wire::heartBeat();
    }
    const ScratchFile file(input);
    const Outcome outcome = shell("{ relaymsg decode " + file.path() + "; echo status $? >&2; } | head -n 1");
    EXPECT_EQ(outcome.out, HEART_BEAT_TEXT.substr(0, HEART_BEAT_TEXT.find('\n') + 1));
    EXPECT_EQ(outcome.err, "status 0\n");
}

/// Whether a sanitizer runs, which needs more address space than there is.
constexpr bool sanitized() {
#if defined(__SANITIZE_ADDRESS__)
    return true;
#elif defined(__has_feature)
    return __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) ||
           __has_feature(thread_sanitizer);
#else
    return false;
#endif
}

TEST(Program, decodesMoreThanItsMemoryHolds) {
    if (sanitized()) {
        GTEST_SKIP() << "a sanitizer has no use for a limit on memory";
    }
    std::string input;
    for (int i = 0; i < 20000; ++i) {
        input += wire::heartBeat();
    }
    const ScratchFile file(input);
    const Outcome outcome = shell("ulimit -v 60000; for i in $(seq 250); do cat " + file.path() +
                                  "; done | relaymsg decode --summary | tail -n 1");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "total                         5000000         80000000\n");
}

} // namespace
