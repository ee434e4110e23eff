/// @file
/// Tests that run once for every record type.
#ifndef KORVAN_TESTS_SUPPORT_EVERY_TYPE_H
#define KORVAN_TESTS_SUPPORT_EVERY_TYPE_H

#include "protocol/Schema.h"
#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tests {

/// Has random numbers of its own, the same for one seed whichever tests run; tells the seed when it fails.
class SeededTest : public ::testing::Test {
protected:
    SeededTest();
    void TearDown() override;

    Random random;
};

class EveryType : public SeededTest, public ::testing::WithParamInterface<const cs_relay_msg::schema::Type*> {
protected:
    const cs_relay_msg::schema::Type& type() const { return *GetParam(); }
};

std::string typeName(const ::testing::TestParamInfo<const cs_relay_msg::schema::Type*>& info);

/// The record types for which a predicate holds.
std::vector<const cs_relay_msg::schema::Type*>
typesWhere(bool (*holds)(const cs_relay_msg::schema::Type& type));

// Predicates: they look into nested records and into all members of the union.
bool anyType(const cs_relay_msg::schema::Type& type);
bool hasStrings(const cs_relay_msg::schema::Type& type);
bool hasCounts(const cs_relay_msg::schema::Type& type);
bool hasLaterFields(const cs_relay_msg::schema::Type& type); ///< fields added after version 1

} // namespace tests

/// Declares the test suite @p Suite, each of whose cases runs for every record type that has what it tests.
#define KORVAN_TYPES_WHERE(Suite, predicate)                                                                 \
    class Suite : public ::tests::EveryType {};                                                              \
    INSTANTIATE_TEST_SUITE_P(Every, Suite, ::testing::ValuesIn(::tests::typesWhere(predicate)),              \
                             ::tests::typeName)

#define KORVAN_EVERY_TYPE(Suite) KORVAN_TYPES_WHERE(Suite, ::tests::anyType)

#endif
