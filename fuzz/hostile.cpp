// Any bytes, into the message and into every record type, at every version.
//
// Holds: unpack returns one of its codes, stays inside the bytes given and leaves them alone. Whatever it
// leaves in the record, after a failure too, can be packed and rendered: with one of their codes, and not a
// byte behind the buffer. The same input gives the same result twice. (Byte 2 and 3: the buffer's size.)
#include "fuzz/Case.h"
#include "fuzz/Memory.h"
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "tests/stream/Oracle.h"

using namespace Korvan;

namespace {

constexpr size_t MOST_SCANNED = 300; ///< bytes: at each cut there is an unpack, or several

bool isUnpackResult(int32_t code) {
    return code == BIX_OK || code == BIX_ERR_READ_UNDERFLOW || code == BIX_ERR_STRING_TOO_LONG ||
           code == BIX_ERR_STRING_EMPTY || code == BIX_ERR_STRING_MALFORMED ||
           code == BIX_ERR_COUNT_OUT_OF_RANGE || code == BIX_ERR_VERSION_OUT_OF_RANGE;
}

bool isWriteResult(int32_t code) {
    return code == BIX_OK || code == BIX_ERR_WRITE_OVERFLOW || code == BIX_ERR_COUNT_OUT_OF_RANGE;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::Case::HEADER) {
        return 0;
    }
    const fuzz::Case input(data, size);
    const fuzz::Block wire(input.wire, input.size);
    char* const record = fuzz::recordOf(input.type);
    fuzz::fillWithNoise(input, record);

    BixReadBuf in(wire.data(), wire.size());
    const int32_t code = input.type.unpack(record, in, input.cutVer);
    KORVAN_REQUIRE(isUnpackResult(code));
    KORVAN_REQUIRE(in.getUsedSize() <= wire.size());
    KORVAN_REQUIRE(fuzz::same(wire.data(), input.wire, wire.size()));

    if (input.type.size == sizeof(cs_relay_msg::CSRelayMsg) && input.size <= MOST_SCANNED) {
        static oracle::Oracle oracle;
        KORVAN_REQUIRE(oracle::scanAgrees(oracle, wire.data(), wire.size(), input.number));
    }

    BixReadBuf again(wire.data(), wire.size());
    KORVAN_REQUIRE(input.type.unpack(record, again, input.cutVer) == code);
    KORVAN_REQUIRE(again.getUsedSize() == in.getUsedSize());

    fuzz::Block out(input.number % 4096);
    BixWriteBuf packed(out.data(), out.size());
    KORVAN_REQUIRE(isWriteResult(input.type.pack(record, packed, input.cutVer)));
    KORVAN_REQUIRE(packed.getUsedSize() <= out.size());

    BixWriteBuf text(out.data(), out.size());
    KORVAN_REQUIRE(isWriteResult(input.type.visualize(record, text, 0, '\n')));
    KORVAN_REQUIRE(text.getUsedSize() <= out.size());
    return 0;
}
