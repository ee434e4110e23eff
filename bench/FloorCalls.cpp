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

size_t TextFloorCall::heartBeat(const Message& m, char* to, size_t room) {
    return TextFloor::heartBeat(m, to, room);
}
size_t TextFloorCall::input(const Message& m, char* to, size_t room) {
    return TextFloor::input(m, to, room);
}
size_t TextFloorCall::framePack(const Message& m, char* to, size_t room) {
    return TextFloor::framePack(m, to, room);
}

} // namespace floors
