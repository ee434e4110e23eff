/// The plain path: each field through the buffer's operations.
#include "Run.h"

#include "FieldByField.h"

namespace run {

void addPlain() {
    const auto pack = [](const works::Message& record, char* memory, size_t size) {
        Korvan::BixWriteBuf out(memory, size);
        return by_field::pack(record, out) == 0 ? out.getUsedSize() : 0;
    };
    const auto unpack = [](works::Message& record, const char* memory, size_t size) {
        Korvan::BixReadBuf in(memory, size);
        return by_field::unpack(record, in) == 0 ? in.getUsedSize() : 0;
    };
    for (const works::Work& work : works::all()) {
        packs("by-field", work, pack);
        unpacks("by-field", work, unpack);
    }
    packsStream("by-field", pack);
    unpacksStream("by-field", unpack);
}

} // namespace run
