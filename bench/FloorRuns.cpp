/// The floors, inlined and as calls.
#include "Run.h"

#include "Floors.h"
#include "TextFloor.h"

namespace run {

namespace {

using works::Message;
using works::Work;

// Lambdas, since a function's address would make the inlined floor a call.
#define KORVAN_BENCH_FLOOR(operation)                                                                        \
    [](auto& record, auto* memory, size_t size) { return F::operation(record, memory, size); }

/// Payloads of all small lengths, of which the works have but a few: the same bytes, and the same record
/// back.
template <class F>
void requireLengths(const std::string& who, bool exact) {
    constexpr uint16_t LONGEST = 80;
    const auto expected = std::make_unique<Message>();
    for (uint16_t length = 0; length <= LONGEST; ++length) {
        const Work work = works::make('C', works::makeInput(length));
        const size_t size = work.wire.size();
        std::memset(output(), 0x5A, size + 64);
        require(F::packInput(*work.record, output(), size) == size &&
                    std::memcmp(output(), work.wire.data(), size) == 0 && output()[size] == 0x5A &&
                    F::packInput(*work.record, output(), size - 1) == 0,
                who, "packs other bytes than the codec");
        std::memset(static_cast<void*>(expected.get()), 0x5A, sizeof(Message));
        std::memset(static_cast<void*>(&target()), 0x5A, sizeof(Message));
        require(expected->unpack(work.wire.data(), size) == 0 &&
                    F::unpackInput(target(), work.wire.data(), size) == size &&
                    F::unpackInput(target(), work.wire.data(), size - 1) == 0,
                who, "does not unpack");
        require(!exact || std::memcmp(&target(), expected.get(), sizeof(Message)) == 0, who,
                "unpacks another record than the codec");
    }
}

template <class F>
void addFloor(const std::string& who, bool exact) {
    requireLengths<F>(who, exact);
    for (const Work& work : works::all()) {
        switch (work.letter) {
        case 'A':
            packs(who, work, KORVAN_BENCH_FLOOR(packHeartBeat));
            unpacks(who, work, KORVAN_BENCH_FLOOR(unpackHeartBeat), exact);
            break;
        case 'B':
            packs(who, work, KORVAN_BENCH_FLOOR(packLogin));
            unpacks(who, work, KORVAN_BENCH_FLOOR(unpackLogin), exact);
            break;
        case 'C':
            packs(who, work, KORVAN_BENCH_FLOOR(packInput));
            unpacks(who, work, KORVAN_BENCH_FLOOR(unpackInput), exact);
            break;
        case 'E':
            packs(who, work, KORVAN_BENCH_FLOOR(packStatistics));
            unpacks(who, work, KORVAN_BENCH_FLOOR(unpackStatistics), exact);
            break;
        default:
            packs(who, work, KORVAN_BENCH_FLOOR(packFramePack));
            unpacks(who, work, KORVAN_BENCH_FLOOR(unpackFramePack), exact);
            break;
        }
    }
    packsStream(who, KORVAN_BENCH_FLOOR(packAny));
    unpacksStream(who, KORVAN_BENCH_FLOOR(unpackAny));
}

template <class HeartBeat, class Input, class FramePack>
void addTextFloor(const std::string& who, HeartBeat heartBeat, Input input, FramePack framePack) {
    for (const Work& work : works::all()) {
        switch (work.letter) {
        case 'A':
            renders(who, work, heartBeat);
            break;
        case 'C':
            renders(who, work, input);
            break;
        case 'D':
            renders(who, work, framePack);
            break;
        default:
            break;
        }
    }
}

template <class F>
void addFixedTextFloor(const std::string& who) {
    addTextFloor(who, KORVAN_BENCH_FLOOR(heartBeat), KORVAN_BENCH_FLOOR(input),
                 KORVAN_BENCH_FLOOR(framePack));
}

#undef KORVAN_BENCH_FLOOR

// The layout is not known beforehand, though it is the same each time.
#define KORVAN_BENCH_FLOOR(operation)                                                                        \
    [](auto& record, auto* memory, size_t size) {                                                            \
        int indent = 0;                                                                                      \
        char sep = '\n';                                                                                     \
        benchmark::DoNotOptimize(indent);                                                                    \
        benchmark::DoNotOptimize(sep);                                                                       \
        return F::operation(record, memory, size, indent, sep);                                              \
    }

/// The codec's text in layouts other than the measured one.
template <class Render>
void requireLayouts(const works::Work& work, Render render) {
    struct Layout {
        int indent;
        char sep;
    };
    for (const Layout layout : {Layout{-1, ' '}, Layout{3, '\n'}, Layout{20, '|'}}) {
        char* const mine = output();
        char* const theirs = output() + OUTPUT_SIZE / 2;
        size_t size = 0;
        require(work.record->visualize(theirs, OUTPUT_SIZE / 2, &size, layout.indent, layout.sep) == 0 &&
                    render(*work.record, mine, OUTPUT_SIZE / 2, layout.indent, layout.sep) == size &&
                    std::memcmp(mine, theirs, size + 1) == 0,
                "text floor", "renders another text than the codec");
    }
}

template <class F>
void addAnyTextFloor(const std::string& who) {
    addTextFloor(who, KORVAN_BENCH_FLOOR(heartBeat), KORVAN_BENCH_FLOOR(input),
                 KORVAN_BENCH_FLOOR(framePack));
}

#undef KORVAN_BENCH_FLOOR

} // namespace

void addFloors() {
    addFloor<floors::Floor<floors::LibraryCopy>>("F1", true);
    addFloor<floors::FloorCall<floors::LibraryCopy>>("F1.call", true);
    addFloor<floors::Floor<floors::ExactMoves>>("F1+", true);
    addFloor<floors::FloorCall<floors::ExactMoves>>("F1+.call", true);
    addFloor<floors::Floor<floors::WideMove>>("F1w", false);
    addFloor<floors::FloorCall<floors::WideMove>>("F1w.call", false);
    for (const Work& work : works::all()) {
        if (work.letter == 'A') {
            requireLayouts(work, floors::TextFloorCall::heartBeat);
        } else if (work.letter == 'C') {
            requireLayouts(work, floors::TextFloorCall::input);
        } else if (work.letter == 'D') {
            requireLayouts(work, floors::TextFloorCall::framePack);
        }
    }
    addAnyTextFloor<floors::TextFloor>("floor");
    addAnyTextFloor<floors::TextFloorCall>("floor.call");
    addFixedTextFloor<floors::FixedTextFloor>("fixed");
    addFixedTextFloor<floors::FixedTextFloorCall>("fixed.call");
}

} // namespace run
