// The library against the plain codec, which does the same field by field.
//
// Holds: from equal records, buffers and cursors both make the same result, the same cursor and the same
// bytes in the record and in the buffer, on success and on failure, in construct, unpack and pack. (Byte 2
// and 3: where the cursor starts, 0 to 7, and the room for pack.)
#include "fuzz/Case.h"
#include "fuzz/Memory.h"
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "tests/plain/PlainCodec.h"

using namespace Korvan;
namespace plain = cs_relay_msg::plain;

namespace {

constexpr char CANARY = '\xA5';

void requireSameRecord(const fuzz::Case& input, const char* hot, const char* slow) {
    KORVAN_REQUIRE(fuzz::same(hot, slow, fuzz::extentOf(input)));
}

void unpackBoth(const fuzz::Case& input, char* hot, char* slow) {
    const size_t start = input.number % 8;
    fuzz::Block wire(start + input.size);
    wire.fill(CANARY);
    if (input.size != 0) {
        std::memcpy(wire.data() + start, input.wire, input.size);
    }
    BixReadBuf hotIn(wire.data(), wire.size());
    BixReadBuf slowIn(wire.data(), wire.size());
    hotIn.position = slowIn.position = start;
    const int32_t code = input.type.unpack(hot, hotIn, input.cutVer);
    KORVAN_REQUIRE(code == plain::unpack(input.type, slow, slowIn, input.cutVer));
    KORVAN_REQUIRE(hotIn.getUsedSize() == slowIn.getUsedSize());
    requireSameRecord(input, hot, slow);
}

void packBoth(const fuzz::Case& input, char* hot, char* slow) {
    const size_t start = input.number % 8;
    fuzz::Block hotMemory(start + input.number / 8 % (input.size + 64));
    fuzz::Block slowMemory(hotMemory.size());
    hotMemory.fill(CANARY);
    slowMemory.fill(CANARY);
    BixWriteBuf hotOut(hotMemory.data(), hotMemory.size());
    BixWriteBuf slowOut(slowMemory.data(), slowMemory.size());
    hotOut.position = slowOut.position = start;
    const int32_t code = input.type.pack(hot, hotOut, input.cutVer);
    KORVAN_REQUIRE(code == plain::pack(input.type, slow, slowOut, input.cutVer));
    KORVAN_REQUIRE(hotOut.getUsedSize() == slowOut.getUsedSize());
    KORVAN_REQUIRE(fuzz::same(hotMemory.data(), slowMemory.data(), hotMemory.size()));
    requireSameRecord(input, hot, slow);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::Case::HEADER) {
        return 0;
    }
    const fuzz::Case input(data, size);
    char* const hot = fuzz::recordOf(input.type, 0);
    char* const slow = fuzz::recordOf(input.type, 1);
    fuzz::fillWithNoise(input, hot);
    fuzz::fillWithNoise(input, slow);
    unpackBoth(input, hot, slow);
    packBoth(input, hot, slow);
    KORVAN_REQUIRE(input.type.construct(hot) == plain::construct(input.type, slow));
    requireSameRecord(input, hot, slow);
    return 0;
}
