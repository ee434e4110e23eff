// Compiled once for each public header and language version, with nothing included before it.
#include HEADER

struct Unpacked {
    char first;
    int second;
};
static_assert(alignof(Unpacked) == alignof(int) && sizeof(Unpacked) == 2 * sizeof(int),
              "the header leaves a packing pragma behind");

#include HEADER // once more: it guards itself
