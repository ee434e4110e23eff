#include "tests/tool/Program.h"

#include "tools/relaymsg/TextEscape.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

namespace {

using namespace cs_relay_msg;

TEST(Sample, holdsEveryCommandAndEveryVersion) {
    std::set<int> commands;
    std::set<int> versions;
    std::set<uint32_t> users;
    size_t bytes = 0;
    for (const std::string& message : wire::sessionMessages()) {
        commands.insert(static_cast<unsigned char>(message[11]));
        versions.insert(message[8]);
        users.insert(static_cast<unsigned char>(message[3]));
        bytes += message.size();
    }
    EXPECT_EQ(bytes, wire::session().size());
    EXPECT_EQ(commands.size(), 25u);
    EXPECT_EQ(versions, (std::set<int>{1, 2, 3}));
    EXPECT_EQ(users.size(), 4u);
}

TEST(Sample, readsTheSameAsBytesAndAsText) {
    const Outcome bytes = runTool({"decode", CAPTURES "/session.bin"});
    const Outcome text = runTool({"decode", CAPTURES "/session.hex"});
    EXPECT_EQ(bytes.status, 0);
    EXPECT_EQ(bytes.err, "");
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out, bytes.out);
}

TEST(Sample, isPrintedAsTheLibraryPrintsIt) {
    const std::string out = runTool({"decode", CAPTURES "/session.bin"}).out;
    std::string expected;
    const auto record = std::make_unique<CSRelayMsg>();
    std::vector<char> room(100000);
    for (const std::string& message : wire::sessionMessages()) {
        ASSERT_EQ(record->unpack(message.data(), message.size()), BIX_OK);
        size_t used = 0;
        ASSERT_EQ(record->visualize(room.data(), room.size(), &used, 1, '\0'), BIX_OK);
        std::istringstream lines(std::string(room.data(), used));
        for (std::string line; std::getline(lines, line, '\0');) {
            expected += relaymsg::escaped(line) + "\n";
        }
    }
    std::string fields;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '#') {
            fields += line + "\n";
        }
    }
    EXPECT_EQ(fields, expected);
}

/// Dumps of the sample by the tools that people have; one that is not installed is left out.
TEST(Sample, readsTheSameFromEveryDump) {
    const std::string expected = runTool({"decode", CAPTURES "/session.bin"}).out;
    for (const std::string dump :
         {"xxd", "xxd -p", "xxd -u -c 8 -g 1", "xxd -a -g 0", "hexdump -C", "hexdump -Cv", "od -Ax -tx1",
          "od -Ax -tx1z", "od -Ax -tx1 -v", "od -An -tx1"}) {
        const std::string tool = dump.substr(0, dump.find(' '));
        if (shell("command -v " + tool).status == 0) {
            const Outcome outcome = shell(dump + " '" CAPTURES "/session.bin' | relaymsg decode");
            EXPECT_EQ(outcome.err, "") << dump;
            EXPECT_TRUE(outcome.out == expected) << dump;
        }
    }
}

} // namespace
