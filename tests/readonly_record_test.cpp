// Packing a record in read-only memory: it is not written to when its strings end in NUL, in their last byte.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

using namespace cs_relay_msg;
using korvan_test::packed;

namespace {

/// A copy of a record in memory that traps when it is written to.
template <class T>
class ReadOnly {
public:
    explicit ReadOnly(const T& record) {
        memory_ = mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        std::memcpy(memory_, static_cast<const void*>(&record), sizeof(T));
        mprotect(memory_, sizeof(T), PROT_READ);
    }
    ~ReadOnly() { munmap(memory_, sizeof(T)); }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

    const T& get() const { return *static_cast<const T*>(memory_); }

private:
    void* memory_;
};

template <class T>
void expectPacks(const T& record) {
    const ReadOnly<T> readOnly(record);
    EXPECT_EQ(packed(readOnly.get()), packed(record));
    EXPECT_EQ(packed(readOnly.get()).result, 0);
}

/// Packs, and dies if that writes to the record.
template <class T>
void expectTrap(const T& record) {
    const ReadOnly<T> readOnly(record);
    char memory[64];
    EXPECT_DEATH((void)readOnly.get().pack(memory, sizeof(memory)), "");
}

} // namespace

TEST(ReadOnlyRecord, WithNulsAtTheEndOfItsStringsPacks) {
    expectPacks(*korvan_test::constructed<CSRelayMsgLoginReq>());
    expectPacks(*korvan_test::constructed<CSRelayError>());
    expectPacks(*korvan_test::constructed<CSRelayMsgStartRes>());
    expectPacks(*korvan_test::constructed<CreateRoomUserInfo>());
    expectPacks(*korvan_test::constructed<CSRelaySeekPlayRes>());
    expectPacks(*korvan_test::constructed<CSRelayStatRes>());
    auto login = korvan_test::constructed<CSRelayMsgLoginReq>();
    std::strcpy(login->szSigBuf, "text");
    expectPacks(*login);
}

TEST(ReadOnlyRecord, WithoutStringsPacks) {
    expectPacks(*korvan_test::constructed<CSRelayInput>());
    expectPacks(*korvan_test::constructed<CSRelayFramePack>());
    expectPacks(*korvan_test::constructed<CSRelayMsg>());
}

TEST(ReadOnlyRecord, PackedOncePacksAgain) {
    auto login = korvan_test::filled<CSRelayMsgLoginReq>('x');
    ASSERT_EQ(packed(*login).result, 0);
    expectPacks(*login);
}

TEST(ReadOnlyRecordDeathTest, NulEarlierInTheTextIsNotEnough) {
    auto login = korvan_test::constructed<CSRelayMsgLoginReq>();
    std::strcpy(login->szSigBuf, "text");
    login->szSigBuf[127] = 'x';
    expectTrap(*login);
    auto user = korvan_test::constructed<CreateRoomUserInfo>();
    user->szUser_ip[63] = 'x';
    expectTrap(*user);
}
