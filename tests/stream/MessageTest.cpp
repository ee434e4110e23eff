#include "tests/stream/Samples.h"
#include "tests/support/Settings.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace cs_relay_msg;
using samples::Random;

namespace {

/// The bytes of a record.
template <class T>
std::string image(const T& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

template <class T>
void setAllBytes(T& record, int byte) {
    std::memset(static_cast<void*>(&record), byte, sizeof(record));
}

template <class Member>
struct MemberOf;
template <class T>
struct MemberOf<T CSRelayMsgBody::*> {
    using type = T;
};

/// The capacities or truncations to try for a message of @p size bytes, all of them if there are not many,
/// fewer at a lower volume.
std::vector<size_t> sizesUpTo(size_t size, Random& random) {
    std::vector<size_t> sizes;
    const std::vector<size_t> lengths = tests::lengthsUpTo(size + 2);
    for (const size_t n : lengths) {
        if (lengths.size() < 120 || n < 40 || n + 10 > size || samples::upTo(random, size) < 60) {
            sizes.push_back(n);
        }
    }
    return sizes;
}

} // namespace

TEST(Message, PacksAsTheEnvelopeDoes) {
    Random random(11);
    const auto message = samples::newMessage();
    samples::forEachCommand([&](uint8_t id, auto selected) {
        using T = typename MemberOf<decltype(selected)>::type;
        const auto member = std::make_unique<T>();
        for (const uint32_t cutVer : {0u, 1u, 2u, 3u, 4u, 0xffffffffu}) {
            samples::fillMessage(*message, id, 3, random); // the texts' last characters are not NUL
            const CSRelayMsgHead head = message->stHead;
            const auto given = std::make_unique<T>(message->stBody.*selected);
            const size_t wireSize = samples::wireOf(*message, cutVer).size();
            ASSERT_GE(wireSize, 12u);
            for (const size_t capacity : sizesUpTo(wireSize, random)) {
                std::string expected(capacity + 1, '\xee');
                std::string packed = expected;
                size_t expectedSize = 777;
                size_t packedSize = 777;
                message->stBody.*selected = *given;
                *member = *given;
                const int32_t code = message->pack(&expected[0], capacity, &expectedSize, cutVer);
                const int32_t own = packMessage(head, *member, &packed[0], capacity, &packedSize, cutVer);
                ASSERT_EQ(own, code) << commandName(id) << ' ' << capacity;
                ASSERT_EQ(packedSize, expectedSize);
                ASSERT_EQ(packed, expected);
                ASSERT_EQ(std::memcmp(member.get(), &(message->stBody.*selected), sizeof(T)), 0);
            }
        }
    });
}

TEST(Message, PacksBehindOtherBytesAsTheEnvelopeDoes) {
    Random random(12);
    const auto message = samples::newMessage();
    samples::forEachCommand([&](uint8_t id, auto selected) {
        samples::fillMessage(*message, id, 2, random);
        std::string expected(4000, '\xee');
        std::string packed = expected;
        Korvan::BixWriteBuf expectedBuf(&expected[0], expected.size());
        Korvan::BixWriteBuf packedBuf(&packed[0], packed.size());
        for (uint32_t version = 1; version <= 3; ++version) {
            ASSERT_EQ(message->pack(expectedBuf, version), 0);
            ASSERT_EQ(packMessage(message->stHead, message->stBody.*selected, packedBuf, version), 0);
        }
        EXPECT_EQ(packedBuf.getUsedSize(), expectedBuf.getUsedSize());
        EXPECT_EQ(packed, expected);

        const auto member = std::make_unique<typename MemberOf<decltype(selected)>::type>();
        CSRelayMsgHead head;
        Korvan::BixReadBuf expectedIn(expected.data(), expectedBuf.getUsedSize());
        Korvan::BixReadBuf in(expected.data(), expectedBuf.getUsedSize());
        for (int version = 1; version <= 3; ++version) {
            ASSERT_EQ(message->unpack(expectedIn), 0);
            ASSERT_EQ(unpackMessage(head, *member, in), 0);
            EXPECT_EQ(in.getUsedSize(), expectedIn.getUsedSize());
            EXPECT_TRUE(equal(*member, message->stBody.*selected));
            EXPECT_TRUE(equal(head, message->stHead));
        }
    });
}

TEST(Message, LeavesTheMembersTextsAsTheEnvelopeDoes) {
    const auto message = samples::newMessage();
    setAllBytes(*message, 'x'); // texts without a NUL
    message->stHead.bCmdId = cmd::stRelayError;
    const auto member = std::make_unique<CSRelayError>(message->stBody.stRelayError);
    std::string buffer(3000, '\0');
    for (const size_t capacity : {size_t{10}, size_t{100}, size_t{1500}, size_t{3000}}) {
        const int32_t code = message->pack(&buffer[0], capacity);
        EXPECT_EQ(packMessage(message->stHead, *member, &buffer[0], capacity), code);
        EXPECT_EQ(image(*member), image(message->stBody.stRelayError)) << capacity;
    }
}

TEST(Message, RefusesACountAsTheEnvelopeDoes) {
    const auto message = samples::newMessage();
    message->stHead.bCmdId = cmd::stRelayInputing;
    message->stBody.stRelayInputing.stRelayData.wRelayLen = 1025;
    const auto member = std::make_unique<CSRelayInput>(message->stBody.stRelayInputing);
    std::string expected(100, '\xee');
    std::string packed = expected;
    size_t expectedSize = 0;
    size_t packedSize = 0;
    EXPECT_EQ(message->pack(&expected[0], 100, &expectedSize), BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(packMessage(message->stHead, *member, &packed[0], 100, &packedSize),
              BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(packedSize, expectedSize);
    EXPECT_EQ(packed, expected) << "with the head's own version, which is stamped last";
}

TEST(Message, UnpacksAsTheEnvelopeDoes) {
    Random random(13);
    const auto message = samples::newMessage();
    samples::forEachCommand([&](uint8_t id, auto selected) {
        using T = typename MemberOf<decltype(selected)>::type;
        const auto member = std::make_unique<T>();
        for (uint32_t version = 1; version <= 3; ++version) {
            const std::string valid = samples::randomWire(*message, id, version, 3, random);
            for (int spoiled = 0; spoiled < 3; ++spoiled) {
                std::string wire = valid + "next";
                if (spoiled != 0) {
                    wire[12 + samples::upTo(random, valid.size() - 13)] ^= spoiled == 1 ? '\x80' : '\x03';
                }
                for (const size_t size : sizesUpTo(valid.size(), random)) {
                    size_t expectedSize = 777;
                    size_t ownSize = 777;
                    setAllBytes(message->stHead, 0x5a);
                    setAllBytes(message->stBody.*selected, 0x5a);
                    CSRelayMsgHead head = message->stHead;
                    setAllBytes(*member, 0x5a);
                    const int32_t code = message->unpack(wire.data(), size, &expectedSize);
                    const int32_t own = unpackMessage(head, *member, wire.data(), size, &ownSize);
                    ASSERT_EQ(own, code) << commandName(id) << ' ' << size;
                    ASSERT_EQ(ownSize, expectedSize);
                    ASSERT_EQ(image(head), image(message->stHead));
                    ASSERT_EQ(std::memcmp(member.get(), &(message->stBody.*selected), sizeof(T)), 0);
                }
            }
        }
    });
}

TEST(Message, RefusesEveryVersionThatTheEnvelopeRefuses) {
    const auto message = samples::newMessage();
    CSRelayMsgHeartBeatReq member{};
    CSRelayMsgLoginRes other{};
    for (int version = 0; version < 256; ++version) {
        std::string wire(16, '\1');
        wire[8] = static_cast<char>(version);
        wire[11] = static_cast<char>(cmd::stCSRelayMsgHeartBeatReq);
        for (size_t size = 0; size <= wire.size(); ++size) {
            CSRelayMsgHead head{};
            CSRelayMsgHead alone{};
            setAllBytes(*message, 0);
            const int32_t code = message->unpack(wire.data(), size);
            EXPECT_EQ(unpackMessage(head, member, wire.data(), size), code);
            EXPECT_EQ(image(head), image(message->stHead));
            EXPECT_EQ(unpackHead(alone, wire.data(), size), size < 9 ? BIX_ERR_READ_UNDERFLOW
                                                            : version < 1 || version > 3
                                                                ? BIX_ERR_VERSION_OUT_OF_RANGE
                                                            : size < 12 ? BIX_ERR_READ_UNDERFLOW
                                                                        : BIX_OK);
            EXPECT_EQ(image(alone), image(message->stHead)) << "the head alone is that of the message";
            // Another member's message is refused only once it is a message with a head.
            EXPECT_EQ(unpackMessage(head, other, wire.data(), size),
                      size >= 12 && version >= 1 && version <= 3 ? OTHER_COMMAND : code);
        }
    }
}

TEST(Message, KnowsWhichMemberEachCommandSelects) {
    const auto message = samples::newMessage();
    std::string buffer(600, '\xee');
    const std::string untouched = buffer;
    samples::forEachCommand([&](uint8_t, auto selected) {
        using T = typename MemberOf<decltype(selected)>::type;
        const auto member = std::make_unique<T>();
        for (int id = 0; id < 256; ++id) {
            bool selects = false;
            samples::forEachCommand([&](uint8_t each, auto candidate) {
                selects = selects || (each == id && std::is_same_v<decltype(candidate), decltype(selected)>);
            });
            member->construct();
            CSRelayMsgHead head{};
            head.bCmdId = static_cast<uint8_t>(id);
            size_t used = 777;
            const int32_t packed = packMessage(head, *member, &buffer[0], buffer.size(), &used);
            EXPECT_EQ(packed, selects ? BIX_OK : OTHER_COMMAND) << id;
            EXPECT_EQ(buffer == untouched, !selects);
            EXPECT_EQ(used == 0, !selects);
            buffer = untouched;

            std::string wire(600, '\0');
            wire[8] = '\3';
            wire[11] = static_cast<char>(id);
            setAllBytes(*member, 0x5a);
            setAllBytes(head, 0x5a);
            used = 777;
            const int32_t unpacked = unpackMessage(head, *member, wire.data(), wire.size(), &used);
            EXPECT_EQ(unpacked == OTHER_COMMAND, !selects) << id;
            if (!selects) {
                EXPECT_EQ(used, 0u);
                EXPECT_EQ(image(head), std::string(sizeof(head), '\x5a'));
                EXPECT_EQ(reinterpret_cast<const char*>(member.get())[0], '\x5a');
                EXPECT_EQ(reinterpret_cast<const char*>(member.get())[sizeof(T) - 1], '\x5a');
            }
        }
    });
}

TEST(Message, RecordsThatNoCommandSelectsAreRefused) {
    char buffer[64];
    const auto user = std::make_unique<CreateRoomUserInfo>();
    for (int id = 0; id < 256; ++id) {
        CSRelayMsgHead head{};
        head.bCmdId = static_cast<uint8_t>(id);
        EXPECT_EQ(packMessage(head, *user, buffer, sizeof(buffer)), OTHER_COMMAND);
        EXPECT_EQ(packMessage(head, head, buffer, sizeof(buffer)), OTHER_COMMAND);
    }
}

TEST(Message, RefusesNullBuffers) {
    CSRelayMsgHead head{};
    CSRelayMsgStopReq member{};
    size_t used = 777;
    for (const uint8_t id : {uint8_t{0}, cmd::stRelayStopReq}) {
        head.bCmdId = id;
        EXPECT_EQ(packMessage(head, member, nullptr, 100, &used), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(unpackMessage(head, member, nullptr, 100, &used), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(unpackHead(head, nullptr, 100), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(used, 777u);
        EXPECT_EQ(head.bCmdId, id);
    }
}

TEST(Message, PutsItsVersionIntoByte8) {
    CSRelayMsgHead head{};
    head.dwUserID = 1001;
    head.dwRoomID = 7;
    head.wAsyncID = 258;
    head.bCmdId = cmd::stCSRelayMsgHeartBeatReq;
    const CSRelayMsgHeartBeatReq member{};
    for (const auto& [cutVer, stamped] : {std::pair<uint32_t, char>{0, 3}, {1, 1}, {2, 2}, {3, 3}, {9, 3}}) {
        std::string wire(19, '\xee');
        Korvan::BixWriteBuf buffer(&wire[0], wire.size());
        ASSERT_EQ(buffer.reserve(3), BIX_OK);
        ASSERT_EQ(packMessage(head, member, buffer, cutVer), BIX_OK);
        EXPECT_EQ(wire, std::string("\xee\xee\xee\x00\x00\x03\xe9\x00\x00\x00\x07", 11) + stamped +
                            std::string("\x01\x02\xb8\x00\x00\x00\x00", 7));
        EXPECT_EQ(+head.bVersion, 0) << "on the wire only";
    }
}

TEST(Message, WithoutACutOffHasTheCurrentVersion) {
    CSRelayMsgHead head{};
    head.bCmdId = cmd::stCSRelayMsgHeartBeatReq;
    const CSRelayMsgHeartBeatReq member{};
    char wire[16];
    ASSERT_EQ(packMessage(head, member, wire, sizeof(wire)), BIX_OK);
    EXPECT_EQ(wire[8], 3);
    wire[8] = 0;
    Korvan::BixWriteBuf byTemplate(wire, sizeof(wire));
    ASSERT_EQ(packMessage(head, member, byTemplate), BIX_OK);
    EXPECT_EQ(wire[8], 3);
    wire[8] = 0;
    Korvan::BixWriteBuf byType(wire, sizeof(wire));
    ASSERT_EQ(packMessage(head, schema::typeOf<CSRelayMsgHeartBeatReq>(), &member, byType), BIX_OK);
    EXPECT_EQ(wire[8], 3);
}

TEST(Message, HeadTellsVersionCommandAndIds) {
    const char wire[] = "\x00\x00\x03\xe9\x00\x00\x00\x07\x02\x01\x02\xb8 and more";
    CSRelayMsgHead head{};
    ASSERT_EQ(unpackHead(head, wire, sizeof(wire)), BIX_OK);
    EXPECT_EQ(+head.dwUserID, 1001u);
    EXPECT_EQ(+head.dwRoomID, 7u);
    EXPECT_EQ(+head.bVersion, 2u);
    EXPECT_EQ(+head.wAsyncID, 258u);
    EXPECT_EQ(+head.bCmdId, 184u);
}

TEST(Message, BeginsForACommand) {
    const auto message = samples::newMessage();
    samples::forEachCommand([&](uint8_t id, auto selected) {
        using T = typename MemberOf<decltype(selected)>::type;
        setAllBytes(*message, 0x5a);
        const auto expected = std::make_unique<T>();
        setAllBytes(*expected, 0x5a);
        expected->construct();
        ASSERT_TRUE(beginMessage(*message, id));
        CSRelayMsgHead head;
        head.construct();
        head.bCmdId = id;
        EXPECT_EQ(image(message->stHead), image(head));
        EXPECT_EQ(std::memcmp(&(message->stBody.*selected), expected.get(), sizeof(T)), 0);
        const char* const body = reinterpret_cast<const char*>(&message->stBody);
        EXPECT_EQ(std::count(body + sizeof(T), body + sizeof(message->stBody), '\x5a'),
                  static_cast<std::ptrdiff_t>(sizeof(message->stBody) - sizeof(T)))
            << "the rest is not touched";
    });
    setAllBytes(*message, 0x5a);
    const std::string untouched = image(*message);
    for (long long id = -300; id < 900; ++id) {
        if (commandName(id) == nullptr) {
            EXPECT_FALSE(beginMessage(*message, id)) << id;
        }
    }
    EXPECT_EQ(image(*message), untouched);
}
