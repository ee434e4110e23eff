// Uses every operation of the buffers. Compiled with and without assertions and without optimisation, so that
// whatever a compiler does not inline becomes a symbol; see shared_symbols.cmake.
#include "tests/buffer_operations.h"

int CLIENT_FUNCTION(BixWriteBuf& out, BixReadBuf& in) {
    int sum = 0;
    for (const WriteOperation& operation : WRITE_OPERATIONS) {
        sum += operation.run(out);
    }
    for (const ReadOperation& operation : READ_OPERATIONS) {
        sum += operation.run(in);
    }
    char memory[1] = {};
    BixWriteBuf other(memory, sizeof(memory));
    other._set(nullptr, 0);
    other._free();
    in.set(memory, sizeof(memory));
    return sum +
           static_cast<int>(in.getLeftSize() + in.getUsedSize() + other.getUsedSize() +
                            other.getTotalSize()) +
           (other.getBeginPtr() != nullptr ? 1 : 0);
}
