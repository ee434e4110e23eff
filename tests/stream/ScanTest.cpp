#include "tests/stream/Oracle.h"
#include "tests/stream/Samples.h"
#include "tests/support/Settings.h"

#include <gtest/gtest.h>

#include <array>

using namespace cs_relay_msg;
using oracle::Oracle;
using oracle::Verdict;
using samples::Random;

namespace {

constexpr uint32_t VERSIONS[] = {1, 2, 3};

/// A finding, without what depends on how the bytes were cut.
struct Finding {
    ScanStatus status;
    int32_t code;
    size_t size;
    size_t need;
    size_t offset;
    const schema::Field* field;
    std::string path;
};

bool operator==(const Finding& a, const Finding& b) {
    return a.status == b.status && a.code == b.code && a.size == b.size && a.need == b.need &&
           a.offset == b.offset && a.field == b.field && a.path == b.path;
}

std::ostream& operator<<(std::ostream& out, const Finding& f) {
    return out << "status " << static_cast<int>(f.status) << " code " << f.code << " size " << f.size
               << " need " << f.need << " offset " << f.offset << " at " << f.path;
}

std::string pathOf(const ScanState& state) {
    char path[100];
    return scanPath(state, path, sizeof(path));
}

Finding findingOf(const ScanResult& r, const ScanState& state) {
    return {r.status, r.code, r.size, r.need, r.offset, r.field, pathOf(state)};
}

Verdict verdictOf(const ScanResult& r) {
    const bool ended = r.status == ScanStatus::Complete || r.status == ScanStatus::UnknownCommand;
    return {r.status, r.code, ended ? r.size : 0, r.need};
}

Finding scanWhole(const std::string& bytes) {
    ScanState state;
    const ScanResult result = scan(state, bytes.data(), bytes.size());
    return findingOf(result, state);
}

/// Feeds the pieces between the cuts, each from memory that is overwritten before the next one comes.
Finding scanCut(const std::string& bytes, const std::vector<size_t>& cuts) {
    static std::vector<char> memory;
    ScanState state;
    size_t begin = 0;
    for (size_t i = 0;; ++i) {
        const size_t end = i < cuts.size() ? cuts[i] : bytes.size();
        memory.assign(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                      bytes.begin() + static_cast<std::ptrdiff_t>(end));
        const ScanResult result = scan(state, memory.data(), memory.size());
        std::fill(memory.begin(), memory.end(), '\x7e');
        EXPECT_LE(result.used, end - begin);
        if (result.status != ScanStatus::Need || i == cuts.size()) {
            EXPECT_EQ(result.size, begin + result.used);
            return findingOf(result, state);
        }
        EXPECT_EQ(result.used, end - begin);
        begin = end;
    }
}

std::string hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes.substr(0, 200)) {
        char digits[4];
        std::snprintf(digits, sizeof(digits), "%02x ", static_cast<unsigned>(static_cast<uint8_t>(byte)));
        text += digits;
    }
    return text;
}

/// Feeds byte after byte and asks the oracle at each.
void expectAsUnpack(const std::string& bytes, Oracle& oracle) {
    ScanState state;
    ScanResult result = scan(state, nullptr, 0);
    EXPECT_EQ(verdictOf(result), oracle(bytes.data(), 0));
    for (size_t i = 0; i < bytes.size() && result.status == ScanStatus::Need; ++i) {
        result = scan(state, &bytes[i], 1);
        ASSERT_EQ(result.used, 1u);
        ASSERT_EQ(result.size, i + 1);
        ASSERT_TRUE(verdictOf(result) == oracle(bytes.data(), i + 1))
            << findingOf(result, state) << " after " << i + 1 << " of " << hex(bytes);
        if (result.status == ScanStatus::Need) {
            ASSERT_GE(result.need, 1u);
            ASSERT_LE(result.size + result.need, CSRelayMsg::maxWireSize);
        } else if (result.status != ScanStatus::Complete) {
            ASSERT_EQ(result.offset, i);
            ASSERT_NE(result.field, nullptr);
        }
    }
}

std::string headFor(uint8_t id, uint8_t version) {
    std::string head(12, '\x11');
    head[8] = static_cast<char>(version);
    head[11] = static_cast<char>(id);
    return head;
}

} // namespace

TEST(Scan, AgreesWithUnpackAtEveryByteOfEveryCommandAndVersion) {
    Oracle oracle;
    Random random(1);
    const auto message = samples::newMessage();
    for (const uint8_t id : samples::commandIds()) {
        for (const uint32_t version : VERSIONS) {
            for (const uint32_t largest : {0u, 1u, 2u, 5u}) {
                const std::string wire = samples::randomWire(*message, id, version, largest, random);
                ASSERT_GE(wire.size(), 12u);
                expectAsUnpack(wire, oracle);
                EXPECT_EQ(scanWhole(wire).status, ScanStatus::Complete);
                EXPECT_EQ(scanWhole(wire).size, wire.size());
            }
        }
    }
}

TEST(Scan, AgreesWithUnpackWhenAByteIsSpoiled) {
    Oracle oracle;
    Random random(2);
    const auto message = samples::newMessage();
    size_t malformed = 0;
    for (const uint8_t id : samples::commandIds()) {
        for (const uint32_t version : VERSIONS) {
            const std::string wire = samples::randomWire(*message, id, version, 2, random);
            for (size_t at = 8; at < std::min<size_t>(wire.size(), 120); ++at) {
                for (const int value : {0, 1, 2, 4, 5, 6, 10, 11, 16, 100, 101, 128, 255}) {
                    std::string spoiled = wire;
                    spoiled[at] = static_cast<char>(value);
                    ScanState state;
                    const ScanResult result = scan(state, spoiled.data(), spoiled.size());
                    // The byte that decided, and the byte before it, tell whether it was the earliest one.
                    ASSERT_TRUE(verdictOf(result) == oracle(spoiled.data(), result.size))
                        << findingOf(result, state) << " in " << hex(spoiled);
                    if (result.status == ScanStatus::Malformed) {
                        ++malformed;
                        ASSERT_EQ(oracle(spoiled.data(), result.offset).status, ScanStatus::Need)
                            << findingOf(result, state) << " in " << hex(spoiled);
                    }
                }
            }
        }
    }
    EXPECT_GT(malformed, 1000u);
}

TEST(Scan, AgreesWithUnpackOnHostileBytes) {
    Oracle oracle;
    Random random(3);
    const auto ids = samples::commandIds();
    std::array<size_t, 4> seen{};
    for (int round = 0; round < 4000; ++round) {
        const uint8_t id = ids[samples::upTo(random, ids.size() - 1)];
        std::string bytes = headFor(id, static_cast<uint8_t>(1 + samples::upTo(random, 2)));
        const int taste = round % 3; // all values; small ones; mostly zeros, so that lengths and counts pass
        for (size_t n = samples::upTo(random, 80); n != 0; --n) {
            const uint32_t any = samples::upTo(random, 255);
            bytes += static_cast<char>(taste == 0 ? any : taste == 1 ? any % 12 : any < 200 ? 0 : any % 5);
        }
        ASSERT_NO_FATAL_FAILURE(expectAsUnpack(bytes, oracle));
        ASSERT_TRUE(oracle::scanAgrees(oracle, bytes.data(), bytes.size(), static_cast<uint32_t>(random())))
            << hex(bytes);
        ++seen[static_cast<size_t>(scanWhole(bytes).status)];
    }
    EXPECT_GT(seen[static_cast<size_t>(ScanStatus::Need)], 100u);
    EXPECT_GT(seen[static_cast<size_t>(ScanStatus::Complete)], 100u);
    EXPECT_GT(seen[static_cast<size_t>(ScanStatus::Malformed)], 100u);
}

TEST(Scan, AgreesWithUnpackOnEveryVersionByteAndEveryCommand) {
    Oracle oracle;
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<uint8_t>(value);
        const Finding version = scanWhole(headFor(184, byte));
        const bool valid = value >= 1 && value <= 3;
        EXPECT_EQ(version.status, valid ? ScanStatus::Need : ScanStatus::Malformed);
        EXPECT_EQ(version.code, valid ? 0 : BIX_ERR_VERSION_OUT_OF_RANGE);
        EXPECT_EQ(version.size, valid ? 12u : 9u);
        EXPECT_EQ(version.offset, valid ? 0u : 8u);
        EXPECT_EQ(version.path, valid ? "stBody.stCSRelayMsgHeartBeatReq.dwUnused" : "stHead.bVersion");
        expectAsUnpack(headFor(184, byte), oracle);

        const Finding command = scanWhole(headFor(byte, 3) + "some more bytes");
        if (commandName(value) == nullptr) {
            EXPECT_EQ(command.status, ScanStatus::UnknownCommand) << value;
            EXPECT_EQ(command.code, 0);
            EXPECT_EQ(command.size, 12u);
            EXPECT_EQ(command.offset, 11u);
            EXPECT_EQ(command.path, "stHead.bCmdId");
        } else {
            EXPECT_NE(command.status, ScanStatus::UnknownCommand) << value;
        }
        expectAsUnpack(headFor(byte, 3), oracle);
    }
}

TEST(Scan, FindsTheSameForEveryWayOfCuttingASmallMessage) {
    const auto message = samples::newMessage();
    Random random(4);
    // A heartbeat, a start request with a NUL in its text, an unknown command, an input: at most 21 bytes.
    std::vector<std::string> all{samples::randomWire(*message, 184, 3, 0, random),
                                 samples::randomWire(*message, 195, 1, 0, random),
                                 headFor(166, 2) + "xyz",
                                 headFor(161, 3) + std::string("\0\0\0\3a\0\0", 7),
                                 headFor(170, 1) + std::string("\0\1\0\0\0\5", 6),
                                 headFor(161, 0)};
    for (const std::string& bytes : all) {
        const Finding whole = scanWhole(bytes);
        ASSERT_LE(bytes.size(), 20u);
        const size_t ways = size_t{1} << (bytes.size() - 1);
        const size_t step = ways / tests::scaled(ways) | 1u; // odd, so that no place is left out
        for (size_t mask = 0; mask < ways; mask += step) {
            std::vector<size_t> cuts;
            for (size_t at = 1; at < bytes.size(); ++at) {
                if ((mask >> (at - 1) & 1u) != 0) {
                    cuts.push_back(at);
                }
            }
            ASSERT_EQ(scanCut(bytes, cuts), whole) << hex(bytes);
        }
    }
}

TEST(Scan, FindsTheSameForEveryThreePiecesOfEveryCommand) {
    const auto message = samples::newMessage();
    Random random(5);
    for (const uint8_t id : samples::commandIds()) {
        for (const uint32_t version : VERSIONS) {
            std::string bytes = samples::randomWire(*message, id, version, 2, random);
            for (int spoiled = 0; spoiled < 2; ++spoiled) {
                const Finding whole = scanWhole(bytes);
                const size_t size = std::min<size_t>(bytes.size(), 90);
                for (size_t a = 0; a <= size; ++a) {
                    for (size_t b = a; b <= size; ++b) {
                        ASSERT_EQ(scanCut(bytes, {a, b}), whole) << hex(bytes);
                    }
                }
                bytes[bytes.size() - 1 - samples::upTo(random, bytes.size() - 13)] ^= '\xff';
            }
        }
    }
}

TEST(Scan, FindsTheSameForRandomCutsOfLargeMessages) {
    const auto message = samples::newMessage();
    Random random(6);
    Oracle oracle;
    for (const uint8_t id : samples::commandIds()) {
        for (const uint32_t version : VERSIONS) {
            std::string bytes = samples::randomWire(*message, id, version, 60, random);
            for (int spoiled = 0; spoiled < 4; ++spoiled) {
                const Finding whole = scanWhole(bytes);
                const Verdict told = oracle(bytes.data(), bytes.size());
                ASSERT_EQ(whole.status, told.status);
                ASSERT_EQ(whole.code, told.code);
                for (int round = 0; round < 4; ++round) {
                    std::vector<size_t> cuts;
                    for (size_t n = samples::upTo(random, 40); n != 0; --n) {
                        cuts.push_back(samples::upTo(random, bytes.size()));
                    }
                    std::sort(cuts.begin(), cuts.end());
                    ASSERT_EQ(scanCut(bytes, cuts), whole);
                }
                bytes[12 + samples::upTo(random, bytes.size() - 13)] ^= static_cast<char>(1 << (2 * spoiled));
            }
        }
    }
}

TEST(Scan, TakesTheLargestMessagesByteByByte) {
    const auto message = samples::newMessage();
    Random random(7);
    Oracle oracle;
    for (const auto& [id, version, size] : {std::tuple<uint8_t, uint32_t, size_t>{167, 3, 516558},
                                            {187, 1, 516538},
                                            {169, 3, 103325},
                                            {192, 2, 12312},
                                            {182, 3, 108},
                                            {195, 3, 10343}}) {
        // Every count and text at its limit: a generator that always takes the most there is.
        samples::fillMessage(*message, id, 0, random);
        struct Full {
            static void fill(const schema::Type& type, char* record) {
                for (size_t i = 0; i < type.fieldCount; ++i) {
                    const schema::Field& field = type.fields[i];
                    char* const member = record + field.offset;
                    if (field.kind == schema::Kind::String) {
                        std::memset(member, 'x', field.bound); // pack cuts it to what fits
                    } else if (field.kind == schema::Kind::Scalar) {
                        const bool counts =
                            i + 1 < type.fieldCount && type.fields[i + 1].countField == static_cast<int>(i);
                        const uint64_t value = counts ? type.fields[i + 1].bound : 7;
                        const auto one = static_cast<uint8_t>(value);
                        const auto two = static_cast<uint16_t>(value);
                        const auto four = static_cast<uint32_t>(value);
                        const void* from = field.width == 1   ? static_cast<const void*>(&one)
                                           : field.width == 2 ? static_cast<const void*>(&two)
                                           : field.width == 4 ? static_cast<const void*>(&four)
                                                              : static_cast<const void*>(&value);
                        std::memcpy(member, from, field.width);
                    } else if (field.type != nullptr) {
                        for (uint32_t e = 0; e < field.bound; ++e) {
                            fill(*field.type, member + e * field.width);
                        }
                    }
                }
            }
        };
        Full::fill(*schema::findCommand(id)->type, reinterpret_cast<char*>(&message->stBody));
        const std::string wire = samples::wireOf(*message, version);
        ASSERT_EQ(wire.size(), size);
        ScanState state;
        size_t least = 12;
        for (size_t i = 0; i < wire.size(); ++i) {
            const ScanResult result = scan(state, &wire[i], 1);
            if (i + 1 == wire.size()) {
                ASSERT_EQ(result.status, ScanStatus::Complete);
                ASSERT_EQ(result.size, size);
                break;
            }
            ASSERT_EQ(result.status, ScanStatus::Need) << i;
            ASSERT_GE(result.need, 1u);
            ASSERT_LE(i + 1 + result.need, size);
            ASSERT_GE(i + 1 + result.need, least) << "more is known, so the least size never shrinks";
            least = i + 1 + result.need;
            if (i % 9973 == 0) {
                ASSERT_EQ(verdictOf(result), oracle(wire.data(), i + 1)) << i;
            }
        }
    }
}

TEST(Scan, TellsWhereTheNextMessageBegins) {
    const auto message = samples::newMessage();
    Random random(8);
    std::string stream;
    std::vector<size_t> ends;
    for (int round = 0; round < 3; ++round) {
        for (const uint8_t id : samples::commandIds()) {
            stream += samples::randomWire(*message, id, 1 + samples::upTo(random, 2), 5, random);
            ends.push_back(stream.size());
        }
    }
    for (int round = 0; round < 20; ++round) {
        ScanState state;
        std::vector<size_t> found;
        size_t at = 0;
        while (at < stream.size()) {
            size_t piece = std::min<size_t>(stream.size() - at, 1 + samples::upTo(random, 300));
            while (piece != 0) {
                const ScanResult result = scan(state, &stream[at], piece);
                at += result.used;
                piece -= result.used;
                if (result.status == ScanStatus::Complete) {
                    found.push_back(at);
                    EXPECT_EQ(pathOf(state), "");
                } else {
                    ASSERT_EQ(result.status, ScanStatus::Need);
                    ASSERT_EQ(piece, 0u);
                }
            }
        }
        ASSERT_EQ(found, ends);
    }
}

TEST(Scan, WhoReadsWhatItNeedsNeverReadsTheNextMessage) {
    const auto message = samples::newMessage();
    Random random(9);
    for (const uint8_t id : samples::commandIds()) {
        const std::string wire = samples::randomWire(*message, id, 3, 40, random);
        ScanState state;
        ScanResult result = scan(state, nullptr, 0);
        EXPECT_EQ(result.need, 12u);
        size_t reads = 0;
        for (; result.status == ScanStatus::Need; ++reads) {
            ASSERT_LE(result.size + result.need, wire.size());
            result = scan(state, &wire[result.size], result.need);
        }
        EXPECT_EQ(result.status, ScanStatus::Complete);
        EXPECT_EQ(result.size, wire.size());
        EXPECT_LE(reads, wire.size() / 4);
    }
}

TEST(Scan, KeepsItsFindingUntilTheStateIsSetAnew) {
    for (const std::string& bytes : {headFor(166, 3), headFor(161, 4)}) {
        ScanState state;
        const ScanResult first = scan(state, bytes.data(), bytes.size());
        const Finding finding = findingOf(first, state);
        const ScanResult again = scan(state, bytes.data(), bytes.size());
        EXPECT_EQ(again.used, 0u);
        EXPECT_EQ(findingOf(again, state), finding);
        state = {};
        EXPECT_EQ(scan(state, nullptr, 5).need, 12u);
        EXPECT_EQ(pathOf(state), "stHead.dwUserID");
    }
}

TEST(Scan, DecidesAtTheEarliestByte) {
    // The first byte of a length of 2 that is above 1024, whatever the second may be.
    const Finding count = scanWhole(headFor(170, 1) + std::string("\0\1\0\0\0\5", 6));
    EXPECT_EQ(count.code, BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(count.offset, 17u);
    EXPECT_EQ(count.path, "stBody.stRelayMsgPack.wLength");
    EXPECT_STREQ(count.field->name, "wLength");
    // The first byte of a text's length.
    const Finding length = scanWhole(headFor(161, 3) + "\1");
    EXPECT_EQ(length.code, BIX_ERR_STRING_TOO_LONG);
    EXPECT_EQ(length.offset, 12u);
    EXPECT_EQ(length.path, "stBody.stRelayLoginReq.szSigBuf");
    const std::string sixteenMiB = headFor(161, 3) + std::string("\1\0\0\0", 4) + std::string(1u << 24, 'a');
    EXPECT_EQ(samples::newMessage()->unpack(sixteenMiB.data(), sixteenMiB.size()), BIX_ERR_STRING_TOO_LONG);
    // A length of 0 shows at its last byte; a NUL in a text at once; a text without a NUL at its last byte.
    EXPECT_EQ(scanWhole(headFor(161, 3) + std::string("\0\0\0", 3)).status, ScanStatus::Need);
    EXPECT_EQ(scanWhole(headFor(161, 3) + std::string("\0\0\0\0", 4)).code, BIX_ERR_STRING_EMPTY);
    const Finding nul = scanWhole(headFor(161, 3) + std::string("\0\0\0\x64"
                                                                "ab\0",
                                                                7));
    EXPECT_EQ(nul.code, BIX_ERR_STRING_MALFORMED);
    EXPECT_EQ(nul.offset, 18u);
    const Finding open = scanWhole(headFor(161, 3) + std::string("\0\0\0\3"
                                                                 "abcdef",
                                                                 10));
    EXPECT_EQ(open.code, BIX_ERR_STRING_MALFORMED);
    EXPECT_EQ(open.offset, 18u);
    // -3 although only 3 bytes follow: with enough of them it is no longer -2.
    const Finding tooLong = scanWhole(headFor(161, 3) + std::string("\0\0\0\x81"
                                                                    "abc",
                                                                    7));
    EXPECT_EQ(tooLong.code, BIX_ERR_STRING_TOO_LONG);
    EXPECT_EQ(tooLong.offset, 15u);
    std::string enough = headFor(161, 3) + std::string("\0\0\0\x81", 4) + std::string(0x81, 'a');
    EXPECT_EQ(samples::newMessage()->unpack(enough.data(), enough.size()), BIX_ERR_STRING_TOO_LONG);
}

TEST(Scan, NamesTheFieldByItsPath) {
    const auto message = samples::newMessage();
    CSRelayFramePack& pack = message->stBody.stRelayLockStep;
    message->stHead.bCmdId = cmd::stRelayLockStep;
    pack.bCount = 3;
    pack.astRelayData[1].bCount = 20;
    std::string wire = samples::wireOf(*message, 3);
    // Head, bCount, a frame of 9 + 4 bytes less its data, the next frame's 5, 17 data of 9, dwObjectId.
    const size_t at = 12 + 1 + 9 + 5 + 17 * 9 + 4;
    wire[at] = '\x04';
    wire[at + 1] = '\x01';
    const Finding bad = scanWhole(wire);
    EXPECT_EQ(bad.code, BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(bad.offset, at + 1);
    EXPECT_EQ(bad.path, "stBody.stRelayLockStep.astRelayData[1].astRelayData[17].wRelayLen");

    ScanState state;
    scan(state, wire.data(), wire.size());
    const std::string whole = pathOf(state);
    for (size_t size = 1; size <= whole.size() + 1; ++size) {
        std::vector<char> small(size, '\x7f');
        ASSERT_EQ(scanPath(state, small.data(), size), small.data());
        const std::string part = small.data();
        EXPECT_EQ(whole.compare(0, part.size(), part), 0);
        EXPECT_TRUE(part.size() == whole.size() || part.empty() || whole[part.size()] == '.') << part;
    }
    EXPECT_STREQ(scanPath(state, nullptr, 10), "");
    EXPECT_STREQ(scanPath(state, &wire[0], 0), "");
}

namespace {

size_t longestPath(const schema::Type& type) {
    size_t longest = 0;
    for (const schema::Field& field : type) {
        size_t length = std::strlen(field.name);
        if (field.kind == schema::Kind::RecordArray) {
            length += 2 + std::to_string(field.bound - 1).size();
        }
        if (field.type != nullptr) {
            length += 1 + longestPath(*field.type);
        }
        if (field.kind == schema::Kind::Union) {
            size_t body = 0;
            for (const schema::Command& command : schema::commands()) {
                body = std::max(body, std::strlen(command.name) + 1 + longestPath(*command.type));
            }
            length += 1 + body;
        }
        longest = std::max(longest, length);
    }
    return longest;
}

} // namespace

TEST(Scan, EveryPathFitsInto100Bytes) {
    EXPECT_LT(longestPath(schema::typeOf<CSRelayMsg>()), 100u);
}
