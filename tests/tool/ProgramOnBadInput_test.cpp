#include "tests/tool/Program.h"

#include <gtest/gtest.h>

namespace {

using namespace cs_relay_msg;

// As --help tells them.
constexpr int USAGE = 1;
constexpr int INPUT = 2;
constexpr int DECODE = 3;
constexpr int UNKNOWN_COMMAND = 4;
constexpr int OUTPUT = 5;

const std::string FIRST =
    "#1      @0              16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n";
const std::string NOTHING_DECODED =
    "  Nothing was decoded: is this a stream of relay messages, from its start?\n";

/// Standard error after a failure with @p status, less the name of the program.
std::string complaint(const Outcome& outcome, int status) {
    EXPECT_EQ(outcome.status, status);
    const std::string start = "relaymsg: ";
    EXPECT_EQ(outcome.err.substr(0, start.size()), start);
    return outcome.err.substr(std::min(start.size(), outcome.err.size()));
}

TEST(ProgramOnBadInput, namesAFileThatIsMissing) {
    const Outcome outcome = runTool({"decode", "/nowhere/session.bin"});
    EXPECT_EQ(complaint(outcome, INPUT),
              "/nowhere/session.bin: cannot be opened: No such file or directory.\n");
    EXPECT_EQ(outcome.out, "");
}

TEST(ProgramOnBadInput, namesAFileWithAHostileName) {
    EXPECT_EQ(complaint(runTool({"decode", "/nowhere/\x1b[2J\n"}), INPUT),
              "/nowhere/\\x1b[2J\\n: cannot be opened: No such file or directory.\n");
}

TEST(ProgramOnBadInput, namesADirectory) {
    const Outcome outcome = runTool({"decode", "/"});
    EXPECT_EQ(complaint(outcome, INPUT), "/: is a directory, not a recorded stream.\n");
    EXPECT_EQ(outcome.out, "");
}

TEST(ProgramOnBadInput, namesAnEmptyInput) {
    const ScratchFile empty;
    EXPECT_EQ(complaint(runTool({"decode", empty.path()}), INPUT),
              empty.path() + ": is empty: there is no message in it.\n");
    EXPECT_EQ(complaint(runTool({"decode", "--summary"}), INPUT),
              "standard input: is empty: there is no message in it.\n");
    EXPECT_EQ(complaint(runTool({"decode"}, " \n\n"), INPUT),
              "standard input: is empty: there is no message in it.\n");
}

TEST(ProgramOnBadInput, keepsWhatStandsBeforeBadHexadecimalText) {
    const Outcome outcome = runTool({"decode", "--summary"}, "000003e9 00000007 03 0102 b8 00000000\n00 0g");
    EXPECT_EQ(complaint(outcome, INPUT), "standard input: line 2, column 5: 'g' is no hexadecimal digit.\n");
    EXPECT_EQ(outcome.out.substr(0, FIRST.size()), FIRST);
}

TEST(ProgramOnBadInput, namesTheFieldThatFails) {
    const std::string input =
        wire::heartBeat() + wire::head(cmd::stRelayLoginReq) + wire::big(0, 4) + wire::big(0, 4);
    const Outcome outcome = runTool({"decode", "--indent", "0"}, input);
    EXPECT_EQ(
        complaint(outcome, DECODE),
        "standard input: message 2 (stRelayLoginReq) at offset 16 (0x10) cannot be decoded.\n"
        "  field stBody.stRelayLoginReq.szSigBuf at offset 28 (0x1c)\n"
        "  BIX_ERR_STRING_EMPTY: A received string has length 0, which leaves no room for its terminating "
        "NUL.\n");
    EXPECT_EQ(outcome.out.substr(0, FIRST.size()), FIRST);
    EXPECT_EQ(outcome.out.substr(outcome.out.find("#2")),
              "#2      @16         failed  BIX_ERR_STRING_EMPTY at stBody.stRelayLoginReq.szSigBuf\n"
              "[stHead]\n"
              "  [dwUserID]: 1001\n"
              "  [dwRoomID]: 7\n"
              "  [bVersion]: 0x03\n"
              "  [wAsyncID]: 258\n"
              "  [bCmdId]: 0xa1\n"
              "[stBody]\n"
              "  [stRelayLoginReq]\n");
}

TEST(ProgramOnBadInput, showsNoFieldOfAnEarlierMessage) {
    const std::string input =
        wire::login("secret") + wire::head(cmd::stRelayLoginReq) + wire::big(4, 4) + "abcd";
    const Outcome outcome = runTool({"decode"}, input);
    EXPECT_EQ(outcome.status, DECODE);
    EXPECT_EQ(outcome.out.find("szSigBuf]", outcome.out.find("#2")), std::string::npos);
}

TEST(ProgramOnBadInput, namesTheElementThatFails) {
    std::string frame = wire::big(5, 4) + wire::big(8, 1);
    for (int i = 0; i < 7; ++i) {
        frame += wire::data(1);
    }
    frame += wire::big(1, 4) + wire::big(1025, 2);
    const std::string empty = wire::big(1, 4) + wire::big(0, 1) + wire::big(0, 4);
    const std::string input = wire::head(cmd::stRelayLockStep) + wire::big(3, 1) + empty + empty + frame;
    EXPECT_EQ(
        complaint(runTool({"decode"}, input), DECODE),
        "standard input: message 1 (stRelayLockStep) at offset 0 (0x0) cannot be decoded.\n"
        "  field stBody.stRelayLockStep.astRelayData[2].astRelayData[7].wRelayLen at offset 110 (0x6e)\n"
        "  BIX_ERR_COUNT_OUT_OF_RANGE: A count field is larger than the bound of the array that it sizes.\n"
        "  The count is 1025; szRelayBuf holds at most 1024.\n" +
            NOTHING_DECODED);
}

TEST(ProgramOnBadInput, tellsHowFarATruncatedMessageGoes) {
    const Outcome outcome =
        runTool({"decode", "--summary"}, wire::heartBeat() + wire::heartBeat().substr(0, 14));
    EXPECT_EQ(complaint(outcome, DECODE),
              "standard input: message 2 (stCSRelayMsgHeartBeatReq) at offset 16 (0x10) cannot be decoded.\n"
              "  field stBody.stCSRelayMsgHeartBeatReq.dwUnused at offset 28 (0x1c)\n"
              "  BIX_ERR_READ_UNDERFLOW: The input ends before the field that was being read.\n"
              "  The field ends at offset 32 (0x20), the input at offset 30 (0x1e).\n");
    EXPECT_EQ(outcome.out, FIRST + "#2      @16         failed  BIX_ERR_READ_UNDERFLOW at "
                                   "stBody.stCSRelayMsgHeartBeatReq.dwUnused\n"
                                   "\n"
                                   "command                      messages            bytes\n"
                                   "stCSRelayMsgHeartBeatReq            1               16\n"
                                   "total                               1               16\n");
}

TEST(ProgramOnBadInput, tellsAVersionThatThereIsNot) {
    EXPECT_EQ(
        complaint(runTool({"decode"}, wire::head(184, 7) + wire::big(0, 4)), DECODE),
        "standard input: message 1 at offset 0 (0x0) cannot be decoded.\n"
        "  field stHead.bVersion at offset 8 (0x8)\n"
        "  BIX_ERR_VERSION_OUT_OF_RANGE: The version byte of a received message is not one of 1, 2 or 3.\n"
        "  The version byte is 7.\n" +
            NOTHING_DECODED);
}

TEST(ProgramOnBadInput, tellsTheLengthOfAStringThatIsTooLong) {
    const std::string input =
        wire::heartBeat() + wire::head(cmd::stRelayLoginReq) + wire::big(129, 4) + std::string(129, 'x');
    EXPECT_NE(complaint(runTool({"decode"}, input), DECODE)
                  .find("  BIX_ERR_STRING_TOO_LONG: A received string is longer than its field can hold.\n"
                        "  Its length is given as 129; it holds at most 128, the NUL included.\n"),
              std::string::npos);
}

const std::string UNKNOWN_NOTE =
    "standard input: message 2 at offset 16 (0x10) has the unknown command 166.\n"
    "  The length of its body cannot be known. Decoding goes on behind its head;\n"
    "  what follows may be that body.\n";

TEST(ProgramOnBadInput, goesOnBehindAnUnknownCommand) {
    const Outcome outcome =
        runTool({"decode", "--summary"}, wire::heartBeat() + wire::head(166) + wire::heartBeat());
    EXPECT_EQ(complaint(outcome, UNKNOWN_COMMAND), UNKNOWN_NOTE);
    EXPECT_EQ(outcome.out,
              FIRST +
                  "#2      @16            12+ B  v3  unknown(166)              user 1001  room 7  async 258\n"
                  "#3      @28             16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n"
                  "\n"
                  "command                      messages            bytes\n"
                  "unknown(166)                        1               12\n"
                  "stCSRelayMsgHeartBeatReq            2               32\n"
                  "total                               3               44\n");
}

TEST(ProgramOnBadInput, stopsInTheBodyOfAnUnknownCommand) {
    const Outcome outcome = runTool({"decode"}, wire::heartBeat() + wire::head(166) + "some unknown body");
    EXPECT_EQ(
        complaint(outcome, DECODE),
        UNKNOWN_NOTE +
            "relaymsg: standard input: message 3 at offset 28 (0x1c) cannot be decoded.\n"
            "  field stHead.bVersion at offset 36 (0x24)\n"
            "  BIX_ERR_VERSION_OUT_OF_RANGE: The version byte of a received message is not one of 1, 2 or "
            "3.\n"
            "  The version byte is 110.\n"
            "  Message 2 has the unknown command 166: what begins at offset 28 (0x1c) may be its body.\n");
    EXPECT_NE(outcome.out.find("    [bCmdId]: 0xa6\n"), std::string::npos) << "the head is shown";
}

TEST(ProgramOnBadInput, saysOfManyUnknownCommandsOnce) {
    std::string input;
    for (int i = 0; i < 1000; ++i) {
        input += wire::head(200);
    }
    const Outcome outcome = runTool({"decode", "--summary"}, input);
    EXPECT_EQ(outcome.status, UNKNOWN_COMMAND);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 3);
}

TEST(ProgramOnBadInput, refusesAWrongCommandLine) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"frobnicate"},
                                               {"decode", "--frobnicate"},
                                               {"decode", "a", "b"},
                                               {"decode", "--format", "pdf"},
                                               {"decode", "--indent", "-2"},
                                               {"decode", "--indent", "101"},
                                               {"decode", "--indent", "deep"},
                                               {"decode", "--separator", ""},
                                               {"decode", "--separator", "ab"},
                                               {"decode", "--separator", "\\q"}}) {
        const Outcome outcome = runTool(arguments);
        EXPECT_NE(complaint(outcome, USAGE), "");
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(ProgramOnBadInput, saysThatTheOutputCannotBeWritten) {
    if (::access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "no /dev/full here";
    }
    const Outcome outcome = shell("relaymsg decode '" CAPTURES "/session.bin' > /dev/full");
    EXPECT_EQ(complaint(outcome, OUTPUT), "the output cannot be written: No space left on device.\n");
}

TEST(ProgramOnBadInput, printsWhatWasDecodedBeforeItComplains) {
    const ScratchFile file(wire::heartBeat() + "broken");
    const Outcome outcome = shell("relaymsg decode --summary " + file.path() + " 2>&1");
    EXPECT_EQ(outcome.status, DECODE);
    EXPECT_EQ(outcome.out.substr(0, FIRST.size()), FIRST);
    EXPECT_LT(outcome.out.find("total"), outcome.out.find("relaymsg:"));
}

} // namespace
