/// @file
/// Counts, sizes, users.
#include "tests/tool/Program.h"
#include "tools/relaymsg/Histogram.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(Histogram, isExactForSmallValuesAndCloseForLargeOnes) {
    std::mt19937 random(1);
    for (const uint32_t most : {5u, 255u, 256u, 4000u, 516558u, 0xffffffffu}) {
        relaymsg::Histogram histogram;
        std::vector<uint32_t> values;
        for (int i = 0; i < 1001; ++i) {
            values.push_back(static_cast<uint32_t>(random() % most + 1));
            histogram.add(values.back());
        }
        std::sort(values.begin(), values.end());
        EXPECT_EQ(histogram.least(), values.front());
        EXPECT_EQ(histogram.most(), values.back());
        for (const uint32_t percent : {1u, 50u, 99u, 100u}) {
            const uint32_t exact = values[(values.size() * percent + 99) / 100 - 1];
            const uint32_t found = histogram.percentile(percent);
            EXPECT_GE(found, exact) << most << ' ' << percent;
            EXPECT_LE(found - exact, exact < 256 ? 0 : exact / 128) << most << ' ' << percent;
        }
    }
}

std::string input() {
    std::string bytes;
    for (size_t i = 1; i <= 100; ++i) {
        bytes += wire::login(std::string(i, 'x'));
    }
    return bytes + wire::big(5, 4) + wire::heartBeat().substr(4) + wire::heartBeat();
}

TEST(Stats, printsTables) {
    const Outcome outcome = runTool({"stats"}, input());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "command                      messages            bytes    share      min   "
                           "median      p99      max\n"
                           "stRelayLoginReq                   100             7150   99.55%       22       "
                           "71      120      121\n"
                           "stCSRelayMsgHeartBeatReq            2               32    0.45%       16       "
                           "16       16       16\n"
                           "total                             102             7182\n"
                           "\n"
                           "user                         messages            bytes\n"
                           "5                                   1               16\n"
                           "1001                              101             7166\n");
}

TEST(Stats, printsJson) {
    EXPECT_EQ(runTool({"stats", "--json", "--command", "184"}, input()).out,
              "{\"messages\":2,\"bytes\":32,\"commands\":[{\"id\":184,\"name\":\"stCSRelayMsgHeartBeatReq\","
              "\"messages\":2,\"bytes\":32,\"share\":100.00,\"min\":16,\"median\":16,\"p99\":16,\"max\":16}],"
              "\"users\":[{\"id\":5,\"messages\":1,\"bytes\":16},{\"id\":1001,\"messages\":1,\"bytes\":16}],"
              "\"otherUsers\":{\"messages\":0,\"bytes\":0}}\n");
}

TEST(Stats, tellsApartOnlySoManyUsers) {
    std::string bytes;
    for (uint32_t user = 1; user <= 300; ++user) {
        bytes += wire::big(user, 4) + wire::heartBeat().substr(4);
    }
    const std::string out = runTool({"stats"}, bytes).out;
    EXPECT_NE(out.find("\n100                                 1               16\nothers                     "
                       "       200"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("Only the first 100 users are told apart"), std::string::npos);
    EXPECT_EQ(runTool({"stats", "--users", "300"}, bytes).out.find("others"), std::string::npos);
    EXPECT_NE(runTool({"stats", "--json", "--users", "0"}, bytes)
                  .out.find(R"("users":[],"otherUsers":{"messages":300,"bytes":4800})"),
              std::string::npos);
}

TEST(Stats, countsWhatComesBeforeDamage) {
    const Outcome outcome = runTool({"stats"}, wire::heartBeat() + "damage");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_NE(outcome.out.find("total                               1               16\n"),
              std::string::npos);
    EXPECT_NE(outcome.err.find("message 2 at offset 16"), std::string::npos);
    EXPECT_EQ(runTool({"stats"}, "").status, 2);
    const Outcome unknown = runTool({"stats"}, wire::head(9));
    EXPECT_EQ(unknown.status, 4);
    EXPECT_NE(unknown.out.find("unknown(9)"), std::string::npos);
}

} // namespace
