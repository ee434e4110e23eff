/// @file
/// Fields in a record's memory, and the comparison of memory.
#ifndef KORVAN_TESTS_SUPPORT_MEMORY_H
#define KORVAN_TESTS_SUPPORT_MEMORY_H

#include "protocol/Schema.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace tests {

/// The bits of the scalar at @p at, widened without sign.
uint64_t loadScalar(const cs_relay_msg::schema::Field& field, const char* at);

/// Cuts @p bits to the field's width.
void storeScalar(const cs_relay_msg::schema::Field& field, char* at, uint64_t bits);

/// The largest value of the field's width.
uint64_t largestValue(const cs_relay_msg::schema::Field& field);

/// Writes the low @p width bytes of @p bits, most significant first, as they travel.
void storeBigEndian(char* at, uint64_t bits, size_t width);

/// Whether the type is the message, which holds the union.
bool isMessage(const cs_relay_msg::schema::Type& type);

/// Compares @p size bytes; says which is the first that differs.
::testing::AssertionResult sameBytes(const char* a, const char* b, size_t size);

/// Whether all of @p size bytes hold @p value.
::testing::AssertionResult allBytes(const char* bytes, size_t size, char value);

} // namespace tests

#endif
