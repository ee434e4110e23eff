// Text into every buffer size, at every indentation, with every separator.
//
// The record is what unpack leaves of the input over noise, so that strings without a NUL and counts above
// their bound are among what is rendered. Holds: result, cursor and every byte of the buffer are those of the
// plain codec, which prints piece by piece; the record is only read; visualize_ex returns the same text,
// terminated inside the buffer. (Byte 2: indentation and separator. Byte 3: the room.)
#include "fuzz/Case.h"
#include "fuzz/Memory.h"
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "protocol/cs_relay_msg.h"
#include "tests/plain/PlainCodec.h"

#include <climits>

using namespace Korvan;
namespace plain = cs_relay_msg::plain;

namespace {

constexpr char CANARY = '\xA5';
constexpr int INDENTS[] = {0, 1, 3, -1, 40, INT_MAX, INT_MIN, 1000};
constexpr char SEPARATORS[] = {'\n', '\0', '%', ' '};

/// How long the text is, up to @p most.
size_t textLength(const fuzz::Case& input, const char* record, int indent, size_t most) {
    fuzz::Block memory(most);
    BixWriteBuf out(memory.data(), memory.size());
    (void)plain::visualize(input.type, record, out, indent, '\n');
    return out.getUsedSize();
}

/// Only a message whose buffer is a plain one: the operation is of the record, not of its type.
void requireSameFromMessage(const char* record, const fuzz::Block& expected, size_t used, int indent,
                            char sep) {
    const auto& message = *reinterpret_cast<const cs_relay_msg::CSRelayMsg*>(record);
    fuzz::Block memory(expected.size());
    size_t reported = 0;
    const char* const text = message.visualize_ex(memory.data(), memory.size(), &reported, indent, sep);
    KORVAN_REQUIRE(text == memory.data() && reported == used);
    KORVAN_REQUIRE(fuzz::same(text, expected.data(), used));
    KORVAN_REQUIRE(text[used < memory.size() ? used : memory.size() - 1] == '\0');
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::Case::HEADER) {
        return 0;
    }
    const fuzz::Case input(data, size);
    char* const record = fuzz::recordOf(input.type, 0);
    char* const before = fuzz::recordOf(input.type, 1);
    fuzz::fillWithNoise(input, record);
    BixReadBuf in(input.wire, input.size);
    (void)plain::unpack(input.type, record, in, input.cutVer);
    std::memcpy(before, record, fuzz::extentOf(input));

    const int indent = INDENTS[input.number / 256 % 8];
    const char sep = SEPARATORS[input.number / 2048 % 4];
    const size_t most = 2 * size + 4096;
    // Of every length: anywhere in the text, its exact fit, and one byte to either side.
    const size_t length = textLength(input, record, indent, most);
    const size_t low = input.number % 256;
    const size_t room = low < 4 ? length + low : length * (low - 4) / 252;

    fuzz::Block hotMemory(room);
    fuzz::Block slowMemory(room);
    hotMemory.fill(CANARY);
    slowMemory.fill(CANARY);
    BixWriteBuf hotOut(hotMemory.data(), room);
    BixWriteBuf slowOut(slowMemory.data(), room);
    const int32_t code = input.type.visualize(record, hotOut, indent, sep);
    KORVAN_REQUIRE(code == plain::visualize(input.type, record, slowOut, indent, sep));
    KORVAN_REQUIRE(hotOut.getUsedSize() == slowOut.getUsedSize());
    KORVAN_REQUIRE(fuzz::same(hotMemory.data(), slowMemory.data(), room));
    KORVAN_REQUIRE(fuzz::same(record, before, fuzz::extentOf(input)));
    if (input.type.size == sizeof(cs_relay_msg::CSRelayMsg) && room != 0) {
        requireSameFromMessage(record, hotMemory, hotOut.getUsedSize(), indent, sep);
    }
    return 0;
}
