#include "tools/relaymsg/Base64Text.h"

#include "tests/tool/Program.h"
#include "tests/tool/Sources.h"
#include "tools/relaymsg/InputForm.h"

#include <gtest/gtest.h>

namespace {

using namespace relaymsg;

/// The bytes of @p text and, behind a bar, what is wrong with it: the same however it is cut.
std::string bytes(std::string_view text) {
    std::string first;
    for (unsigned seed = 0; seed < 20; ++seed) {
        CutSource source(text, seed == 0 ? whole() : seed == 1 ? pieces(1) : randomPieces(seed));
        Base64Text base64(source);
        std::string result;
        char piece[5];
        while (const size_t count = base64.read(piece, 1 + seed % sizeof(piece))) {
            result.append(piece, count);
        }
        result += base64.error().empty() ? "" : "|" + base64.error();
        EXPECT_TRUE(seed == 0 || result == first) << result;
        first = result;
    }
    return first;
}

TEST(Base64Text, isBytes) {
    EXPECT_EQ(bytes(""), "");
    EXPECT_EQ(bytes("Zg=="), "f");
    EXPECT_EQ(bytes("Zm8="), "fo");
    EXPECT_EQ(bytes("Zm9v"), "foo");
    EXPECT_EQ(bytes("Zm9vYmFy\n"), "foobar");
    EXPECT_EQ(bytes("-_+/"), "\xfb\xff\xbf");
}

TEST(Base64Text, goesOverLinesAndSeveralTexts) {
    EXPECT_EQ(bytes("Z\nm9\r\nvYmFy\n\n"), "foobar");
    EXPECT_EQ(bytes("Zg==\nZm8=\nZm9v"), "ffofoo");
}

TEST(Base64Text, refusesWhatIsNone) {
    EXPECT_EQ(bytes("Zm9vZm9"), "foo|line 1, column 7: the text ends inside a group of four characters.");
    EXPECT_EQ(bytes("Zm9v\nZ g="), "foo|line 2, column 2: ' ' is no base64, or not at this place.");
    EXPECT_EQ(bytes("Zg=a"), "|line 1, column 4: 'a' is no base64, or not at this place.");
    EXPECT_EQ(bytes("Zg==="), "f|line 1, column 5: '=' is no base64, or not at this place.");
    EXPECT_EQ(bytes("Z==="), "|line 1, column 2: '=' is no base64, or not at this place.");
    EXPECT_EQ(bytes("Zm9v\x1b"), "foo|line 1, column 5: '\\x1b' is no base64, or not at this place.");
}

TEST(Base64Text, passesOnWhyItsTextEnded) {
    CutSource source("Zm9vZ", whole());
    source.endWith("cannot be read.");
    Base64Text base64(source);
    char piece[16];
    EXPECT_EQ(base64.read(piece, sizeof(piece)), 3u);
    EXPECT_EQ(base64.read(piece, sizeof(piece)), 0u);
    EXPECT_EQ(base64.error(), "cannot be read.");
}

TEST(Base64Text, isDetected) {
    EXPECT_EQ(detectForm("AAAD6QAAA"), InputForm::Base64);
    EXPECT_EQ(detectForm("0000000000000000"), InputForm::Hex);
    EXPECT_EQ(detectForm("hello wor"), InputForm::Raw);
    EXPECT_EQ(detectForm(""), InputForm::Hex);
    EXPECT_EQ(parseForm("base64"), InputForm::Base64);
}

TEST(Base64Text, readsAsTheBytesDo) {
    const std::string expected = runTool({"decode", CAPTURES "/session.bin"}).out;
    for (const std::string options : {"", " -w 0", " -w 7"}) {
        const Outcome outcome = shell("base64" + options + " '" CAPTURES "/session.bin' | relaymsg decode");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_TRUE(outcome.out == expected) << options;
    }
    EXPECT_EQ(runTool({"decode", "--format", "base64"}, "AAAA*").status, 2);
}

} // namespace
