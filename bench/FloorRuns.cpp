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

template <class F>
void addFloor(const std::string& who, bool exact) {
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

template <class F>
void addTextFloor(const std::string& who) {
    for (const Work& work : works::all()) {
        switch (work.letter) {
        case 'A':
            renders(who, work, KORVAN_BENCH_FLOOR(heartBeat));
            break;
        case 'C':
            renders(who, work, KORVAN_BENCH_FLOOR(input));
            break;
        case 'D':
            renders(who, work, KORVAN_BENCH_FLOOR(framePack));
            break;
        default:
            break;
        }
    }
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
    addTextFloor<floors::TextFloor>("floor");
    addTextFloor<floors::TextFloorCall>("floor.call");
}

} // namespace run
