#include "tools/relaymsg/InputForm.h"

#include "tests/tool/Sources.h"
#include "tests/tool/Wire.h"
#include "tools/relaymsg/Separator.h"

#include <gtest/gtest.h>

namespace {

using namespace relaymsg;

std::string read(std::string_view text, InputForm form, CutSource::NextSize cuts) {
    CutSource source(text, std::move(cuts));
    const auto input = openForm(source, form);
    std::string bytes;
    char piece[7];
    while (const size_t count = input.bytes->read(piece, sizeof(piece))) {
        bytes.append(piece, count);
    }
    return bytes;
}

TEST(InputForm, isRawWhereTheVersionByteIsNoText) {
    for (uint8_t version = 1; version <= 3; ++version) {
        EXPECT_EQ(detectForm(std::string(8, '0') + wire::big(version, 1)), InputForm::Raw);
    }
    EXPECT_EQ(detectForm(wire::heartBeat().substr(0, DETECTION_SIZE)), InputForm::Raw);
}

TEST(InputForm, isHexWhereAllIsText) {
    EXPECT_EQ(detectForm("000003e90"), InputForm::Hex);
    EXPECT_EQ(detectForm("00000000:"), InputForm::Hex);
    EXPECT_EQ(detectForm("00000000 "), InputForm::Hex);
    EXPECT_EQ(detectForm("\r\n00 00 0"), InputForm::Hex);
    EXPECT_EQ(detectForm("00"), InputForm::Hex);
}

TEST(InputForm, isRawWhereItIsOtherText) {
    EXPECT_EQ(detectForm("hello, yo"), InputForm::Raw);
}

TEST(InputForm, losesNoByteToDetection) {
    for (const auto& cuts : {whole(), pieces(1), pieces(4), randomPieces(1)}) {
        EXPECT_EQ(read(wire::session(), InputForm::Detect, cuts), wire::session());
        EXPECT_EQ(read("61 62 63 64 65 66", InputForm::Detect, cuts), "abcdef");
        EXPECT_EQ(read("61", InputForm::Detect, cuts), "a");
        EXPECT_EQ(read("", InputForm::Detect, cuts), "");
    }
}

TEST(InputForm, canBeForced) {
    EXPECT_EQ(read("61 62 63 64 65 66", InputForm::Raw, whole()), "61 62 63 64 65 66");
    EXPECT_EQ(read("61 62 then text", InputForm::Hex, whole()), "ab");
}

TEST(InputForm, hasNames) {
    EXPECT_EQ(parseForm("raw"), InputForm::Raw);
    EXPECT_EQ(parseForm("hex"), InputForm::Hex);
    EXPECT_EQ(parseForm("Hex"), std::nullopt);
    EXPECT_EQ(parseForm(""), std::nullopt);
}

TEST(Separator, isOneCharacterOrAnEscape) {
    EXPECT_EQ(parseSeparator(" "), ' ');
    EXPECT_EQ(parseSeparator("\n"), '\n');
    EXPECT_EQ(parseSeparator("\\"), '\\');
    EXPECT_EQ(parseSeparator("\\n"), '\n');
    EXPECT_EQ(parseSeparator("\\t"), '\t');
    EXPECT_EQ(parseSeparator("\\r"), '\r');
    EXPECT_EQ(parseSeparator("\\0"), '\0');
    EXPECT_EQ(parseSeparator("\\\\"), '\\');
    EXPECT_EQ(parseSeparator("\\x1f"), '\x1f');
}

TEST(Separator, isNothingElse) {
    for (const char* text : {"", "ab", "\\q", "\\x1", "\\x1g", "\\x80", "\\x+1", "\xc3\xa9", "\xff"}) {
        EXPECT_EQ(parseSeparator(text), std::nullopt) << text;
    }
}

} // namespace
