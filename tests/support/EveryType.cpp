#include "tests/support/EveryType.h"

#include "tests/support/Settings.h"

#include <iostream>

namespace tests {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

namespace {

/// A number for the running test, so that each has another part of the random sequence (FNV-1a).
uint64_t numberOfTest() {
    const ::testing::TestInfo& test = *::testing::UnitTest::GetInstance()->current_test_info();
    uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : std::string(test.test_suite_name()) + "." + test.name()) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    }
    return hash;
}

/// Whether the predicate holds for a field of the record or of one that it contains.
bool anyField(const Type& type, bool (*holds)(const Field& field)) {
    for (const Field& field : type) {
        if (holds(field) || (field.type != nullptr && anyField(*field.type, holds))) {
            return true;
        }
        if (field.kind == Kind::Union) {
            for (const auto& command : cs_relay_msg::schema::commands()) {
                if (anyField(*command.type, holds)) {
                    return true;
                }
            }
        }
    }
    return false;
}

} // namespace

SeededTest::SeededTest() : random(seed() ^ numberOfTest()) {}

void SeededTest::TearDown() {
    if (HasFailure()) {
        std::cout << "Run this again with KORVAN_TEST_SEED=" << seed() << std::endl;
    }
}

std::string typeName(const ::testing::TestParamInfo<const cs_relay_msg::schema::Type*>& info) {
    return info.param->name;
}

std::vector<const Type*> typesWhere(bool (*holds)(const Type& type)) {
    std::vector<const Type*> types;
    for (const Type* type : cs_relay_msg::schema::types()) {
        if (holds(*type)) {
            types.push_back(type);
        }
    }
    return types;
}

bool anyType(const Type&) {
    return true;
}

bool hasStrings(const Type& type) {
    return anyField(type, [](const Field& field) { return field.kind == Kind::String; });
}

bool hasCounts(const Type& type) {
    return anyField(type, [](const Field& field) { return field.countField >= 0; });
}

bool hasLaterFields(const Type& type) {
    return anyField(type,
                    [](const Field& field) { return field.since > cs_relay_msg::schema::BASE_VERSION; });
}

} // namespace tests
