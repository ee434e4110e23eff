#include "Floors.h"

#include "TextFloor.h"

namespace floors {

#define KORVAN_BENCH_CALL(name)                                                                              \
    template <class Payload>                                                                                 \
    size_t FloorCall<Payload>::pack##name(const Message& m, char* to, size_t room) {                         \
        return Floor<Payload>::pack##name(m, to, room);                                                      \
    }                                                                                                        \
    template <class Payload>                                                                                 \
    size_t FloorCall<Payload>::unpack##name(Message& m, const char* from, size_t room) {                     \
        return Floor<Payload>::unpack##name(m, from, room);                                                  \
    }

KORVAN_BENCH_CALL(HeartBeat)
KORVAN_BENCH_CALL(Login)
KORVAN_BENCH_CALL(Input)
KORVAN_BENCH_CALL(FramePack)
KORVAN_BENCH_CALL(Statistics)
KORVAN_BENCH_CALL(Any)

#undef KORVAN_BENCH_CALL

template struct FloorCall<LibraryCopy>;
template struct FloorCall<ExactMoves>;
template struct FloorCall<WideMove>;

#define KORVAN_BENCH_CALL(name)                                                                              \
    size_t TextFloorCall::name(const Message& m, char* to, size_t room, int indent, char sep) {              \
        return TextFloor::name(m, to, room, indent, sep);                                                    \
    }                                                                                                        \
    size_t FixedTextFloorCall::name(const Message& m, char* to, size_t room) {                               \
        return FixedTextFloor::name(m, to, room);                                                            \
    }

KORVAN_BENCH_CALL(heartBeat)
KORVAN_BENCH_CALL(input)
KORVAN_BENCH_CALL(framePack)

#undef KORVAN_BENCH_CALL

} // namespace floors
