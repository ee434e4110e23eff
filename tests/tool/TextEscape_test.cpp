#include "tools/relaymsg/TextEscape.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace {

using namespace relaymsg;

/// What @p lines, with the NUL at the end of each, become.
std::string written(char separator, const std::string& lines) {
    std::FILE* const file = std::tmpfile();
    Output out(::fileno(file));
    TextEscape(separator).write(lines, out);
    out.flush();
    std::string text(10 * lines.size(), '\0');
    const ssize_t size = ::pread(::fileno(file), text.data(), text.size(), 0);
    std::fclose(file);
    text.resize(static_cast<size_t>(size));
    return text;
}

TEST(TextEscape, leavesTextAlone) {
    EXPECT_EQ(escaped("plain text, 100 %"), "plain text, 100 %");
    EXPECT_EQ(escaped("Béla – ж 日本 🎲"), "Béla – ж 日本 🎲");
    EXPECT_EQ(escaped(""), "");
}

TEST(TextEscape, escapesControlCharacters) {
    EXPECT_EQ(escaped("a\nb\tc\rd"), "a\\nb\\tc\\rd");
    EXPECT_EQ(escaped("\x1b[31m\x07\x7f"), "\\x1b[31m\\x07\\x7f");
    EXPECT_EQ(escaped(std::string("\0", 1)), "\\x00");
    EXPECT_EQ(escaped("\xc2\x85\xc2\x9b"), "\\xc2\\x85\\xc2\\x9b") << "controls of the second set";
}

TEST(TextEscape, escapesTheBackslash) {
    EXPECT_EQ(escaped("a\\nb"), "a\\\\nb");
}

TEST(TextEscape, escapesWhatBreaksOrTurnsALine) {
    EXPECT_EQ(escaped("\xe2\x80\xa8\xe2\x80\xae"), "\\xe2\\x80\\xa8\\xe2\\x80\\xae"); // U+2028, U+202E
    EXPECT_EQ(escaped("\xe2\x81\xa6\xd8\x9c"), "\\xe2\\x81\\xa6\\xd8\\x9c");          // U+2066, U+061C
    EXPECT_EQ(escaped("\xe2\x80\x8f"), "\\xe2\\x80\\x8f");                            // U+200F
}

TEST(TextEscape, escapesWhatIsNoUtf8) {
    EXPECT_EQ(escaped("\xff"), "\\xff");
    EXPECT_EQ(escaped("\x80"
                      "a"),
              "\\x80a");
    EXPECT_EQ(escaped("\xc3"), "\\xc3") << "cut off";
    EXPECT_EQ(escaped("\xc3"
                      "a"),
              "\\xc3a");
    EXPECT_EQ(escaped("\xc0\xaf"), "\\xc0\\xaf") << "longer than need be";
    EXPECT_EQ(escaped("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");
    EXPECT_EQ(escaped("\xf0\x80\x80\xaf"), "\\xf0\\x80\\x80\\xaf");
    EXPECT_EQ(escaped("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "half of a pair";
    EXPECT_EQ(escaped("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "above the last character";
    EXPECT_EQ(escaped("\xe2\x82\xac\xe2\x82"), "€\\xe2\\x82");
}

TEST(TextEscape, endsLinesWithTheSeparator) {
    const std::string lines("one\ntwo\0three\0", 14);
    EXPECT_EQ(written('\n', lines), "one\\ntwo\nthree\n");
    EXPECT_EQ(written(' ', lines), "one\\ntwo three ");
    EXPECT_EQ(written('\0', lines), std::string("one\\ntwo\0three\0", 15));
}

TEST(TextEscape, escapesTheSeparatorInsideALine) {
    EXPECT_EQ(written('|', std::string("a|[b]: c\0", 9)), "a\\x7c[b]: c|");
    EXPECT_EQ(written('\t', std::string("a\tb\0", 4)), "a\\tb\t");
    EXPECT_EQ(written('\\', std::string("a\\b\0", 4)), "a\\\\b\\");
}

TEST(TextEscape, keepsWhatLinesAreMadeOf) {
    const std::string line("[szRelayBuf](2): 0x0a 0x0b\0", 27);
    for (const char separator : {' ', ':', '[', 'x', '0', '-'}) {
        EXPECT_EQ(written(separator, line), "[szRelayBuf](2): 0x0a 0x0b" + std::string(1, separator));
    }
}

TEST(TextEscape, writesNoRawControlCharacterWhateverTheByte) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text = escaped(std::string(1, static_cast<char>(byte)) + "A");
        for (const char c : text) {
            EXPECT_TRUE(c >= ' ' && c < 0x7f) << byte;
        }
    }
}

} // namespace
