/// In a fixed memory budget: no heap, no exceptions, no half-megabyte record. A head and one member are
/// enough to pack and unpack a message, byte for byte the same.
#include "protocol/Stream.h"

#include <cstdio>

using namespace cs_relay_msg;

namespace {

/// All that this program needs, whatever arrives.
struct Memory {
    CSRelayMsgHead head;
    CSRelayInput input;
    char wire[CSRelayMsgHead::maxWireSize + CSRelayInput::maxWireSize];
};
Memory memory;
static_assert(sizeof(Memory) <= 2200, "the budget");

/// Handles one datagram: the head tells which record is needed, before one is filled.
void receive(const char* bytes, size_t size) {
    const int32_t result = unpackHead(memory.head, bytes, size);
    if (result != BIX_OK) {
        std::printf("dropped: %s\n", Korvan::resultName(result));
    } else if (unpackMessage(memory.head, memory.input, bytes, size) == BIX_OK) {
        std::printf("input of %u bytes, %u times\n", unsigned{memory.input.stRelayData.wRelayLen},
                    unsigned{memory.input.bRepeatCount});
    } else { // OTHER_COMMAND, or an input that is cut short
        std::printf("not an input: command %u\n", unsigned{memory.head.bCmdId});
    }
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // else its buffer comes from the heap
    memory.head.construct();
    memory.head.bCmdId = cmd::stRelayInputing;
    memory.input.construct();
    memory.input.bRepeatCount = 2;
    size_t size = 0;
    if (setBytes(memory.input.stRelayData, &CSRelayData::szRelayBuf, "jump", 4) != BIX_OK ||
        packMessage(memory.head, memory.input, memory.wire, sizeof(memory.wire), &size) != BIX_OK) {
        return 1;
    }
    std::printf("%zu bytes of memory, %zu bytes to send\n", sizeof(Memory), size);
    receive(memory.wire, size);

    memory.wire[schema::COMMAND_BYTE] = static_cast<char>(cmd::stRelayLoginRes);
    receive(memory.wire, size);
    receive(memory.wire, 5);
    return 0;
}
