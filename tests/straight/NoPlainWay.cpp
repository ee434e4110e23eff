// In place of the library's plain ways: whoever comes here failed.
#include "tests/straight/NoPlainWay.h"

#include "Common/Source/Core/BIX/BixLine.h"
#include "protocol/Plain.h"

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using tests::LEFT_STRAIGHT_WAY;

namespace cs_relay_msg::plain {

int32_t pack(const schema::Type&, const char*, BixWriteBuf&, uint32_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t unpack(const schema::Type&, char*, BixReadBuf&, uint32_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}

} // namespace cs_relay_msg::plain

namespace Korvan::detail {

int32_t headerLine(BixWriteBuf&, const Line&, bool) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t elementLine(BixWriteBuf&, const Line&, uint32_t, bool) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t byteLine(BixWriteBuf&, const Line&, uint8_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t signedLine(BixWriteBuf&, const Line&, int32_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t unsignedLine(BixWriteBuf&, const Line&, uint64_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t textLine(BixWriteBuf&, const Line&, const char*, size_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}
int32_t arrayLine(BixWriteBuf&, const Line&, const uint8_t*, size_t) noexcept {
    return LEFT_STRAIGHT_WAY;
}

} // namespace Korvan::detail
