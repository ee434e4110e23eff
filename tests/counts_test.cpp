// Counts: the bound itself is allowed, one more is refused after the count was written, read or printed.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::filled;
using korvan_test::hex;
using korvan_test::image;
using korvan_test::Outcome;
using korvan_test::packed;
using korvan_test::text;
using korvan_test::unpacked;

namespace {

/// Text, result and used size of a rendering.
struct Rendered {
    int32_t result;
    std::string text;
};

template <class T>
Rendered rendered(const T& record) {
    std::string buffer(4096, '#');
    size_t used = 0;
    const int32_t result = record.visualize(buffer.data(), buffer.size(), &used);
    return {result, buffer.substr(0, used)};
}

/// Checks that the count in @p record is refused by every operation: after @p wire and after @p lines.
template <class T>
void expectRefused(const T& record, const Bytes& wire, const std::string& lines) {
    EXPECT_EQ(packed(record), (Outcome{-7, wire}));
    const Rendered render = rendered(record);
    EXPECT_EQ(render.result, -7);
    EXPECT_EQ(render.text, lines);

    auto read = filled<T>('\x5a');
    size_t used = 0;
    EXPECT_EQ(unpacked(*read, wire + std::string(2000, '\0'), 0, &used), -7);
    EXPECT_EQ(used, wire.size());
    // The count is in the record, and nothing behind it was touched.
    EXPECT_EQ(packed(*read), (Outcome{-7, wire}));
    const Bytes memory = image(*read);
    EXPECT_EQ(memory.find_first_not_of('\x5a', wire.size()), std::string::npos);
}

} // namespace

TEST(Counts, BytesOfData) {
    auto data = constructed<CSRelayData>();
    data->dwObjectId = 7;
    EXPECT_EQ(packed(*data).bytes.size(), 9u);
    data->wRelayLen = 1024;
    EXPECT_EQ(packed(*data).result, 0);
    EXPECT_EQ(packed(*data).bytes.size(), 1033u);
    EXPECT_NE(text(*data).find("[szRelayBuf](1024): 0x00 0x00"), std::string::npos);
    auto read = constructed<CSRelayData>();
    EXPECT_EQ(unpacked(*read, packed(*data).bytes), 0);
    EXPECT_TRUE(image(*read) == image(*data));
    for (const unsigned count : {1025u, 65535u}) {
        data->wRelayLen = static_cast<uint16_t>(count);
        expectRefused(*data, count == 1025 ? hex("00 00 00 07 04 01") : hex("00 00 00 07 ff ff"),
                      "[dwObjectId]: 7\n[wRelayLen]: " + std::to_string(count) + "\n");
    }
}

TEST(Counts, RefusedCountOfDataStaysInTheRecord) {
    auto data = constructed<CSRelayData>();
    EXPECT_EQ(unpacked(*data, hex("00 00 00 07 04 01") + std::string(2000, 'x')), -7);
    EXPECT_EQ(+data->wRelayLen, 1025);
    EXPECT_EQ(unpacked(*data, hex("00 00 00 07 04 01")), -7) << "not -2: the count is looked at first";
}

TEST(Counts, BytesOfMsgPack) {
    auto pack = constructed<CSRelayMsgPack>();
    pack->wLength = 1024;
    EXPECT_EQ(packed(*pack).result, 0);
    EXPECT_EQ(packed(*pack).bytes.size(), 1031u);
    pack->wLength = 1025;
    expectRefused(*pack, hex("00 00 01 00 00 04 01"),
                  "[wSeqId]: 0\n[bCount]: 0x01\n[bIndex]: 0x00\n[bDataType]: 0x00\n[wLength]: 1025\n");
}

TEST(Counts, ElementsOfInputMulty) {
    auto multy = constructed<CSRelayInputMulty>();
    EXPECT_EQ(packed(*multy), (Outcome{0, hex("00")}));
    multy->bFrameCount = 10;
    EXPECT_EQ(packed(*multy).result, 0);
    EXPECT_EQ(packed(*multy).bytes.size(), 1u + 10 * 9);
    EXPECT_NE(text(*multy).find("[astRelayData][9]\n"), std::string::npos);
    auto read = constructed<CSRelayInputMulty>();
    EXPECT_EQ(unpacked(*read, packed(*multy).bytes), 0);
    multy->bFrameCount = 11;
    expectRefused(*multy, hex("0b"), "[bFrameCount]: 0x0b\n");
}

TEST(Counts, ElementsOfFrame) {
    auto frame = constructed<CSRelayFrame>();
    frame->bCount = 100;
    EXPECT_EQ(packed(*frame).result, 0);
    EXPECT_EQ(packed(*frame).bytes.size(), 9u + 100 * 9);
    EXPECT_NE(text(*frame).find("[astRelayData][99]\n"), std::string::npos);
    auto read = constructed<CSRelayFrame>();
    EXPECT_EQ(unpacked(*read, packed(*frame).bytes), 0);
    frame->bCount = 101;
    expectRefused(*frame, hex("00 00 00 00 65"), "[dwFrameId]: 0\n[bCount]: 0x65\n");
    frame->bCount = 255;
    expectRefused(*frame, hex("00 00 00 00 ff"), "[dwFrameId]: 0\n[bCount]: 0xff\n");
}

TEST(Counts, ElementsOfFramePack) {
    auto pack = constructed<CSRelayFramePack>();
    pack->bCount = 5;
    EXPECT_EQ(packed(*pack).result, 0);
    EXPECT_EQ(packed(*pack).bytes.size(), 1u + 5 * 9);
    EXPECT_NE(text(*pack).find("[astRelayData][4]\n"), std::string::npos);
    auto read = constructed<CSRelayFramePack>();
    EXPECT_EQ(unpacked(*read, packed(*pack).bytes), 0);
    pack->bCount = 6;
    expectRefused(*pack, hex("06"), "[bCount]: 0x06\n");
}

TEST(Counts, PiecesOfSeekPlayReq) {
    auto seek = constructed<CSRelaySeekPlayReq>();
    seek->dwReplayPieceInofCount = 0;
    EXPECT_EQ(packed(*seek).bytes.size(), 16u);
    seek->dwReplayPieceInofCount = 10;
    EXPECT_EQ(packed(*seek).result, 0);
    EXPECT_EQ(packed(*seek).bytes.size(), 96u);
    EXPECT_NE(text(*seek).find("[astReplayPieceInof][9]\n"), std::string::npos);
    const std::string lines = "[dwFrameIntervalMs]: 10\n[dwStartFrame]: 0\n[dwFrameCount]: 1000\n"
                              "[dwReplayPieceInofCount]: ";
    seek->dwReplayPieceInofCount = 11;
    expectRefused(*seek, hex("00 00 00 0a 00 00 00 00 00 00 03 e8 00 00 00 0b"), lines + "11\n");
    seek->dwReplayPieceInofCount = 4294967295u;
    expectRefused(*seek, hex("00 00 00 0a 00 00 00 00 00 00 03 e8 ff ff ff ff"), lines + "4294967295\n");
}

TEST(Counts, FailureInAnElementKeepsWhatWasPackedBeforeIt) {
    auto pack = constructed<CSRelayFramePack>();
    pack->bCount = 4;
    pack->astRelayData[0].dwFrameId = 1;
    pack->astRelayData[1].dwFrameId = 2;
    pack->astRelayData[2].dwFrameId = 3;
    pack->astRelayData[2].bCount = 2;
    pack->astRelayData[2].astRelayData[1].dwObjectId = 9;
    pack->astRelayData[2].astRelayData[1].wRelayLen = 1025;
    EXPECT_EQ(packed(*pack), (Outcome{-7, hex("04  00000001 00 00000000  00000002 00 00000000"
                                              "    00000003 02  00000000 0000 00 0000  00000009 0401")}));
    const Rendered render = rendered(*pack);
    EXPECT_EQ(render.result, -7);
    const std::string last = "  [astRelayData][1]\n    [dwObjectId]: 9\n    [wRelayLen]: 1025\n";
    ASSERT_GE(render.text.size(), last.size());
    EXPECT_EQ(render.text.substr(render.text.size() - last.size()), last);
}

TEST(Counts, FailureInTheFrameOfASyncResIsReturned) {
    auto sync = constructed<CSRelayMsgSyncRes>();
    sync->stSyncData.bCount = 1;
    sync->stSyncData.astRelayData[0].wRelayLen = 1025;
    EXPECT_EQ(packed(*sync), (Outcome{-7, hex("00000000 00000000 01 00000000 0401")}));
}

TEST(Counts, BytesBeyondTheCountStayOnUnpack) {
    auto data = filled<CSRelayData>('#');
    EXPECT_EQ(unpacked(*data, hex("00 00 00 01 00 02 aa bb 00 00 00")), 0);
    EXPECT_EQ(data->szRelayBuf[1], 0xbb);
    EXPECT_EQ(data->szRelayBuf[2], '#');
    EXPECT_EQ(data->szRelayBuf[1023], '#');
}

TEST(Counts, ElementsBeyondTheCountStayOnUnpack) {
    auto frame = filled<CSRelayFrame>('#');
    EXPECT_EQ(unpacked(*frame, hex("00 00 00 01  01  00 00 00 02 00 00 00 00 00  00 00 00 03")), 0);
    const std::string memory = image(*frame);
    const size_t first = 5 + 1033; // the second element
    EXPECT_EQ(memory.substr(first, 99 * 1033), std::string(99 * 1033, '#'));
    EXPECT_EQ(+frame->dwLastHasDataFrameId, 3u);
    auto seek = filled<CSRelaySeekPlayReq>('#');
    EXPECT_EQ(unpacked(*seek, hex("00000001 00000002 00000003 00000001 00000004 00000005")), 0);
    EXPECT_EQ(image(*seek).substr(16 + 8), std::string(72, '#'));
}

TEST(Counts, OnlyTheCountedPartIsWritten) {
    auto data = filled<CSRelayData>('#');
    data->wRelayLen = 3;
    EXPECT_EQ(packed(*data), (Outcome{0, hex("23232323 0003 232323 23 2323")}));
}

TEST(Counts, NoOtherFieldIsChecked) {
    auto pack = filled<CSRelayMsgPack>('\xff');
    pack->wLength = 0;
    EXPECT_EQ(packed(*pack), (Outcome{0, hex("ffff ff ff ff 0000")})) << "index and count are not related";
    auto seek = constructed<CSRelaySeekPlayReq>();
    seek->dwFrameIntervalMs = 0;
    seek->dwFrameCount = 0;
    EXPECT_EQ(packed(*seek).result, 0);
    auto error = constructed<CSRelayError>();
    error->bIsFatalError = 77;
    EXPECT_EQ(packed(*error).result, 0);
    auto start = constructed<CSRelayMsgStartReq>();
    start->bNeedSeek = 255;
    EXPECT_EQ(packed(*start).result, 0);
}
