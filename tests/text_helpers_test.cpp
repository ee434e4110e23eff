// The text-dump helpers: the shape of a line, indentation, separators, and what stays when a line does not
// fit.
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

namespace util = Korvan::BixBufUtil;
using Korvan::BixWriteBuf;
using korvan_test::Bytes;

namespace {

constexpr int32_t OVERFLOW_ = Korvan::BIX_ERR_WRITE_OVERFLOW;
using Print = std::function<int32_t(BixWriteBuf&)>;

/// What @p print appends to an empty buffer.
std::string line(const Print& print) {
    std::string memory(512, '#');
    BixWriteBuf buf(memory.data(), memory.size());
    const int32_t result = print(buf);
    EXPECT_EQ(result, 0);
    const size_t used = buf.getUsedSize();
    EXPECT_EQ(memory[used], '\0') << "a NUL stands behind the text";
    EXPECT_EQ(memory.find_first_not_of('#', used + 1), std::string::npos) << "nothing stands behind the NUL";
    return memory.substr(0, used);
}

/// Checks every room from none to one byte too much against one bounded print of @p whole.
void expectTruncatedLikeOnePrint(const Print& print, const std::string& whole) {
    for (size_t room = 0; room <= whole.size() + 2; ++room) {
        SCOPED_TRACE(room);
        std::string memory(whole.size() + 8, '#');
        std::string expected = memory;
        const size_t before = 2;
        if (room != 0) {
            const size_t kept = std::min(whole.size(), room - 1);
            expected.replace(before, kept, whole, 0, kept);
            expected[before + kept] = '\0';
        }
        BixWriteBuf buf(memory.data(), before + room);
        ASSERT_EQ(buf.reserve(before), 0);
        const bool fits = whole.size() < room;
        EXPECT_EQ(print(buf), fits ? 0 : OVERFLOW_);
        EXPECT_EQ(buf.getUsedSize(), before + (fits ? whole.size() : 0));
        EXPECT_EQ(Bytes(memory), Bytes(expected));
    }
}

} // namespace

TEST(TextHelpers, ValueLine) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[dwUserID]", "%u", 1001u); }),
              "[dwUserID]: 1001\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[bCmdId]", "0x%02x", 0xb8); }),
              "[bCmdId]: 0xb8\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[bVersion]", "0x%02x", 3); }),
              "[bVersion]: 0x03\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[iResult]", "%d", -1); }),
              "[iResult]: -1\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[iResult]", "%d", INT_MIN); }),
              "[iResult]: -2147483648\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[wAsyncID]", "%d", 65535); }),
              "[wAsyncID]: 65535\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[dw]", "%u", 4294967295u); }),
              "[dw]: 4294967295\n");
}

TEST(TextHelpers, LongUnsignedIsAlways64BitsWide) {
    EXPECT_EQ(line([](auto& b) {
                  return util::printVariable(b, 0, '\n', "[ullQuestion]", "%lu", uint64_t{UINT64_MAX});
              }),
              "[ullQuestion]: 18446744073709551615\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[ull]", "%lu", uint64_t{0}); }),
              "[ull]: 0\n");
    EXPECT_EQ(
        line([](auto& b) { return util::printVariable(b, 0, '\n', "[ull]", "%lu", uint64_t{4294967296}); }),
        "[ull]: 4294967296\n");
}

TEST(TextHelpers, AnyFormatOfOneValueIsTakenAsGiven) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 1, ';', "[x]", "<%08.3f>", 1.5); }),
              "  [x]: <0001.500>;");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, ';', "[x]", "%s%%", "50"); }), "[x]: 50%;");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, ';', "[x]", "plain", 0); }), "[x]: plain;");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, ';', "[x]", "", 0); }), "[x]: ;");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, ';', "[x]", "%llx", 0xfedcba9876543210); }),
              "[x]: fedcba9876543210;");
}

#ifndef _WIN32 // where the formatter refuses nothing
TEST(TextHelpers, FormatThatTheFormatterRefusesWritesNothing) {
    char memory[32] = "#";
    BixWriteBuf buf(memory, sizeof(memory));
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[x]", "%lc", static_cast<wint_t>(0x10ffff)), OVERFLOW_);
    EXPECT_EQ(buf.getUsedSize(), 0u);
}
#endif

TEST(TextHelpers, LabelIsTakenAsGiven) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "%s%n 100%", "%d", 1); }),
              "%s%n 100%: 1\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "", true); }), "\n");
}

TEST(TextHelpers, HeaderLine) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[stHead]", true); }), "[stHead]\n");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 2, '\n', "[stHead]", true); }),
              "    [stHead]\n");
}

TEST(TextHelpers, ElementHeaderLineShowsTheIndex) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 0, '\n', "[astRelayData]", 0u, true); }),
              "[astRelayData][0]\n");
    EXPECT_EQ(
        line([](auto& b) { return util::printVariable(b, 1, '\n', "[astRelayData]", 4294967295u, true); }),
        "  [astRelayData][4294967295]\n");
}

TEST(TextHelpers, HeadersWithTheFlagFalseLeaveTheSeparatorOut) {
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 1, '\n', "[stHead]", false); }), "  [stHead]");
    EXPECT_EQ(line([](auto& b) { return util::printVariable(b, 1, '\n', "[ast]", 7u, false); }),
              "  [ast][7]");
}

TEST(TextHelpers, StringLineCarriesTheTextByteForByte) {
    EXPECT_EQ(line([](auto& b) { return util::printString(b, 0, '\n', "[szSigBuf]", "text"); }),
              "[szSigBuf]: text\n");
    EXPECT_EQ(line([](auto& b) { return util::printString(b, 0, '\n', "[sz]", ""); }), "[sz]: \n");
    EXPECT_EQ(line([](auto& b) { return util::printString(b, 0, '\n', "[sz]", "100%s %n\x01\xff\n"); }),
              "[sz]: 100%s %n\x01\xff\n\n");
}

TEST(TextHelpers, ArrayOpeningHasTheCountAndNoSeparator) {
    EXPECT_EQ(line([](auto& b) { return util::printArray(b, 1, '\n', "[szRelayBuf]", 3); }),
              "  [szRelayBuf](3):");
    EXPECT_EQ(line([](auto& b) { return util::printArray(b, 0, '\n', "[sz]", 0); }), "[sz](0):");
    EXPECT_EQ(line([](auto& b) { return util::printArray(b, 0, '\n', "[sz]", INT64_MAX); }),
              "[sz](9223372036854775807):");
    EXPECT_EQ(line([](auto& b) { return util::printArray(b, 0, '\n', "[sz]", INT64_MIN); }),
              "[sz](-9223372036854775808):");
}

TEST(TextHelpers, ByteArrayStandsOnOneLineClosedByTheSeparator) {
    const uint8_t bytes[] = {0x01, 0xAB, 0xFF};
    EXPECT_EQ(line([&](auto& b) {
                  int32_t result = util::printArray(b, 0, '\n', "[szData]", 3);
                  for (const uint8_t byte : bytes) {
                      result |= b.textize(" 0x%02x", byte);
                  }
                  return result | b.writeCharWithNull('\n');
              }),
              "[szData](3): 0x01 0xab 0xff\n");
}

TEST(TextHelpers, EachLevelIsTwoBlanks) {
    for (const int indent : {0, 1, 2, 3, 10}) {
        const std::string blanks(static_cast<size_t>(indent) * 2, ' ');
        EXPECT_EQ(line([&](auto& b) { return util::printString(b, indent, '\n', "[a]", "b"); }),
                  blanks + "[a]: b\n");
    }
}

TEST(TextHelpers, NegativeIndentIsNone) {
    for (const int indent : {-1, -2, -1000, INT_MIN}) {
        SCOPED_TRACE(indent);
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", "%d", 1); }),
                  "[a]: 1\n");
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", true); }), "[a]\n");
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", 1u, true); }),
                  "[a][1]\n");
        EXPECT_EQ(line([&](auto& b) { return util::printString(b, indent, '\n', "[a]", "b"); }), "[a]: b\n");
        EXPECT_EQ(line([&](auto& b) { return util::printArray(b, indent, '\n', "[a]", 1); }), "[a](1):");
    }
}

TEST(TextHelpers, IndentWiderThanTheBufferLeavesBlanks) {
    for (const int indent : {20, 1 << 20, 1 << 30, INT_MAX / 2 + 1, INT_MAX}) {
        SCOPED_TRACE(indent);
        const std::string expected = std::string(15, ' ') + std::string("\0###", 4);
        for (const Print& print : {
                 Print([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", "%d", 1); }),
                 Print([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", true); }),
                 Print([&](auto& b) { return util::printVariable(b, indent, '\n', "[a]", 1u, true); }),
                 Print([&](auto& b) { return util::printString(b, indent, '\n', "[a]", "b"); }),
                 Print([&](auto& b) { return util::printArray(b, indent, '\n', "[a]", 1); }),
             }) {
            std::string memory(19, '#');
            BixWriteBuf buf(memory.data(), 16);
            EXPECT_EQ(print(buf), OVERFLOW_);
            EXPECT_EQ(buf.getUsedSize(), 0u);
            EXPECT_EQ(Bytes(memory), Bytes(expected));
        }
    }
}

TEST(TextHelpers, SeparatorIsAnyCharacterAndEmittedAsItIs) {
    for (const char sep : {'\0', '%', ' ', ';', '\n', static_cast<char>(0xff)}) {
        SCOPED_TRACE(static_cast<int>(sep));
        const std::string end(1, sep);
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, 0, sep, "[a]", "%d", 1); }),
                  "[a]: 1" + end);
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, 0, sep, "[a]", "%lu", uint64_t{1}); }),
                  "[a]: 1" + end);
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, 0, sep, "[a]", true); }), "[a]" + end);
        EXPECT_EQ(line([&](auto& b) { return util::printVariable(b, 0, sep, "[a]", 2u, true); }),
                  "[a][2]" + end);
        EXPECT_EQ(line([&](auto& b) { return util::printString(b, 0, sep, "[a]", "b"); }), "[a]: b" + end);
        EXPECT_EQ(line([&](auto& b) { return util::printArray(b, 0, sep, "[a]", 1); }), "[a](1):");
    }
}

TEST(TextHelpers, LinesFollowEachOtherAndReplaceTheNul) {
    EXPECT_EQ(line([](auto& b) {
                  const int32_t first = util::printVariable(b, 0, ' ', "[a]", "%d", 1);
                  return first | util::printString(b, 0, ' ', "[b]", "c");
              }),
              "[a]: 1 [b]: c ");
}

TEST(TextHelpersTruncated, ValueLine) {
    expectTruncatedLikeOnePrint(
        [](auto& b) { return util::printVariable(b, 2, '\n', "[dwUserID]", "%u", 4294967295u); },
        "    [dwUserID]: 4294967295\n");
    expectTruncatedLikeOnePrint(
        [](auto& b) { return util::printVariable(b, 1, '%', "[bCmdId]", "0x%02x", 0xb8); },
        "  [bCmdId]: 0xb8%");
    expectTruncatedLikeOnePrint(
        [](auto& b) { return util::printVariable(b, -1, '\0', "[iResult]", "%d", -12); },
        std::string("[iResult]: -12\0", 15));
}

TEST(TextHelpersTruncated, LongUnsignedLine) {
    expectTruncatedLikeOnePrint(
        [](auto& b) { return util::printVariable(b, 0, '\n', "[ull]", "%lu", uint64_t{UINT64_MAX}); },
        "[ull]: 18446744073709551615\n");
}

TEST(TextHelpersTruncated, LineOfAnUnknownFormat) {
    expectTruncatedLikeOnePrint(
        [](auto& b) { return util::printVariable(b, 1, '\n', "[x]", "<%07.2f>", 3.25); },
        "  [x]: <0003.25>\n");
}

TEST(TextHelpersTruncated, HeaderLines) {
    expectTruncatedLikeOnePrint([](auto& b) { return util::printVariable(b, 3, '\n', "[stBody]", true); },
                                "      [stBody]\n");
    expectTruncatedLikeOnePrint([](auto& b) { return util::printVariable(b, 3, '\n', "[stBody]", false); },
                                "      [stBody]");
    expectTruncatedLikeOnePrint([](auto& b) { return util::printVariable(b, 1, '\n', "[ast]", 123u, true); },
                                "  [ast][123]\n");
    expectTruncatedLikeOnePrint([](auto& b) { return util::printVariable(b, 1, '\n', "[ast]", 123u, false); },
                                "  [ast][123]");
}

TEST(TextHelpersTruncated, StringLine) {
    expectTruncatedLikeOnePrint([](auto& b) { return util::printString(b, 1, '\n', "[sz]", "some text"); },
                                "  [sz]: some text\n");
}

TEST(TextHelpersTruncated, ArrayOpening) {
    expectTruncatedLikeOnePrint([](auto& b) { return util::printArray(b, 1, '\n', "[szData]", 1024); },
                                "  [szData](1024):");
}

TEST(TextHelpers, NullBufferHasNoRoom) {
    BixWriteBuf buf(nullptr, 100);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", "%d", 1), OVERFLOW_);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", "%lu", uint64_t{1}), OVERFLOW_);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", true), OVERFLOW_);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "", false), OVERFLOW_) << "even an empty text has a NUL";
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", 0u, true), OVERFLOW_);
    EXPECT_EQ(util::printString(buf, 0, '\n', "[a]", "b"), OVERFLOW_);
    EXPECT_EQ(util::printArray(buf, 0, '\n', "[a]", 1), OVERFLOW_);
    EXPECT_EQ(buf.getUsedSize(), 0u);
}
