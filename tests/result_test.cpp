// The result codes: value, name and sentence of each.
#include "Common/Source/Core/BIX/BixResult.h"

#include "protocol/cs_relay_msg.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

struct Code {
    int32_t constant;
    int32_t value;
    const char* name;
    const char* tells; ///< a word that its sentence must hold
};

const Code CODES[] = {
    {cs_relay_msg::BIX_OK, 0, "BIX_OK", "succeeded"},
    {cs_relay_msg::BIX_ERR_WRITE_OVERFLOW, -1, "BIX_ERR_WRITE_OVERFLOW", "fit"},
    {cs_relay_msg::BIX_ERR_READ_UNDERFLOW, -2, "BIX_ERR_READ_UNDERFLOW", "ends before"},
    {cs_relay_msg::BIX_ERR_STRING_TOO_LONG, -3, "BIX_ERR_STRING_TOO_LONG", "longer"},
    {cs_relay_msg::BIX_ERR_STRING_EMPTY, -4, "BIX_ERR_STRING_EMPTY", "length 0"},
    {cs_relay_msg::BIX_ERR_STRING_MALFORMED, -5, "BIX_ERR_STRING_MALFORMED", "NUL"},
    {cs_relay_msg::BIX_ERR_COUNT_OUT_OF_RANGE, -7, "BIX_ERR_COUNT_OUT_OF_RANGE", "count"},
    {cs_relay_msg::BIX_ERR_NULL_POINTER, -8, "BIX_ERR_NULL_POINTER", "null pointer"},
    {cs_relay_msg::BIX_ERR_VERSION_TOO_OLD, -9, "BIX_ERR_VERSION_TOO_OLD", "older"},
    {cs_relay_msg::BIX_ERR_VERSION_FIELD_CUT, -10, "BIX_ERR_VERSION_FIELD_CUT", "version byte"},
    {cs_relay_msg::BIX_ERR_NULL_ARGUMENT, -19, "BIX_ERR_NULL_ARGUMENT", "null pointer"},
    {cs_relay_msg::BIX_ERR_VERSION_OUT_OF_RANGE, -20, "BIX_ERR_VERSION_OUT_OF_RANGE", "version byte"},
};

} // namespace

TEST(Result, EachCodeHasItsValueNameAndSentence) {
    std::set<std::string> sentences;
    for (const Code& code : CODES) {
        SCOPED_TRACE(code.name);
        EXPECT_EQ(code.constant, code.value);
        EXPECT_STREQ(Korvan::resultName(code.value), code.name);
        const std::string sentence = Korvan::resultSentence(code.value);
        EXPECT_NE(sentence.find(code.tells), std::string::npos) << sentence;
        EXPECT_EQ(sentence.back(), '.');
        EXPECT_TRUE(sentences.insert(sentence).second) << "said of two codes: " << sentence;
    }
}

TEST(Result, NoOtherCodeHasAName) {
    EXPECT_EQ(std::size(Korvan::BIX_RESULTS), std::size(CODES));
    for (const int32_t code : {-6, -11, -12, -13, -14, -15, -16, -17, -18, -21, 1, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(Korvan::findResult(code), nullptr);
        EXPECT_STREQ(Korvan::resultName(code), "BIX_ERR_UNKNOWN");
        EXPECT_STREQ(Korvan::resultSentence(code), "This is no result code of this library.");
    }
}
