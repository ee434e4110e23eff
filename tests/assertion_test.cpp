// The assertion: a corrupted cursor stops the program and names the operation, the header and the condition.
// Built, with its own copy of the library, with assertions on.
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/buffer_operations.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#ifdef NDEBUG
#error "this program tests assertions"
#endif

namespace schema = cs_relay_msg::schema;

namespace {

/// A report that holds the header, the operation's name and the condition, in the platform's order. Matched
/// by the standard library, since GoogleTest's own expressions know no brackets on Windows.
class Report {
public:
    explicit Report(const std::string& name)
#ifdef _WIN32
        : pattern_("\\b" + name + ": .*position <= length.*Common/Source/Core/BIX/BixBuf"){}
#else
        : pattern_("Common/Source/Core/BIX/BixBuf.*[^A-Za-z0-9_]" + name + "[(].*position <= length") {
    }
#endif

          bool MatchAndExplain(const std::string& output, testing::MatchResultListener* /*why*/) const {
        return std::regex_search(output, std::regex(pattern_));
    }
    void DescribeTo(std::ostream* out) const {
        *out << "matches " << pattern_;
    }
    void DescribeNegationTo(std::ostream* out) const {
        *out << "does not match " << pattern_;
    }

private:
    std::string pattern_;
};

testing::Matcher<const std::string&> report(const std::string& name) {
    return testing::MakePolymorphicMatcher(Report(name));
}

void corrupt(BixWriteBuf& buf) {
    buf.position = buf.length + 1;
}
void corrupt(BixReadBuf& buf) {
    buf.position = buf.length + 1;
}

} // namespace

TEST(AssertionDeathTest, EveryWriteNamesItself) {
    for (const WriteOperation& operation : WRITE_OPERATIONS) {
        SCOPED_TRACE(operation.name);
        char memory[16];
        BixWriteBuf buf(memory, sizeof(memory));
        EXPECT_EQ(operation.run(buf), 0);
        corrupt(buf);
        EXPECT_DEATH(operation.run(buf), report(operation.name));
    }
}

TEST(AssertionDeathTest, EveryReadNamesItself) {
    for (const ReadOperation& operation : READ_OPERATIONS) {
        SCOPED_TRACE(operation.name);
        const char memory[16] = {};
        BixReadBuf buf(memory, sizeof(memory));
        EXPECT_EQ(operation.run(buf), 0);
        corrupt(buf);
        EXPECT_DEATH(operation.run(buf), report(operation.name));
    }
}

TEST(AssertionDeathTest, LeftSizeNamesItself) {
    BixReadBuf buf("ab", 2);
    corrupt(buf);
    EXPECT_DEATH((void)buf.getLeftSize(), report("getLeftSize"));
}

TEST(AssertionDeathTest, OperationsOfNoBytesAssertToo) {
    char memory[4];
    BixWriteBuf out(memory, sizeof(memory));
    corrupt(out);
    EXPECT_DEATH((void)out.writeBytes(memory, 0), report("writeBytes"));
    EXPECT_DEATH((void)out.reserve(0), report("reserve"));
    BixReadBuf in(memory, sizeof(memory));
    corrupt(in);
    EXPECT_DEATH((void)in.readBytes(memory, 0), report("readBytes"));
}

TEST(Assertion, NullPointerIsLookedAtBeforeTheCursor) {
    char memory[4];
    BixWriteBuf out(memory, sizeof(memory));
    corrupt(out);
    EXPECT_EQ(out.writeBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
    BixReadBuf in(memory, sizeof(memory));
    corrupt(in);
    EXPECT_EQ(in.readBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
}

TEST(Assertion, PositionEqualToLengthIsNoCorruption) {
    char memory[4];
    BixWriteBuf out(memory, sizeof(memory));
    out.position = 4;
    EXPECT_EQ(out.writeUInt8(1), -1);
    BixReadBuf in(memory, sizeof(memory));
    in.position = 4;
    EXPECT_EQ(in.getLeftSize(), 0u);
}

TEST(AssertionDeathTest, EveryTextHelperAsserts) {
    namespace util = Korvan::BixBufUtil;
    char memory[64];
    BixWriteBuf buf(memory, sizeof(memory));
    corrupt(buf);
    const auto expected = report("textize");
    EXPECT_DEATH((void)util::printVariable(buf, 0, '\n', "[a]", "%d", 1), expected);
    EXPECT_DEATH((void)util::printVariable(buf, 0, '\n', "[a]", "%lu", uint64_t{1}), expected);
    EXPECT_DEATH((void)util::printVariable(buf, 0, '\n', "[a]", true), expected);
    EXPECT_DEATH((void)util::printVariable(buf, 0, '\n', "[a]", 0u, true), expected);
    EXPECT_DEATH((void)util::printString(buf, 0, '\n', "[a]", "b"), expected);
    EXPECT_DEATH((void)util::printArray(buf, 0, '\n', "[a]", 1), expected);
}

namespace {

/// The buffer operation that @p type begins with, as the name in its report.
std::string firstOperation(const schema::Type& type, bool packs) {
    const schema::Field& first = type.fields[0];
    if (first.type != nullptr && !(std::string(type.name) == "CSRelayMsg" && !packs)) {
        return firstOperation(*first.type, packs);
    }
    if (std::string(type.name) == "CSRelayMsg") {
        return "readUInt8"; // the peek at the version
    }
    if (first.kind == schema::Kind::String) {
        return packs ? "reserve" : "readUInt32";
    }
    const std::string verb = packs ? "write" : "read";
    return first.width == 1 ? verb + "U(Int8|Char)"
                            : verb + (first.isSigned ? "Int" : "UInt") + std::to_string(first.width * 8);
}

class RecordAssertionDeathTest : public testing::TestWithParam<const schema::Type*> {
protected:
    const schema::Type& type = *GetParam();
    std::vector<char> record = std::vector<char>(type.size);
    char memory[64] = {};
};

} // namespace

TEST_P(RecordAssertionDeathTest, PackNamesItsFirstWrite) {
    BixWriteBuf buf(memory, sizeof(memory));
    corrupt(buf);
    EXPECT_DEATH((void)type.pack(record.data(), buf, 0), report(firstOperation(type, true)));
}

TEST_P(RecordAssertionDeathTest, UnpackNamesItsFirstRead) {
    BixReadBuf buf(memory, sizeof(memory));
    corrupt(buf);
    EXPECT_DEATH((void)type.unpack(record.data(), buf, 0), report(firstOperation(type, false)));
}

TEST_P(RecordAssertionDeathTest, VisualizeAsserts) {
    BixWriteBuf buf(memory, sizeof(memory));
    corrupt(buf);
    EXPECT_DEATH((void)type.visualize(record.data(), buf, 0, '\n'), report("textize"));
}

INSTANTIATE_TEST_SUITE_P(Record, RecordAssertionDeathTest,
                         testing::ValuesIn(schema::types().begin(), schema::types().end()),
                         [](const auto& type) { return std::string(type.param->name); });
