/// The codec through its public functions.
#include "Run.h"

namespace run {

namespace {

using works::Message;

const auto PACK = [](const Message& record, char* memory, size_t size) {
    size_t used = 0;
    return record.pack(memory, size, &used) == 0 ? used : 0;
};

const auto UNPACK = [](Message& record, const char* memory, size_t size) {
    size_t used = 0;
    return record.unpack(memory, size, &used) == 0 ? used : 0;
};

const auto RENDER = [](const Message& record, char* memory, size_t size) {
    size_t used = 0;
    return record.visualize(memory, size, &used) == 0 ? used : 0;
};

/// `construct` against the library's fill of the same size.
template <class Record>
void constructs(const std::string& what) {
    static const auto record = std::make_unique<Record>();
    Record* const at = record.get();
    std::memset(static_cast<void*>(at), 0x5A, sizeof(Record));
    require(at->construct() == 0, what, "does not construct");
    measure("construct/" + what + "/codec", sizeof(Record), [at] { return at->construct(); });
    measure("construct/" + what + "/memset", sizeof(Record), [at] {
        size_t size = sizeof(Record);
        benchmark::DoNotOptimize(size); // as in the codec, a call of the library
        return std::memset(static_cast<void*>(at), 0, size);
    });
}

} // namespace

void addCodec() {
    for (const works::Work& work : works::all()) {
        packs("codec", work, PACK);
        unpacks("codec", work, UNPACK);
        renders("codec", work, RENDER);
        const char* const wire = work.wire.data();
        const size_t size = work.wire.size();
        char* const memory = output();
        measure(name("pack", work.letter, "memcpy"), size, [=] { return std::memcpy(memory, wire, size); });
    }
    packsStream("codec", PACK);
    unpacksStream("codec", UNPACK);
    const works::Stream& stream = works::stream();
    const char* const wire = stream.wire.data();
    const size_t size = stream.wire.size();
    char* const memory = output();
    measure(name("pack", 'F', "memcpy"), size, [=] { return std::memcpy(memory, wire, size); });
    constructs<cs_relay_msg::CSRelayFramePack>("framepack");
    constructs<cs_relay_msg::CSRelayMsgBody>("union");
}

} // namespace run
