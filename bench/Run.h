/// @file
/// Registers one thing to be measured under a name: what is done, on which work, by whom, as in
/// "pack/D/codec".
///
/// A contender is run once before it is measured and must have made the same bytes, record or text as the
/// codec; the program ends if it has not.
#ifndef KORVAN_BENCH_RUN_H
#define KORVAN_BENCH_RUN_H

#include "Works.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace run {

inline std::string name(const char* action, char letter, const std::string& who) {
    return std::string(action) + '/' + letter + '/' + who;
}

[[noreturn]] inline void refuse(const std::string& name, const char* why) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), why);
    std::exit(1);
}

inline void require(bool equal, const std::string& name, const char* why) {
    if (!equal) {
        refuse(name, why);
    }
}

/// Measures @p operation, which returns something that depends on its work. @p bytes is the size of what it
/// makes or reads, on the wire or as text.
template <class Operation>
void measure(const std::string& name, size_t bytes, Operation operation) {
    benchmark::RegisterBenchmark(name.c_str(), [operation, bytes](benchmark::State& state) {
        Operation local = operation; // in registers, whatever memory is clobbered
        for (auto _ : state) {
            benchmark::DoNotOptimize(local());
            benchmark::ClobberMemory();
        }
        state.counters["bytes"] = static_cast<double>(bytes);
    });
}

inline constexpr size_t OUTPUT_SIZE =
    8 * works::Message::maxWireSize; // the text of G takes six times its wire

/// Memory for the results, shared by all contenders: one message or text at a time is made in it.
inline char* output() {
    // Not at the page offset of the records: stores there would seem to hit the loads that follow.
    constexpr size_t OFFSET = 2048 + 64;
    static char* const memory = static_cast<char*>(std::calloc(OUTPUT_SIZE + OFFSET, 1)) + OFFSET;
    return memory;
}

/// The record into which the contenders for our own wire decode.
inline works::Message& target() {
    static const works::MessagePtr message = std::make_unique<works::Message>();
    return *message;
}

/// Measures a contender that packs our own wire. @p pack(record, memory, size) returns the bytes made.
template <class Pack>
void packs(const std::string& who, const works::Work& work, Pack pack) {
    const std::string title = name("pack", work.letter, who);
    const works::Message* const record = work.record.get();
    char* const memory = output();
    const size_t size = work.wire.size();
    // Exactly the room that is needed, and a guard behind it.
    std::memset(memory, 0x5A, size + 32);
    require(pack(*record, memory, size) == size && std::memcmp(memory, work.wire.data(), size) == 0, title,
            "packs other bytes than the codec");
    measure(title, size, [=] { return pack(*record, memory, OUTPUT_SIZE); });
}

/// Measures a contender that unpacks our own wire. @p unpack(record, memory, size) returns the bytes used.
/// One that is not @p exact may change bytes of the record that are not on the wire.
template <class Unpack>
void unpacks(const std::string& who, const works::Work& work, Unpack unpack, bool exact = true) {
    const std::string title = name("unpack", work.letter, who);
    works::Message* const record = &target();
    const char* const wire = work.wire.data();
    const size_t size = work.wire.size();
    const auto expected = std::make_unique<works::Message>();
    std::memset(static_cast<void*>(expected.get()), 0x5A, sizeof(*expected));
    std::memset(static_cast<void*>(record), 0x5A, sizeof(*record));
    require(expected->unpack(wire, size) == 0 && unpack(*record, wire, size) == size, title,
            "does not unpack");
    if (exact) {
        require(std::memcmp(record, expected.get(), sizeof(*record)) == 0, title,
                "unpacks another record than the codec");
    }
    require(record->pack(output(), OUTPUT_SIZE) == 0 && std::memcmp(output(), wire, size) == 0, title,
            "unpacks other content than the codec");
    measure(title, size, [=] { return unpack(*record, wire, size); });
}

/// Measures a contender that renders our own text. @p render(record, memory, size) returns the characters.
template <class Render>
void renders(const std::string& who, const works::Work& work, Render render) {
    const std::string title = name("text", work.letter, who);
    const works::Message* const record = work.record.get();
    char* const memory = output();
    const size_t size = work.text.size();
    require(render(*record, memory, OUTPUT_SIZE) == size && std::memcmp(memory, work.text.data(), size) == 0,
            title, "renders another text than the codec");
    measure(title, size, [=] { return render(*record, memory, OUTPUT_SIZE); });
}

/// Measures packing of the stream. @p pack(record, memory, size) appends one message, returns its bytes.
template <class Pack>
void packsStream(const std::string& who, Pack pack) {
    const std::string title = name("pack", 'F', who);
    const works::Stream& stream = works::stream();
    const works::Message* const* const order = stream.order.data();
    const size_t count = stream.order.size();
    char* const memory = output();
    const auto operation = [=] {
        size_t used = 0;
        for (size_t i = 0; i < count; ++i) {
            used += pack(*order[i], memory + used, OUTPUT_SIZE - used);
        }
        return used;
    };
    require(operation() == stream.wire.size() &&
                std::memcmp(memory, stream.wire.data(), stream.wire.size()) == 0,
            title, "packs other bytes than the codec");
    measure(title, stream.wire.size(), operation);
}

/// Measures unpacking of the stream, each message into the same record.
template <class Unpack>
void unpacksStream(const std::string& who, Unpack unpack) {
    const std::string title = name("unpack", 'F', who);
    const works::Stream& stream = works::stream();
    const char* const wire = stream.wire.data();
    const size_t size = stream.wire.size();
    works::Message* const record = &target();
    size_t used = 0;
    for (const works::Message* source : stream.order) {
        used += unpack(*record, wire + used, size - used);
        size_t length = 0;
        size_t sourceLength = 0;
        require(record->pack(output(), OUTPUT_SIZE / 2, &length) == 0 &&
                    source->pack(output() + OUTPUT_SIZE / 2, OUTPUT_SIZE / 2, &sourceLength) == 0 &&
                    length == sourceLength && std::memcmp(output(), output() + OUTPUT_SIZE / 2, length) == 0,
                title, "unpacks other content than the codec");
    }
    require(used == size, title, "does not unpack");
    measure(title, size, [=] {
        size_t at = 0;
        while (at < size) {
            const size_t length = unpack(*record, wire + at, size - at);
            benchmark::DoNotOptimize(record);
            benchmark::ClobberMemory();
            if (length == 0) {
                break;
            }
            at += length;
        }
        return at;
    });
}

// Each group of contenders registers itself through one of these.

void addCodec();
void addFloors();
void addPlain();
void addSeries();
void addPeers();

} // namespace run

#endif
