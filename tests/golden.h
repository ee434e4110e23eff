/// @file
/// Checks a record against bytes typed by hand, in both directions.
#ifndef KORVAN_TESTS_GOLDEN_H
#define KORVAN_TESTS_GOLDEN_H

#include "tests/Bytes.h"

#include <gtest/gtest.h>

namespace korvan_test {

/// @p fill sets the fields that differ from 0 and packs to @p wire at @p cutVer; the bytes unpack to what
/// @p expect fills, into memory that held other values.
template <class T>
void expectGolden(const std::string& wire, uint32_t cutVer, void (*fill)(T&), void (*expect)(T&)) {
    const Bytes golden = hex(wire);
    auto record = std::make_unique<T>();
    fill(*record);
    EXPECT_EQ(packed(*record, cutVer), (Outcome{0, golden}));

    auto expected = std::make_unique<T>();
    expect(*expected);
    auto read = std::make_unique<T>();
    size_t used = 0;
    EXPECT_EQ(unpacked(*read, golden, cutVer, &used), 0);
    EXPECT_EQ(used, golden.size());
    EXPECT_TRUE(image(*read) == image(*expected)) << "unpacking gives another record; it packs to "
                                                  << testing::PrintToString(packed(*read, cutVer).bytes);

    // Over other values every field on the wire, and every field that it lacks, is set: it packs to the same.
    auto dirty = filled<T>('\x77');
    EXPECT_EQ(unpacked(*dirty, golden, cutVer), 0);
    EXPECT_EQ(packed(*dirty), packed(*read));
}

template <class T>
void expectGolden(const std::string& wire, uint32_t cutVer, void (*fill)(T&)) {
    expectGolden<T>(wire, cutVer, fill, fill);
}

} // namespace korvan_test

#endif
