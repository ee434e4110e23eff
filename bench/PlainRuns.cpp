/// The plain path: each field through the buffer's operations.
#include "Run.h"

#include "../tests/plain/PlainCodec.h"
#include "FieldByField.h"

namespace run {

namespace {

template <class Pack, class Unpack>
void addPath(const std::string& who, Pack pack, Unpack unpack) {
    const auto packFlat = [pack](const works::Message& record, char* memory, size_t size) {
        Korvan::BixWriteBuf out(memory, size);
        return pack(record, out) == 0 ? out.getUsedSize() : 0;
    };
    const auto unpackFlat = [unpack](works::Message& record, const char* memory, size_t size) {
        Korvan::BixReadBuf in(memory, size);
        return unpack(record, in) == 0 ? in.getUsedSize() : 0;
    };
    for (const works::Work& work : works::all()) {
        packs(who, work, packFlat);
        unpacks(who, work, unpackFlat);
    }
    packsStream(who, packFlat);
    unpacksStream(who, unpackFlat);
}

} // namespace

void addPlain() {
    addPath(
        "by-field",
        [](const works::Message& record, Korvan::BixWriteBuf& out) { return by_field::pack(record, out); },
        [](works::Message& record, Korvan::BixReadBuf& in) { return by_field::unpack(record, in); });
    namespace schema = cs_relay_msg::schema;
    namespace plain = cs_relay_msg::plain;
    static const schema::Type& type = *schema::types()[schema::types().size - 1]; // the message stands last
    addPath(
        "plain",
        [](const works::Message& record, Korvan::BixWriteBuf& out) {
            return plain::pack(type, &const_cast<works::Message&>(record), out, 0);
        },
        [](works::Message& record, Korvan::BixReadBuf& in) { return plain::unpack(type, &record, in, 0); });
    for (const works::Work& work : works::all()) {
        renders("plain", work, [](const works::Message& record, char* memory, size_t size) {
            Korvan::BixWriteBuf out(memory, size);
            return plain::visualize(type, &record, out, 0, '\n') == 0 ? out.getUsedSize() : 0;
        });
    }
}

} // namespace run
