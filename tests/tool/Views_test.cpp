/// @file
/// decode --annotate, the choice of messages, and what is hidden.
#include "tests/tool/Program.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

/// The bytes of all rows, and whether each row began where the one before it ended.
std::string bytesOf(const std::string& annotated, size_t& gaps) {
    std::istringstream lines(annotated);
    std::string bytes;
    for (std::string line; std::getline(lines, line);) {
        if (line.substr(0, 2) != "  " || line.substr(0, 5) == "  and") {
            continue;
        }
        gaps += std::stoull(line) != bytes.size();
        std::istringstream pairs(line.substr(12, 24));
        for (std::string pair; pairs >> pair;) {
            bytes += static_cast<char>(std::stoul(pair, nullptr, 16));
        }
    }
    return bytes;
}

TEST(Annotate, tellsWhatEachByteIs) {
    const Outcome outcome = runTool({"decode", "--annotate"}, wire::login("abc\x1b"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "#1      @0              25 B  v3  stRelayLoginReq           user 1001  room 7  async 258\n"
              "  0         00 00 03 e9              stHead.dwUserID  1001\n"
              "  4         00 00 00 07              stHead.dwRoomID  7\n"
              "  8         03                       stHead.bVersion  3\n"
              "  9         01 02                    stHead.wAsyncID  258\n"
              "  11        a1                       stHead.bCmdId  161\n"
              "  12        00 00 00 05              stBody.stRelayLoginReq.szSigBuf (length)  5\n"
              "  16        61 62 63 1b 00           stBody.stRelayLoginReq.szSigBuf  \"abc\\u001b\"\n"
              "  21        00 00 00 00              stBody.stRelayLoginReq.dwReserve  0\n");
}

TEST(Annotate, accountsForEveryByteOfASession) {
    size_t gaps = 0;
    EXPECT_TRUE(bytesOf(runTool({"decode", "--annotate", CAPTURES "/session.bin"}).out, gaps) ==
                wire::session());
    EXPECT_EQ(gaps, 0u);
}

TEST(Annotate, accountsForWhatCannotBeDecoded) {
    const std::string login = wire::login("abc");
    const std::string whole = login + wire::head(161) + wire::big(0, 4) + std::string(20, '\x11');
    for (size_t size = login.size() + 1; size <= whole.size(); ++size) {
        const Outcome outcome = runTool({"decode", "--annotate"}, whole.substr(0, size));
        EXPECT_EQ(outcome.status, 3);
        size_t gaps = 0;
        EXPECT_EQ(bytesOf(outcome.out, gaps), whole.substr(0, size));
        EXPECT_EQ(gaps, 0u);
    }
    const std::string damaged = wire::heartBeat() + std::string(5000000, '\xff');
    const Outcome outcome = runTool({"decode", "--annotate", "--format", "raw"}, damaged);
    EXPECT_NE(outcome.out.find("(not decoded)"), std::string::npos);
    EXPECT_NE(outcome.out.find("\n  and 4999936 bytes more, not decoded\n"), std::string::npos);
}

/// The numbers of the messages that are shown with these arguments.
std::string shown(std::vector<std::string> arguments, const std::string& input) {
    arguments.insert(arguments.begin(), {"decode", "--summary"});
    std::istringstream lines(runTool(arguments, input).out);
    std::string numbers;
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        numbers += line.substr(1, line.find(' '));
    }
    return numbers;
}

TEST(Selection, choosesMessages) {
    const std::string other = wire::big(5, 4) + wire::big(6, 4) + wire::heartBeat().substr(8);
    const std::string input = wire::heartBeat() + wire::login("a") + other + wire::login("b");
    EXPECT_EQ(shown({}, input), "1 2 3 4 ");
    EXPECT_EQ(shown({"--command", "stRelayLoginReq"}, input), "2 4 ");
    EXPECT_EQ(shown({"--command", "184"}, input), "1 3 ");
    EXPECT_EQ(shown({"--command", "184", "--command", "161"}, input), "1 2 3 4 ");
    EXPECT_EQ(shown({"--command", "184", "--user", "5"}, input), "3 ");
    EXPECT_EQ(shown({"--user", "1001"}, input), "1 2 4 ");
    EXPECT_EQ(shown({"--room", "6"}, input), "3 ");
    EXPECT_EQ(shown({"--room", "8"}, input), "");
    EXPECT_EQ(shown({"--from", "3"}, input), "3 4 ");
    EXPECT_EQ(shown({"--to", "2"}, input), "1 2 ");
    EXPECT_EQ(shown({"--from", "2", "--to", "3"}, input), "2 3 ");
    EXPECT_EQ(shown({"--command", "7"}, input + wire::head(7)), "5 ");
}

TEST(Selection, readsNoFurtherThanNeeded) {
    EXPECT_EQ(runTool({"decode", "--to", "1"}, wire::heartBeat() + "damage").status, 0);
    EXPECT_EQ(runTool({"decode", "--from", "9"}, wire::heartBeat() + "damage").status, 3);
}

TEST(Selection, refusesWhatCannotBeChosen) {
    for (const char* command : {"nothing", "256", "-1", ""}) {
        EXPECT_EQ(runTool({"decode", "--command", command}).status, 1) << command;
    }
    EXPECT_EQ(runTool({"decode", "--user", "4294967296"}).status, 1);
    EXPECT_EQ(runTool({"decode", "--json", "--summary"}).status, 1);
}

TEST(Redact, hidesSignaturesInEveryView) {
    const std::string secret = "sEcReT";
    const std::string login = wire::login(secret);
    for (const std::string view : {"--text", "--json", "--annotate"}) {
        for (size_t size = 12; size <= login.size(); ++size) {
            const Outcome outcome =
                runTool({"decode", view, "--redact"}, wire::heartBeat() + login.substr(0, size));
            const std::string all = outcome.out + outcome.err;
            for (const std::string piece : {"sEc", "73 45", "734563"}) {
                EXPECT_EQ(all.find(piece), std::string::npos) << view << size;
            }
            EXPECT_EQ(all.find("******") != std::string::npos,
                      view == "--json" ? size == login.size() : size >= 23)
                << view << size << all;
        }
    }
    EXPECT_NE(runTool({"decode"}, login).out.find(secret), std::string::npos);
}

} // namespace
