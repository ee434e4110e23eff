// What unpacks is whole: it packs again, and renders.
//
// Holds, if unpack succeeds: packed with the version that was received, the record gives exactly the bytes
// that were consumed, in a buffer of exactly that size; in one byte less it does not fit. It renders without
// a failure. The same through the operations over plain memory of the message. Nothing of it comes from
// memory that was never set (MemorySanitizer sees that): the record is forgotten before.
#include "fuzz/Case.h"
#include "fuzz/Memory.h"
#include "fuzz/Require.h"
#include "fuzz/Target.h"
#include "protocol/cs_relay_msg.h"
#include "tests/support/Sites.h"

#include <vector>

using namespace Korvan;
using cs_relay_msg::CSRelayMsg;

namespace {

bool isMessage(const fuzz::Case& input) {
    return input.type.size == sizeof(CSRelayMsg);
}

/// Pack looks at the last byte of a text's array, set or not, to see whether it must store a NUL there: the
/// one byte behind a text of which it may know nothing. Its result is the same for any value.
void acceptLastBytes(const fuzz::Case& input, const char* record) {
    for (const tests::Site& site : tests::sitesOf(input.type, record, input.cutVer)) {
        if (site.field->kind == cs_relay_msg::schema::Kind::String) {
            fuzz::accept(record + site.memory + site.field->bound - 1, 1);
        }
    }
}

/// A message tells its version; of any other record the receiver knows it.
uint32_t versionReceived(const fuzz::Case& input) {
    return isMessage(input) ? static_cast<uint8_t>(input.wire[8]) : input.cutVer;
}

void renderWhole(const fuzz::Case& input, const char* record) {
    static std::vector<char> text(4096);
    for (;;) {
        BixWriteBuf out(text.data(), text.size());
        const int32_t code = input.type.visualize(record, out, 0, '\n');
        if (code == BIX_OK) {
            fuzz::requireSet(text.data(), out.getUsedSize() + 1);
            KORVAN_REQUIRE(text[out.getUsedSize()] == '\0');
            return;
        }
        KORVAN_REQUIRE(code == BIX_ERR_WRITE_OVERFLOW);
        KORVAN_REQUIRE(text.size() < (64u << 20));
        text.resize(text.size() * 4);
    }
}

void overPlainMemory(const fuzz::Case& input, const char* record, const fuzz::Block& packed) {
    const auto& message = *reinterpret_cast<const CSRelayMsg*>(record);
    fuzz::Block out(packed.size());
    size_t used = 0;
    KORVAN_REQUIRE(message.pack(out.data(), out.size(), &used, versionReceived(input)) == BIX_OK);
    KORVAN_REQUIRE(used == packed.size());
    KORVAN_REQUIRE(fuzz::same(out.data(), packed.data(), used));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < fuzz::Case::HEADER) {
        return 0;
    }
    const fuzz::Case input(data, size);
    char* const record = fuzz::recordOf(input.type);
    fuzz::forget(record, fuzz::extentOf(input));
    BixReadBuf in(input.wire, input.size);
    if (input.type.unpack(record, in, input.cutVer) != BIX_OK) {
        return 0;
    }
    acceptLastBytes(input, record);
    const size_t used = in.getUsedSize();
    fuzz::Block packed(used);
    BixWriteBuf out(packed.data(), packed.size());
    KORVAN_REQUIRE(input.type.pack(record, out, versionReceived(input)) == BIX_OK);
    KORVAN_REQUIRE(out.getUsedSize() == used);
    fuzz::requireSet(packed.data(), used);
    KORVAN_REQUIRE(fuzz::same(packed.data(), input.wire, used));

    fuzz::Block shorter(used - 1);
    BixWriteBuf tooShort(shorter.data(), shorter.size());
    KORVAN_REQUIRE(input.type.pack(record, tooShort, versionReceived(input)) == BIX_ERR_WRITE_OVERFLOW);

    renderWhole(input, record);
    if (isMessage(input)) {
        overPlainMemory(input, record, packed);
    }
    return 0;
}
