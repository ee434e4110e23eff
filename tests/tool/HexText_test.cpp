#include "tools/relaymsg/HexText.h"

#include "tests/tool/Sources.h"

#include <gtest/gtest.h>

namespace {

using relaymsg::HexText;

struct Result {
    std::string bytes;
    std::string error;
};

Result decode(std::string_view text, CutSource::NextSize cuts, size_t readSize = 4096) {
    CutSource source(text, std::move(cuts));
    HexText hex(source);
    Result result;
    std::string piece(readSize, '\0');
    while (const size_t count = hex.read(piece.data(), piece.size())) {
        result.bytes.append(piece, 0, count);
    }
    result.error = hex.error();
    return result;
}

/// The bytes of @p text, which are the same however it is cut.
std::string bytes(std::string_view text, const std::string& error = "") {
    const Result result = decode(text, whole());
    EXPECT_EQ(result.error, error);
    for (unsigned seed = 0; seed < 20; ++seed) {
        const Result cut = decode(text, seed == 0 ? pieces(1) : randomPieces(seed), 1 + seed);
        EXPECT_EQ(cut.bytes, result.bytes);
        EXPECT_EQ(cut.error, error);
    }
    return result.bytes;
}

constexpr char ABC_LINES[] = "abcdefghijklmnopqrstuvw";

TEST(HexText, readsPlainDigits) {
    EXPECT_EQ(bytes("616263"), "abc");
    EXPECT_EQ(bytes("61 62\t63\n"), "abc");
    EXPECT_EQ(bytes("\n\n  6162\r\n\r\n63 6A 6b\n\n"), "abcjk");
    EXPECT_EQ(bytes("00000061 0000\n"), std::string("\0\0\0a\0\0", 6));
}

TEST(HexText, readsNothingFromNothing) {
    EXPECT_EQ(bytes(""), "");
    EXPECT_EQ(bytes(" \n\t\n"), "");
}

TEST(HexText, readsXxd) {
    EXPECT_EQ(bytes("00000000: 6162 6364 6566 6768 696a 6b6c 6d6e 6f70  abcdefghijklmnop\n"
                    "00000010: 7172 7374 7576 77                        qrstuvw\n"),
              ABC_LINES);
    EXPECT_EQ(bytes("00000000: 61 62 63 64  abcd\n00000004: 65  e\n"), "abcde") << "-c 4 -g 1";
    EXPECT_EQ(bytes("00000000: 61626364  abcd\n"), "abcd") << "-g 0";
}

TEST(HexText, takesNothingFromTheGutterOfXxd) {
    EXPECT_EQ(bytes("00000000: 6161 6162 2020 3a0a                      61 62  :.\n"), "aaab  :\n");
}

TEST(HexText, readsPlainXxd) {
    EXPECT_EQ(bytes("6162636465666768696a6b6c6d6e6f70717273747576\n77\n"), ABC_LINES);
}

TEST(HexText, readsHexdump) {
    EXPECT_EQ(bytes("00000000  61 62 63 64 65 66 67 68  69 6a 6b 6c 6d 6e 6f 70  |abcdefghijklmnop|\n"
                    "00000010  71 72 73 74 75 76 77                              |qrstuvw|\n"
                    "00000017\n"),
              ABC_LINES);
}

TEST(HexText, readsOd) {
    EXPECT_EQ(bytes("000000 61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f 70\n"
                    "000010 71 72 73 74 75 76 77\n"
                    "000017\n"),
              ABC_LINES);
    EXPECT_EQ(bytes("000000 61 62 3e  >ab><\n000003\n"), "ab>") << "-tx1z";
    EXPECT_EQ(bytes("000000 61\n000001\n"), "a");
    EXPECT_EQ(bytes("000010 61 62\n000012\n"), "ab") << "-j 16";
}

TEST(HexText, repeatsTheLineBeforeAStar) {
    const std::string expected = std::string(64, '\0') + "end";
    EXPECT_EQ(bytes("00000000  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  |................|\n"
                    "*\n"
                    "00000040  65 6e 64                                          |end|\n"
                    "00000043\n"),
              expected);
    EXPECT_EQ(bytes("000000 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n*\n000040 65 6e 64\n000043\n"),
              expected);
    EXPECT_EQ(bytes("00000000: 0000 0000 0000 0000 0000 0000 0000 0000  ................\n*\n"
                    "00000040: 656e 64                                  end\n"),
              expected);
}

TEST(HexText, repeatsUpToTheLastOffset) {
    EXPECT_EQ(bytes("000000 61 62\n*\n000008\n"), "abababab");
    EXPECT_EQ(bytes("000000 61 62\n*\n000008"), "abababab") << "without a last line end";
}

TEST(HexText, tellsThePlaceOfABadCharacter) {
    EXPECT_EQ(bytes("61 62\n63 6z", "line 2, column 5: 'z' is no hexadecimal digit."), "ab"
                                                                                       "c");
    EXPECT_EQ(bytes("61\n\x1b[31m", "line 2, column 1: '\\x1b' is no hexadecimal digit."), "a");
    EXPECT_EQ(bytes("0x61", "line 1, column 2: 'x' is no hexadecimal digit."), "");
    EXPECT_EQ(bytes("000000 61 |a|", "line 1, column 11: '|' is no hexadecimal digit."), "a");
}

TEST(HexText, refusesHalfABytePlacedAlone) {
    const std::string rest = " stands together, but each byte has two. (Text with offsets is read as xxd, "
                             "hexdump -C and od -Ax -tx1 print it.)";
    EXPECT_EQ(bytes("61 6 2", "line 1, column 4: an odd number of digits (1)" + rest), "a");
    EXPECT_EQ(bytes("61 62\n636", "line 2, column 1: an odd number of digits (3)" + rest), "abc");
    EXPECT_EQ(bytes("0000000 61 62\n0000002\n", "line 1, column 1: an odd number of digits (7)" + rest),
              std::string(3, '\0'))
        << "od with octal offsets";
}

TEST(HexText, refusesTwoBytesTogetherWhereTheyStandAlone) {
    EXPECT_EQ(bytes("000000 61 6263",
                    "line 1, column 11: 4 digits stand together, but in this form each byte "
                    "stands alone."),
              "abc");
}

TEST(HexText, refusesAnOffsetThatDoesNotFollow) {
    EXPECT_EQ(bytes("000000 61 62\n000004 63\n",
                    "line 2, column 1: the offset is 00000004, but the data before it ends at 00000002."),
              "ab");
    EXPECT_EQ(bytes("00000000: 6162  ab\n00000001: 63  c\n",
                    "line 2, column 1: the offset is 00000001, but the data before it ends at 00000002."),
              "ab");
    EXPECT_EQ(bytes("000000 61 62\n000003\n",
                    "line 2, column 1: the offset is 00000003, but the data before it ends at 00000002."),
              "ab");
    EXPECT_EQ(bytes("000000 61\n11112222333344445\n", "line 2, column 1: the offset is too large."), "a");
}

TEST(HexText, refusesAStarThatIsNotExplained) {
    EXPECT_EQ(bytes("000000 61 62\n*\n000005\n", "line 3, column 1: from 00000002 to the offset 00000005 are "
                                                 "no whole repetitions of the line before '*'."),
              "ab");
    EXPECT_EQ(bytes("000000 61 62\n*\n000002\n", "line 3, column 1: from 00000002 to the offset 00000002 are "
                                                 "no whole repetitions of the line before '*'."),
              "ab");
    EXPECT_EQ(bytes("000000 61 62\n*\n",
                    "line 2, column 1: the text ends behind '*', so how often the line before it is repeated "
                    "is not told."),
              "ab");
    EXPECT_EQ(bytes("*\n000010 61\n", "line 1, column 1: '*' is no hexadecimal digit."), "");
    EXPECT_EQ(bytes("000000 61 62\n*\n*\n000008\n", "line 3, column 1: '*' is no hexadecimal digit."), "ab");
}

TEST(HexText, refusesALineOfXxdWithoutColon) {
    EXPECT_EQ(bytes("00000000: 6162  ab\n00000002\n", "line 2, column 9: a colon must follow the offset."),
              "ab");
    EXPECT_EQ(bytes("00000000: 6162  ab\n00000002 63\n", "line 2, column 9: a colon must follow the offset."),
              "ab");
}

TEST(HexText, makesAHugeRepetitionAsItIsRead) {
    constexpr std::string_view TEXT = "000000 61 62\n*\nfffffffffffffff0\n";
    CutSource source(TEXT, whole());
    HexText hex(source);
    char piece[1000];
    size_t count = 0;
    while (count < 1000000) {
        const size_t got = hex.read(piece, sizeof(piece));
        ASSERT_GT(got, 0u);
        count += got;
    }
    EXPECT_EQ(hex.error(), "");
}

TEST(HexText, givesBytesBeforeTheRestOfTheLineHasCome) {
    CutSource source("00 00 03 e9 00 00 00 07 03 01 02 b8 00 00 00 00", pieces(40));
    HexText hex(source);
    char bytes[64];
    EXPECT_EQ(hex.read(bytes, sizeof(bytes)),
              13u); // the 13th byte's digits are the last of the 40 characters
    EXPECT_EQ(source.given(), 40u);
}

TEST(HexText, passesOnTheErrorOfItsText) {
    CutSource source("61 6", whole());
    source.endWith("cannot be read.");
    HexText hex(source);
    char bytes[8];
    EXPECT_EQ(hex.read(bytes, sizeof(bytes)), 1u);
    EXPECT_EQ(hex.read(bytes, sizeof(bytes)), 0u);
    EXPECT_EQ(hex.error(), "cannot be read.");
}

} // namespace
