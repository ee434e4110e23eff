/// @file
/// Input made to cost `unpack` as much as possible for each of its bytes: malformed, cut short, or valid but
/// all small pieces. Each family comes in several sizes where it can, so that growth shows.
#ifndef KORVAN_BENCH_HOSTILE_H
#define KORVAN_BENCH_HOSTILE_H

#include <string>
#include <vector>

namespace hostile {

struct Input {
    std::string name;
    std::vector<char> wire;
};

const std::vector<Input>& all();

} // namespace hostile

#endif
