#include "tests/stream/Samples.h"

#include <gtest/gtest.h>

using namespace cs_relay_msg;
using samples::Random;

namespace {

/// A record of any type, on the heap in a block of just its size.
class Any {
public:
    explicit Any(const schema::Type& type) : type_(type), bytes_(new char[type.size]()) {}

    char* data() const { return bytes_.get(); }
    void operator=(const Any& other) { std::memcpy(data(), other.data(), type_.size); }

    /// The code of `pack` and what it wrote; the record stays as it was.
    std::pair<int32_t, std::string> wire() const {
        static std::vector<char> copy(sizeof(CSRelayMsg));
        static std::vector<char> bytes(CSRelayMsg::maxWireSize);
        std::memcpy(copy.data(), data(), type_.size);
        Korvan::BixWriteBuf buffer(bytes.data(), bytes.size());
        const int32_t code = type_.pack(copy.data(), buffer, 0);
        return {code, std::string(bytes.data(), buffer.getUsedSize())};
    }

private:
    const schema::Type& type_;
    std::unique_ptr<char[]> bytes_;
};

bool isMessage(const schema::Type& type) {
    return &type == &schema::typeOf<CSRelayMsg>();
}

/// Changes bytes of a record one by one: it means something else exactly if it packs to something else.
/// Of the many bytes of a large record the first and the last are taken, and others at random.
size_t changeBytes(const schema::Type& type, const Any& a, Any& b, Random& random) {
    size_t differences = 0;
    const auto wire = a.wire();
    EXPECT_EQ(wire.first, 0);
    for (size_t at = 0; at < type.size; ++at) {
        if (at > 60 && at + 20 < type.size && samples::upTo(random, type.size) > 60) {
            continue;
        }
        for (const int bits : {0x01, 0xff}) {
            b = a;
            b.data()[at] = static_cast<char>(b.data()[at] ^ bits);
            // The version in a message's head is replaced as it is packed.
            const bool same = b.wire() == wire && !(isMessage(type) && at == 8);
            EXPECT_EQ(equal(type, a.data(), b.data()), same) << type.name << " at " << at;
            EXPECT_EQ(equal(type, b.data(), a.data()), same) << type.name << " at " << at;
            differences += same ? 0 : 1;
        }
    }
    return differences;
}

} // namespace

TEST(Equal, MeansThatTheRecordsPackAlike) {
    Random random(21);
    for (const schema::Type* type : schema::types()) {
        if (isMessage(*type)) {
            continue;
        }
        const Any a(*type);
        Any b(*type);
        for (const uint32_t largest : {0u, 3u, 100u}) {
            samples::fill(*type, a.data(), largest, random);
            b = a;
            EXPECT_TRUE(equal(*type, a.data(), b.data())) << type->name;
            EXPECT_GT(changeBytes(*type, a, b, random), 0u) << type->name;
        }
    }
}

TEST(Equal, OfMessagesComparesTheSelectedMember) {
    Random random(22);
    const schema::Type& type = schema::typeOf<CSRelayMsg>();
    const Any a(type);
    Any b(type);
    for (const uint8_t id : samples::commandIds()) {
        samples::fillMessage(*reinterpret_cast<CSRelayMsg*>(a.data()), id, 2, random);
        b = a;
        EXPECT_TRUE(equal(type, a.data(), b.data()));
        EXPECT_GT(changeBytes(type, a, b, random), 20u) << commandName(id);
    }
}

TEST(Equal, OfMessagesWithAnUnknownCommandComparesTheHeads) {
    const auto a = samples::newMessage();
    const auto b = samples::newMessage();
    a->stHead.bCmdId = b->stHead.bCmdId = 166;
    a->stBody.stRelayLoginRes.dwReserve = 5;
    EXPECT_TRUE(equal(*a, *b));
    a->stHead.wAsyncID = 1;
    EXPECT_FALSE(equal(*a, *b));
}

TEST(Equal, ComparesWhatTravelledAndWhatWasSent) {
    Random random(23);
    const auto sent = samples::newMessage();
    const auto received = samples::newMessage();
    for (const uint8_t id : samples::commandIds()) {
        const std::string wire = samples::randomWire(*sent, id, 3, 5, random);
        ASSERT_EQ(received->unpack(wire.data(), wire.size()), 0);
        sent->stHead.bVersion = 3;
        EXPECT_TRUE(equal(*sent, *received)) << commandName(id);
        sent->stHead.bVersion = 2;
        EXPECT_FALSE(equal(*sent, *received)) << "the version counts";
    }
}

TEST(Equal, StaysWithinTheArraysOfRecordsThatCannotBePacked) {
    // Each on the heap in its own block, so that a sanitizer sees a step beyond it.
    const auto a = std::make_unique<CSRelayFrame>();
    const auto b = std::make_unique<CSRelayFrame>();
    a->bCount = b->bCount = 255;
    EXPECT_TRUE(equal(*a, *b));
    b->astRelayData[99].bUserStatusFlag = 1;
    EXPECT_FALSE(equal(*a, *b));
    a->astRelayData[99].bUserStatusFlag = 1;
    a->bCount = 254;
    EXPECT_FALSE(equal(*a, *b)) << "the counts differ";

    const auto user = std::make_unique<CreateRoomUserInfo>();
    const auto other = std::make_unique<CreateRoomUserInfo>();
    std::memset(static_cast<void*>(user.get()), 'x', sizeof(*user));
    *other = *user;
    EXPECT_TRUE(equal(*user, *other));
    other->szUser_id[255] = 'y';
    EXPECT_FALSE(equal(*user, *other));
    *other = *user;
    other->szUser_ip[63] = '\0';
    EXPECT_FALSE(equal(*user, *other));

    const auto pack = std::make_unique<CSRelayMsgPack>();
    const auto same = std::make_unique<CSRelayMsgPack>();
    pack->wLength = same->wLength = 65535;
    EXPECT_TRUE(equal(*pack, *same));
    same->szData[1023] = 1;
    EXPECT_FALSE(equal(*pack, *same));
}
