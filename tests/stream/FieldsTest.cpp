#include "tests/stream/Samples.h"

#include <gtest/gtest.h>

using namespace cs_relay_msg;

namespace {

template <class T>
std::string image(const T& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

} // namespace

TEST(SetText, TakesWhatFitsAndRefusesTheRest) {
    const auto login = std::make_unique<CSRelayMsgLoginReq>();
    std::memset(static_cast<void*>(login.get()), 'x', sizeof(*login));
    const std::string reserve = image(*login).substr(128);
    for (size_t size = 0; size < 300; ++size) {
        std::memset(login->szSigBuf, 'x', sizeof(login->szSigBuf));
        const std::string before = image(*login);
        const std::string text(size, 'a');
        const int32_t result = setText(login->szSigBuf, text);
        if (size > 127) {
            EXPECT_EQ(result, BIX_ERR_STRING_TOO_LONG);
            EXPECT_EQ(image(*login), before) << "the record is untouched";
        } else {
            EXPECT_EQ(result, BIX_OK);
            EXPECT_EQ(std::string(login->szSigBuf), text);
            EXPECT_EQ(login->szSigBuf[127], '\0');
            EXPECT_EQ(image(*login).substr(128), reserve);
            const std::string set = image(*login);
            char buffer[200];
            EXPECT_EQ(login->pack(buffer, sizeof(buffer)), BIX_OK);
            EXPECT_EQ(image(*login), set) << "packing writes nothing to it";
        }
    }
}

TEST(SetText, RefusesANulThatWouldCutTheText) {
    CSRelayMsgLoginReq login{};
    ASSERT_EQ(setText(login.szSigBuf, "before"), BIX_OK);
    for (const std::string& text : {std::string("a\0b", 3), std::string("\0", 1), std::string("abc\0", 4)}) {
        EXPECT_EQ(setText(login.szSigBuf, text), BIX_ERR_STRING_MALFORMED);
        EXPECT_STREQ(login.szSigBuf, "before");
    }
    EXPECT_EQ(setText(login.szSigBuf, std::string(200, '\0')), BIX_ERR_STRING_TOO_LONG);
}

TEST(SetText, TakesAnEmptyTextAndOneFromTheFieldItself) {
    CSRelayMsgLoginReq login{};
    ASSERT_EQ(setText(login.szSigBuf, "some text"), BIX_OK);
    ASSERT_EQ(setText(login.szSigBuf, std::string_view(login.szSigBuf + 5)), BIX_OK);
    EXPECT_STREQ(login.szSigBuf, "text");
    ASSERT_EQ(setText(login.szSigBuf, std::string_view()), BIX_OK);
    EXPECT_STREQ(login.szSigBuf, "");
}

TEST(SetBytes, SetsBytesAndCountOrNothing) {
    std::string bytes(1030, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7);
    }
    const auto input = std::make_unique<CSRelayInput>();
    const auto pack = std::make_unique<CSRelayMsgPack>();
    for (const size_t size : {0u, 1u, 255u, 256u, 1023u, 1024u, 1025u, 1030u}) {
        std::memset(static_cast<void*>(input.get()), 0x5a, sizeof(*input));
        std::memset(static_cast<void*>(pack.get()), 0x5a, sizeof(*pack));
        const std::string inputBefore = image(*input);
        const std::string packBefore = image(*pack);
        const int32_t a = setBytes(input->stRelayData, &CSRelayData::szRelayBuf, bytes.data(), size);
        const int32_t b = setBytes(*pack, &CSRelayMsgPack::szData, bytes.data(), size);
        if (size > 1024) {
            EXPECT_EQ(a, BIX_ERR_COUNT_OUT_OF_RANGE);
            EXPECT_EQ(b, BIX_ERR_COUNT_OUT_OF_RANGE);
            EXPECT_EQ(image(*input), inputBefore);
            EXPECT_EQ(image(*pack), packBefore);
            continue;
        }
        EXPECT_EQ(a, BIX_OK);
        EXPECT_EQ(b, BIX_OK);
        std::string inputAfter = inputBefore;
        std::string packAfter = packBefore;
        const auto count = static_cast<uint16_t>(size);
        std::memcpy(&inputAfter[4], &count, 2); // behind dwObjectId
        inputAfter.replace(6, size, bytes, 0, size);
        std::memcpy(&packAfter[5], &count, 2); // behind wSeqId and three bytes
        packAfter.replace(7, size, bytes, 0, size);
        EXPECT_EQ(image(*input), inputAfter);
        EXPECT_EQ(image(*pack), packAfter);
        EXPECT_EQ(+input->stRelayData.wRelayLen, size);
    }
}

TEST(SetBytes, TakesNoBytesFromNowhereAndBytesFromTheFieldItself) {
    const auto datum = std::make_unique<CSRelayData>();
    ASSERT_EQ(setBytes(*datum, &CSRelayData::szRelayBuf, "abcdef", 6), BIX_OK);
    EXPECT_EQ(setBytes(*datum, &CSRelayData::szRelayBuf, nullptr, 3), BIX_ERR_NULL_POINTER);
    EXPECT_EQ(+datum->wRelayLen, 6);
    EXPECT_EQ(setBytes(*datum, &CSRelayData::szRelayBuf, nullptr, 2000), BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(setBytes(*datum, &CSRelayData::szRelayBuf, datum->szRelayBuf + 1, 5), BIX_OK);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(datum->szRelayBuf), 5), "bcdef");
    EXPECT_EQ(+datum->wRelayLen, 5);
    EXPECT_EQ(setBytes(*datum, &CSRelayData::szRelayBuf, nullptr, 0), BIX_OK);
    EXPECT_EQ(+datum->wRelayLen, 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(datum->szRelayBuf), 5), "bcdef");
}
