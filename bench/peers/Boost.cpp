/// Boost.Serialization: its binary archive over a stream buffer, without header and code conversion, payloads
/// and texts as binary objects. One archive serves message after message.
#include "Archive.h"

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>

namespace peers {

namespace {

constexpr unsigned FLAGS =
    boost::archive::no_header | boost::archive::no_codecvt | boost::archive::no_tracking;

struct Boost : OnRecord {
    struct Out {
        static constexpr bool READS = false;
        MemoryStream memory;
        boost::archive::binary_oarchive archive{memory, FLAGS};

        template <class T>
        void number(const T& value) {
            archive << value;
        }
        void bytes(const void* data, size_t size) { archive.save_binary(data, size); }
    };

    struct In {
        static constexpr bool READS = true;
        MemoryStream memory;
        boost::archive::binary_iarchive archive{memory, FLAGS};

        template <class T>
        void number(T& value) {
            archive >> value;
        }
        void bytes(void* data, size_t size) { archive.load_binary(data, size); }
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

void addBoost() {
    add<Boost>("boost");
}

} // namespace peers
