// No operation allocates: every way to the allocator is counted, in the standard library's own code too.
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/support/RecordTypes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {
long allocatorCalls = 0;
}

// The C library lets a program put its own allocator in front, and keeps its own under these names.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) {
    ++allocatorCalls;
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    ++allocatorCalls;
    return __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
    ++allocatorCalls;
    return __libc_realloc(block, size);
}
void free(void* block) {
    ++allocatorCalls;
    __libc_free(block);
}
}

using namespace cs_relay_msg;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

namespace {

/// The calls of the allocator while @p run runs.
template <class Run>
long calls(Run run) {
    const long before = allocatorCalls;
    run();
    return allocatorCalls - before;
}

char memory[1 << 20];

template <class T>
class NoAllocation : public testing::Test {};

TYPED_TEST_SUITE(NoAllocation, tests::RecordTypes, tests::RecordNames);

/// Every operation, with room and without.
template <class T>
void everyOperation(T& record) {
    size_t used = 0;
    record.construct();
    record.pack(memory, sizeof(memory), &used);
    record.pack(memory, used - 1);
    record.pack(nullptr, 0);
    record.pack(memory, sizeof(memory), &used);
    record.unpack(memory, used);
    record.unpack(memory, used - 1);
    record.visualize(memory, sizeof(memory), &used, 3);
    record.visualize(memory, used / 2, nullptr, 3);
    record.visualize_ex(memory, sizeof(memory));
    record.visualize_ex(memory, 10);
    BixWriteBuf out(memory, sizeof(memory));
    record.pack(out, 1);
    record.visualize(out);
    record.visualize_ex(out, -1, ' ');
    BixReadBuf in(memory, sizeof(memory));
    record.unpack(in, 1);
}

} // namespace

TEST(AllocationCounter, SeesEveryWay) {
    EXPECT_GE(calls([] { ::operator delete(::operator new(16)); }), 2);
    EXPECT_GE(calls([] { std::free(std::realloc(std::calloc(1, 8), 64)); }), 3);
    EXPECT_GE(calls([] {
                  volatile int width = 100000; // bounded printing allocates for such a width
                  std::snprintf(memory, sizeof(memory), "%0*.*f", width, width, 1.0);
              }),
              1);
}

TYPED_TEST(NoAllocation, InAnyOperation) {
    auto record = std::make_unique<TypeParam>();
    EXPECT_EQ(calls([&] { everyOperation(*record); }), 0);
}

TEST(NoAllocationOfTheUnion, ForAnySelector) {
    auto body = std::make_unique<CSRelayMsgBody>();
    EXPECT_EQ(calls([&] {
                  for (int selector = -1; selector <= 256; ++selector) {
                      size_t used = 0;
                      body->construct();
                      body->construct(selector);
                      body->pack(selector, memory, sizeof(memory), &used);
                      body->unpack(selector, memory, used);
                      body->visualize(selector, memory, sizeof(memory));
                  }
              }),
              0);
}

TEST(NoAllocationOfFullRecords, OfTheLargestSize) {
    auto message = std::make_unique<CSRelayMsg>();
    message->stHead.bCmdId = cmd::stRelayLockStep;
    CSRelayFramePack& pack = message->stBody.stRelayLockStep;
    pack.bCount = 5;
    for (CSRelayFrame& frame : pack.astRelayData) {
        frame.bCount = 100;
        for (CSRelayData& data : frame.astRelayData) {
            data.wRelayLen = 1024;
        }
    }
    EXPECT_EQ(calls([&] {
                  message->pack(memory, sizeof(memory));
                  message->unpack(memory, sizeof(memory));
                  message->visualize(memory, sizeof(memory));
              }),
              0);
}

TEST(NoAllocationOfTheRuntime, InBuffersHelpersAndTables) {
    namespace util = Korvan::BixBufUtil;
    EXPECT_EQ(calls([] {
                  BixWriteBuf out(memory, sizeof(memory));
                  out.writeUInt64(1);
                  out.textize("%s %d", "text", 7);
                  util::printVariable(out, 1, '\n', "[a]", "%d", 1);
                  util::printVariable(out, 1, '\n', "[a]", "%lu", uint64_t{1});
                  util::printVariable(out, 1, '\n', "[a]", true);
                  util::printVariable(out, 1, '\n', "[a]", 1u, true);
                  util::printString(out, 1, '\n', "[a]", "text");
                  util::printArray(out, 1, '\n', "[a]", 3);
                  (void)commandName(184);
                  (void)schema::findCommand(184);
                  for (const schema::Type* type : schema::types()) {
                      (void)schema::wireSize(*type, 0);
                  }
                  (void)Korvan::resultName(-1);
              }),
              0);
}
