/// cereal: its binary archive, the fastest of its archives, payloads and texts as binary data. Archive and
/// stream are used for message after message.
#include "Archive.h"

#include <cereal/archives/binary.hpp>

#include <istream>
#include <ostream>

namespace peers {

namespace {

struct Cereal : OnRecord {
    struct Out {
        static constexpr bool READS = false;
        MemoryStream memory;
        std::ostream stream{&memory};
        cereal::BinaryOutputArchive archive{stream};

        template <class T>
        void number(T& value) {
            archive(value);
        }
        void bytes(const void* data, size_t size) { archive(cereal::binary_data(data, size)); }
    };

    struct In {
        static constexpr bool READS = true;
        MemoryStream memory;
        std::istream stream{&memory};
        cereal::BinaryInputArchive archive{stream};

        template <class T>
        void number(T& value) {
            archive(value);
        }
        void bytes(void* data, size_t size) { archive(cereal::binary_data(data, size)); }
    };

    size_t pack(const Message& m, char* memory, size_t size) {
        out.memory.write(memory, size);
        return Walk<Out>{out}.message(m) ? out.memory.written() : 0;
    }

    bool unpack(Message& m, const char* memory, size_t size) {
        in.memory.read(memory, size);
        return Walk<In>{in}.message(m);
    }

    Out out;
    In in;
};

} // namespace

void addCereal() {
    add<Cereal>("cereal");
}

} // namespace peers
