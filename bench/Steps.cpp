/// Counts instructions: run it under callgrind. Each operation is done 10 times and then 20 times, and the
/// counter is dumped after each, under the name of the operation; the difference is what 10 of them take,
/// whatever the dump and the first calls cost. `scripts/bench --gate` reads the dumps.
#include "Hostile.h"
#include "Works.h"

#include <gnu/libc-version.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using works::Message;

constexpr size_t SHORT_RUN = 10;
constexpr size_t LONG_RUN = 20;

template <class Operation>
void repeat(size_t times, const std::string& name, Operation operation) {
    const std::string label = name + '#' + std::to_string(times);
    CALLGRIND_ZERO_STATS;
    for (size_t i = 0; i < times; ++i) {
        operation();
    }
    CALLGRIND_DUMP_STATS_AT(label.c_str());
}

template <class Operation>
void count(const std::string& name, Operation operation) {
    operation(); // what the first call alone does
    repeat(SHORT_RUN, name, operation);
    repeat(LONG_RUN, name, operation);
}

/// A failure in what is counted would count something else.
void require(int32_t result) {
    if (result != 0) {
        std::fprintf(stderr, "an operation failed: %d\n", result);
        std::exit(1);
    }
}

} // namespace

int main() {
    constexpr size_t SIZE = 4 << 20;
    char* const memory = static_cast<char*>(std::calloc(SIZE, 1));
    const auto target = std::make_unique<Message>();

    for (const works::Work& work : works::all()) {
        if (work.letter == 'G') {
            continue; // nothing that D does not show
        }
        const Message& record = *work.record;
        const std::string letter(1, work.letter);
        count("pack/" + letter, [&] { require(record.pack(memory, SIZE)); });
        count("unpack/" + letter, [&] { require(target->unpack(work.wire.data(), work.wire.size())); });
        count("text/" + letter, [&] { require(record.visualize(memory, SIZE)); });
    }

    const works::Stream& stream = works::stream();
    count("pack/F", [&] {
        size_t at = 0;
        for (const Message* message : stream.order) {
            size_t used = 0;
            require(message->pack(memory + at, SIZE - at, &used));
            at += used;
        }
    });
    count("unpack/F", [&] {
        size_t at = 0;
        while (at < stream.wire.size()) {
            size_t used = 0;
            require(target->unpack(stream.wire.data() + at, stream.wire.size() - at, &used));
            at += used;
        }
    });
    count("text/F", [&] {
        for (const Message* message : stream.order) {
            require(message->visualize(memory, SIZE));
        }
    });

    for (const hostile::Input& input : hostile::all()) {
        count("hostile/" + input.name, [&] { (void)target->unpack(input.wire.data(), input.wire.size()); });
        std::printf("hostile\t%s\t%zu\t%d\n", input.name.c_str(), input.wire.size(),
                    target->unpack(input.wire.data(), input.wire.size()));
    }
    std::printf("compiler\t%s\nflags\t%s\nlibc\t%s\n", KORVAN_BENCH_COMPILER, KORVAN_BENCH_FLAGS,
                gnu_get_libc_version());
    std::free(memory);
    return 0;
}
