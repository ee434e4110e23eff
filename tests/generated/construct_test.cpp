// construct over memory that held something else.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"

#include "protocol/cs_relay_msg.h"

#include <algorithm>

namespace {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Construct);

TEST_P(Construct, SetsTheSameOverAnyMemory) {
    Match match(type());
    for (const char poison : {'\xFF', '\x5A', '\0'}) {
        SCOPED_TRACE(static_cast<int>(poison));
        std::fill_n(match.record(), type().size, poison);
        EXPECT_EQ(match.construct().code, BIX_OK);
        for (const Field& field : type()) {
            const char* const at = match.after().data() + field.offset;
            if (field.kind == Kind::Scalar) {
                EXPECT_EQ(loadScalar(field, at), field.defaultValue) << field.name;
            } else if (field.kind == Kind::Bytes) {
                EXPECT_TRUE(allBytes(at, field.bound, '\0')) << field.name;
            } else if (field.kind == Kind::String) {
                EXPECT_EQ(*at, '\0') << field.name;
                EXPECT_TRUE(allBytes(at + 1, field.bound - 1, poison)) << field.name;
            } else if (field.kind == Kind::Union) {
                EXPECT_TRUE(allBytes(at, field.bound * size_t{field.width}, poison)) << field.name;
            }
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Construct, MakesARecordThatPacksAndComesBack) {
    Match match(type());
    match.fillWithNoise(random);
    EXPECT_EQ(match.construct().code, BIX_OK);
    std::copy(match.after().begin(), match.after().end(), match.record());
    const std::vector<char> image = match.image(0);
    EXPECT_EQ(match.unpack(image, 0).code, BIX_OK);
}

} // namespace
