// What the documentation of Stream.h states as a fact, and the compiler can confirm.

#include "tests/stream/Samples.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace cs_relay_msg;

// A scan takes this much memory, whatever it reads, and is a plain value.
static_assert(sizeof(ScanState) <= 128);
static_assert(std::is_trivially_copyable_v<ScanState> && std::is_trivially_destructible_v<ScanState>);
static_assert(std::is_nothrow_default_constructible_v<ScanState>);

// Nothing throws.
static_assert(noexcept(scan(std::declval<ScanState&>(), nullptr, 0)));
static_assert(noexcept(scanPath(std::declval<ScanState&>(), nullptr, 0)));
static_assert(noexcept(unpackHead(std::declval<CSRelayMsgHead&>(), nullptr, 0)));
static_assert(noexcept(beginMessage(std::declval<CSRelayMsg&>(), 0)));
static_assert(noexcept(packMessage(std::declval<CSRelayMsgHead&>(), std::declval<CSRelayInput&>(), nullptr,
                                   0)));
static_assert(noexcept(unpackMessage(std::declval<CSRelayMsgHead&>(), std::declval<CSRelayInput&>(), nullptr,
                                     0)));
static_assert(noexcept(setText(std::declval<char (&)[8]>(), "")));
static_assert(noexcept(setBytes(std::declval<CSRelayData&>(), &CSRelayData::szRelayBuf, nullptr, 0)));
static_assert(noexcept(equal(std::declval<CSRelayData&>(), std::declval<CSRelayData&>())));

namespace {

template <class Text, class = void>
struct IsText : std::false_type {};
template <class Text>
struct IsText<Text, std::void_t<decltype(setText(std::declval<char (&)[8]>(), std::declval<Text>()))>>
    : std::true_type {};

} // namespace

static_assert(IsText<const char*>::value && IsText<std::string>::value && IsText<std::string_view>::value);
static_assert(!IsText<std::nullptr_t>::value, "a null literal is no text");

TEST(StreamHeader, TheOtherCommandIsNoResultCode) {
    EXPECT_EQ(OTHER_COMMAND, 1); // below 0 something is wrong
    EXPECT_EQ(Korvan::findResult(OTHER_COMMAND), nullptr);
}

TEST(StreamHeader, TypesAreFoundByTheirRecord) {
    EXPECT_STREQ(schema::typeOf<CSRelayData>().name, "CSRelayData");
    EXPECT_EQ(&schema::typeOf<CSRelayMsg>(), schema::types()[schema::types().size - 1]);
    samples::forEachCommand([](uint8_t id, auto member) {
        CSRelayMsgBody* const none = nullptr;
        using T = std::remove_reference_t<decltype(none->*member)>;
        ASSERT_NE(schema::findCommand(id), nullptr);
        EXPECT_EQ(&schema::typeOf<T>(), schema::findCommand(id)->type);
    });
    EXPECT_EQ(samples::commandIds().size(), schema::commands().size);
}
