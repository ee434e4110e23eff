// Ends by a failed assertion, whose report names the operation, the header and the condition, also where the
// header is an installed one.
#undef NDEBUG
#include "Common/Source/Core/BIX/BixBuf.h"

int main() {
    char memory[4];
    Korvan::BixWriteBuf buffer(memory, sizeof(memory));
    buffer.position = buffer.length + 1;
    return buffer.writeUInt16(1);
}
