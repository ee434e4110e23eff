#include "tests/memory/Guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tests {

namespace {

constexpr char UNTOUCHED = '\x5A';

void stopUnless(bool ok, const char* what) {
    if (!ok) {
        std::perror(what);
        std::abort();
    }
}

} // namespace

std::vector<Place> allPlaces() {
    std::vector<Place> places;
    for (size_t gap = 0; gap <= MOST_GAP; ++gap) {
        places.push_back({Place::Behind, gap});
        places.push_back({Place::Before, gap});
    }
    return places;
}

std::vector<Place> flushPlaces() {
    return {{Place::Behind, 0}, {Place::Before, 0}};
}

Guarded::Guarded(size_t most) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t between = (most + MOST_GAP + page - 1) / page * page;
    mappedSize_ = between + 2 * page;
    void* const memory =
        mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    stopUnless(memory != MAP_FAILED, "mmap");
    mapped_ = static_cast<char*>(memory);
    first_ = mapped_ + page;
    end_ = first_ + between;
    block_ = first_;
    stopUnless(mprotect(mapped_, page, PROT_NONE) == 0, "mprotect");
    stopUnless(mprotect(end_, page, PROT_NONE) == 0, "mprotect");
}

Guarded::~Guarded() {
    munmap(mapped_, mappedSize_);
}

char* Guarded::place(size_t size, Place place) {
    block_ = place.side == Place::Behind ? end_ - place.gap - size : first_ + place.gap;
    blockSize_ = size;
    std::fill(block_ - watchedBefore(), block_, UNTOUCHED);
    std::fill(block_ + size, block_ + size + watchedBehind(), UNTOUCHED);
    return block_;
}

size_t Guarded::watchedBefore() const {
    return std::min<size_t>(WATCHED, static_cast<size_t>(block_ - first_));
}

size_t Guarded::watchedBehind() const {
    return std::min<size_t>(WATCHED, static_cast<size_t>(end_ - block_) - blockSize_);
}

bool Guarded::aroundIsIntact() const {
    const auto intact = [](char c) { return c == UNTOUCHED; };
    const char* const behind = block_ + blockSize_;
    return std::all_of(block_ - watchedBefore(), block_, intact) &&
           std::all_of(behind, behind + watchedBehind(), intact);
}

} // namespace tests
