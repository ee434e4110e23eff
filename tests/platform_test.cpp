// The machine is the one that the toolchain file describes, so that what passes there proves what it is said
// to prove: the byte order, the width of `long`, and that a misaligned access is not forgiven.
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>

TEST(Platform, HasTheByteOrder) {
    const uint16_t one = 1;
    char first = 0;
    std::memcpy(&first, &one, 1);
    EXPECT_EQ(first == 0, IS_BIG_ENDIAN != 0);
}

TEST(Platform, HasTheWidths) {
    EXPECT_EQ(sizeof(long) * CHAR_BIT, size_t{LONG_BITS});
    EXPECT_EQ(sizeof(void*) * CHAR_BIT, size_t{POINTER_BITS});
}

#if TRAPS_MISALIGNED
namespace {

/// What the codec must never do: a store through a typed pointer. The pointer is volatile, so that the
/// compiler cannot see where it leads and take the bytes apart.
void storeAt(void* volatile at) {
    *static_cast<volatile uint32_t*>(at) = 7;
}

} // namespace

TEST(PlatformDeathTest, TrapsAMisalignedStore) {
    alignas(uint32_t) char memory[8] = {};
    storeAt(memory + 4);
    EXPECT_EXIT(storeAt(memory + 1), testing::KilledBySignal(SIGBUS), "");
}
#endif
