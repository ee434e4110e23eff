// The largest indentation there is, with memory for it: more than 4 GiB of room, most of it the same few
// pages.
#include "protocol/cs_relay_msg.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

/// So many bytes of addresses over one block of memory that repeats.
class Repeated {
public:
    static constexpr size_t BLOCK = size_t{1} << 21;

    explicit Repeated(uint64_t size) {
        if (sizeof(size_t) < sizeof(uint64_t) || (file_ = std::tmpfile()) == nullptr ||
            ftruncate(fileno(file_), BLOCK) != 0) {
            return;
        }
        size_ = (static_cast<size_t>(size) / BLOCK + 1) * BLOCK;
        void* const place =
            mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (place == MAP_FAILED) {
            return;
        }
        data_ = static_cast<char*>(place);
        for (size_t at = 0; at < size_; at += BLOCK) {
            if (mmap(data_ + at, BLOCK, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fileno(file_), 0) ==
                MAP_FAILED) {
                munmap(data_, size_);
                data_ = nullptr;
                return;
            }
        }
    }
    ~Repeated() {
        if (data_ != nullptr) {
            munmap(data_, size_);
        }
        if (file_ != nullptr) {
            std::fclose(file_);
        }
    }
    Repeated(const Repeated&) = delete;
    Repeated& operator=(const Repeated&) = delete;

    char* data() const { return data_; } ///< null where this cannot be had

private:
    std::FILE* file_ = nullptr;
    size_t size_ = 0;
    char* data_ = nullptr;
};

} // namespace

TEST(Indentation, IsOneLevelMoreForWhatARecordContains) {
    const auto input = std::make_unique<cs_relay_msg::CSRelayInput>();
    input->construct();
    char text[200];
    ASSERT_EQ(input->visualize(text, sizeof(text), nullptr, 1), 0);
    EXPECT_EQ(std::string(text).substr(0, 36), "  [stRelayData]\n    [dwObjectId]: 0\n");
}

TEST(Indentation, AtTheLargestIsThatOfWhatARecordContainsAsWell) {
    constexpr uint64_t blanks = uint64_t{INT_MAX} * 2;
    constexpr uint64_t room = blanks + 100; // for the first line, the header of a record, and no other
    const std::string header = "[stRelayData]\n";
    const Repeated memory(room);
    if (memory.data() == nullptr) {
        GTEST_SKIP() << "no such memory here";
    }
    const auto input = std::make_unique<cs_relay_msg::CSRelayInput>();
    input->construct();
    size_t used = 0;
    EXPECT_EQ(input->visualize(memory.data(), static_cast<size_t>(room), &used, INT_MAX), -1);
    ASSERT_EQ(used, blanks + header.size());
    EXPECT_EQ(std::string(memory.data() + used - header.size(), header.size()), header);
    EXPECT_EQ(memory.data()[used], ' ') << "the next line is indented, too";
}
