/// @file
/// The words that only one compiler knows: packing, forced inlining, symbol export, printf checking.
///
/// g++ 12 and clang 14 and later are tested. The MSVC branches follow its documentation and were not tested.
#ifndef KORVAN_BIX_COMPILER_H
#define KORVAN_BIX_COMPILER_H

#if defined(_MSC_VER) && !defined(__clang__)

#define KORVAN_ALWAYS_INLINE __forceinline
#define KORVAN_NOINLINE __declspec(noinline)
#define KORVAN_COLD __declspec(noinline)
#define KORVAN_LIKELY(condition) (condition)
#define KORVAN_PACKED
#define KORVAN_PACK_BEGIN __pragma(pack(push, 1))
#define KORVAN_PACK_END __pragma(pack(pop))
#define KORVAN_PRINTF(index, first)
#define KORVAN_BLOCK16 std::array<char, 16>

#else

#define KORVAN_ALWAYS_INLINE inline __attribute__((always_inline))
#define KORVAN_NOINLINE __attribute__((noinline))
/// On a function that is seldom needed: it is made small rather than quick.
#define KORVAN_COLD __attribute__((noinline, cold))
#define KORVAN_LIKELY(condition) (__builtin_expect(static_cast<bool>(condition), true))
/// On the type itself, not as a pragma: g++ then refuses a reference to a misaligned field.
#define KORVAN_PACKED __attribute__((packed))
#define KORVAN_PACK_BEGIN
#define KORVAN_PACK_END
#define KORVAN_PRINTF(index, first) __attribute__((format(printf, index, first)))
/// 16 bytes that travel through one register.
#define KORVAN_BLOCK16 char __attribute__((vector_size(16)))

#endif

/// On every class whose members live in the library. A client needs no import word: functions link without
/// it.
#if !defined(_WIN32)
#define KORVAN_API __attribute__((visibility("default")))
#elif defined(KORVAN_RELAY_BUILDS_SHARED)
#define KORVAN_API __declspec(dllexport)
#else
#define KORVAN_API
#endif

#endif
