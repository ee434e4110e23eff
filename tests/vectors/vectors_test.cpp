/// Runs every vector file against the library, in both directions.
#include "protocol/Scalar.h"
#include "protocol/cs_relay_msg.h"
#include "vectors/VectorJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace vectors {
namespace {

using namespace cs_relay_msg::schema;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

constexpr char HELD = '\xee';               // what an output buffer holds before
constexpr size_t CUT_EVERYWHERE = 2u << 10; // bytes: longer wire forms are cut near the stops only

struct Packed {
    int32_t code;
    size_t used;
    std::string memory;
};

Packed pack(const Type& type, const Storage& record, uint32_t cut, size_t room) {
    Packed result{0, 0, std::string(room, HELD)};
    BixWriteBuf buffer(result.memory.data(), room);
    result.code = type.pack(record.data(), buffer, cut);
    result.used = buffer.getUsedSize();
    return result;
}

/// Checks that nothing was written behind the used part.
void expectUntouched(const Packed& packed) {
    EXPECT_EQ(packed.memory.find_first_not_of(HELD, packed.used), std::string::npos)
        << "written behind the used size " << packed.used;
}

Storage recordOf(const Type& type, const Json& fields, char fill = 0) {
    Storage record(type, fill);
    apply(type, record.data(), fields);
    return record;
}

const Json& receivedOf(const Json& vector) {
    return vector.contains("received") ? vector.at("received") : vector.at("fields");
}

// ---- Unpack ----

/// Unpacks and compares the whole record: what is not to be written keeps what it held.
void checkUnpack(const Type& type, const std::string& wire, uint32_t cut, int32_t code, size_t used,
                 const Json& received) {
    for (const char before : {'\x5a', '\xa5'}) {
        Storage record(type, before);
        BixReadBuf buffer(wire.data(), wire.size());
        EXPECT_EQ(type.unpack(record.data(), buffer, cut), code);
        EXPECT_EQ(buffer.getUsedSize(), used);
        EXPECT_TRUE(record == recordOf(type, received, before)) << "the record holds something else";
    }
}

/// Copies the fields whose wire form ends within the first @p left bytes, as reading so many would.
struct Reader {
    size_t left;

    bool take(size_t count) {
        const bool fits = count <= left;
        left = fits ? left - count : 0;
        return fits;
    }

    /// Returns whether all of the record was there.
    bool record(const Type& type, const char* from, char* to, uint32_t version) {
        version = type.effectiveVersion(version);
        return std::all_of(type.begin(), type.end(),
                           [&](const Field& field) { return member(type, field, from, to, version); });
    }

    bool member(const Type& type, const Field& field, const char* from, char* to, uint32_t version) {
        const char* const source = from + field.offset;
        char* const target = to + field.offset;
        if (version < field.since) { // the record compared with has the default already
            std::memcpy(target, source, field.width);
            return true;
        }
        switch (field.kind) {
        case Kind::Scalar:
            return take(field.width) && std::memcpy(target, source, field.width) != nullptr;
        case Kind::String: {
            const size_t count = std::strlen(source) + 1;
            return take(4 + count) && std::memcpy(target, source, count) != nullptr;
        }
        case Kind::Record:
            return record(*field.type, source, target, version);
        case Kind::Bytes: {
            const size_t count = countOf(type, field, from);
            return take(count) && std::memcpy(target, source, count) != nullptr;
        }
        case Kind::RecordArray: {
            const size_t count = countOf(type, field, from);
            for (size_t i = 0; i < count; ++i) {
                if (!record(*field.type, source + i * field.width, target + i * field.width, version)) {
                    return false;
                }
            }
            return true;
        }
        case Kind::Union:
            const Command* const command = findCommand(static_cast<uint8_t>(source[-1]));
            return command == nullptr || record(*command->type, source, target, version);
        }
        return false;
    }

    static size_t countOf(const Type& type, const Field& field, const char* record) {
        const Field& counter = type.fields[field.countField];
        return static_cast<size_t>(cs_relay_msg::scalar::load(counter, record));
    }
};

// ---- Truncations ----

/// Calls @p check with each length below @p size and the stop that counts there.
template <class Check>
void eachCut(const std::vector<size_t>& stops, size_t size, Check check) {
    for (size_t i = 0; i < stops.size() && !testing::Test::HasFailure(); ++i) {
        const size_t end = i + 1 < stops.size() ? stops[i + 1] : size;
        for (size_t length = stops[i]; length < end; ++length) {
            const bool isNear = length <= stops[i] + 1 || length + 1 == end;
            if (size <= CUT_EVERYWHERE || isNear) {
                check(length, stops[i], length == stops[i]);
            }
        }
    }
}

void checkUnpackCuts(const Type& type, const Json& vector, const std::string& wire) {
    const auto cut = vector.at("cut").get<uint32_t>();
    const Json& expected = vector.at("cuts").at("unpack");
    const Storage whole = recordOf(type, receivedOf(vector));
    const bool isMessage = type.fields[type.fieldCount - 1].kind == Kind::Union;
    const uint32_t version = isMessage ? static_cast<uint8_t>(wire[VERSION_BYTE]) : cut;
    const Storage before(type, '\x5a');
    Storage record = before;
    Storage left = before;
    eachCut(expected.at("stops"), wire.size(), [&](size_t length, size_t stop, bool isFirst) {
        SCOPED_TRACE("unpack of " + std::to_string(length) + " bytes");
        // A record of half a megabyte is looked at once for each stop.
        const bool isCompared = isFirst || type.size < CUT_EVERYWHERE;
        if (isCompared) {
            record = before;
            left = before;
        }
        BixReadBuf buffer(wire.data(), length);
        EXPECT_EQ(type.unpack(record.data(), buffer, cut), expected.at("code").get<int32_t>());
        EXPECT_EQ(buffer.getUsedSize(), stop);
        if (isCompared) {
            Reader{stop}.record(type, whole.data(), left.data(), version);
            EXPECT_TRUE(record == left) << "the record holds something else";
        }
    });
}

void checkPackCuts(const Type& type, const Json& vector, const std::string& wire) {
    const auto cut = vector.at("cut").get<uint32_t>();
    const Json& expected = vector.at("cuts").at("pack");
    const Storage record = recordOf(type, vector.at("fields"));
    const bool isMessage = type.fields[type.fieldCount - 1].kind == Kind::Union;
    std::string written = wire;
    if (isMessage) {
        written[VERSION_BYTE] = record.data()[VERSION_BYTE];
    }
    std::string memory;
    eachCut(expected.at("stops"), wire.size(), [&](size_t length, size_t stop, bool) {
        SCOPED_TRACE("pack into " + std::to_string(length) + " bytes");
        memory.assign(length, HELD);
        BixWriteBuf buffer(memory.data(), length);
        EXPECT_EQ(type.pack(record.data(), buffer, cut), expected.at("code").get<int32_t>());
        EXPECT_EQ(buffer.getUsedSize(), stop);
        EXPECT_EQ(memory.find_first_not_of(HELD, stop), std::string::npos) << "written behind the used size";
        // The length of a text that did not fit keeps what was there.
        const bool isLength = stop >= 4 && memory.compare(stop - 4, 4, std::string(4, HELD)) == 0;
        EXPECT_EQ(memory.compare(0, isLength ? stop - 4 : stop, written, 0, isLength ? stop - 4 : stop), 0);
    });
}

// ---- The tests of a vector ----

void checkText(const Type& type, const Json& fields, int indent, char sep, int32_t code,
               const std::string& text) {
    const Storage record = recordOf(type, fields);
    std::string memory(text.size() + 1024, HELD);
    BixWriteBuf buffer(memory.data(), memory.size());
    EXPECT_EQ(type.visualize(record.data(), buffer, indent, sep), code);
    EXPECT_EQ(memory.substr(0, buffer.getUsedSize()), text);
}

void checkPack(const Type& type, const Json& vector, size_t room, const std::string& wire) {
    const Storage record = recordOf(type, vector.at("fields"));
    const Packed packed = pack(type, record, vector.at("cut").get<uint32_t>(), room);
    EXPECT_EQ(packed.code, vector.at("code").get<int32_t>());
    EXPECT_EQ(packed.used, vector.at("used").get<size_t>());
    EXPECT_EQ(packed.memory.substr(0, packed.used), wire);
    expectUntouched(packed);
    const Json& after = vector.contains("after") ? vector.at("after") : vector.at("fields");
    EXPECT_TRUE(record == recordOf(type, after)) << "packing changed the record otherwise";
}

void runBoth(const Type& type, const Json& vector) {
    const std::string wire = fromHex(vector.at("wire"));
    const auto used = vector.at("used").get<size_t>();
    EXPECT_EQ(used, wire.size());
    checkPack(type, vector, used, wire);
    checkPack(type, vector, used + 64, wire);
    checkUnpack(type, wire, vector.at("cut").get<uint32_t>(), vector.at("code").get<int32_t>(), used,
                receivedOf(vector));
    if (vector.contains("text")) {
        checkText(type, vector.at("fields"), 0, '\n', 0, fromText(vector.at("text")));
    }
    if (vector.contains("cuts")) {
        checkUnpackCuts(type, vector, wire);
        checkPackCuts(type, vector, wire);
    }
}

void runPack(const Type& type, const Json& vector) {
    const size_t room = vector.contains("room") ? vector.at("room").get<size_t>() : size_t{1} << 20;
    checkPack(type, vector, room, fromHex(vector.at("wire")));
}

void runUnpack(const Type& type, const Json& vector) {
    checkUnpack(type, fromHex(vector.at("wire")), vector.at("cut").get<uint32_t>(),
                vector.at("code").get<int32_t>(), vector.at("used").get<size_t>(), vector.at("received"));
}

void runText(const Type& type, const Json& vector) {
    const std::string text = fromText(vector.at("text"));
    EXPECT_EQ(text.size(), vector.at("used").get<size_t>());
    checkText(type, vector.at("fields"), vector.at("indent").get<int>(),
              vector.at("sep").get<std::string>().at(0), vector.at("code").get<int32_t>(), text);
}

void runFresh(const Type& type, const Json& vector) {
    for (const char before : {'\x5a', '\xa5'}) {
        Storage record(type, before);
        EXPECT_EQ(type.construct(record.data()), 0);
        EXPECT_EQ(fieldsJson(type, record.data()), vector.at("fields"));
    }
}

/// Messages back to back, each operation going on where the last one ended.
void runStream(const Type& type, const Json& vector) {
    const std::string wire = fromHex(vector.at("wire"));
    std::string memory(wire.size(), HELD);
    BixReadBuf in(wire.data(), wire.size());
    BixWriteBuf out(memory.data(), memory.size());
    size_t end = 0;
    for (const Json& message : vector.at("messages")) {
        end += message.at("used").get<size_t>();
        const Storage fields = recordOf(type, message.at("fields"));
        ASSERT_EQ(type.pack(fields.data(), out, message.at("cut").get<uint32_t>()), 0);
        EXPECT_EQ(out.getUsedSize(), end);
        Storage record(type, '\x5a');
        ASSERT_EQ(type.unpack(record.data(), in, 0), 0);
        EXPECT_EQ(in.getUsedSize(), end);
        EXPECT_TRUE(record == recordOf(type, receivedOf(message), '\x5a'));
    }
    EXPECT_EQ(end, wire.size());
    EXPECT_EQ(memory, wire);
}

void run(const Json& vector) {
    const Type& type = typeNamed(vector.at("record").get<std::string>());
    const auto test = vector.at("test").get<std::string>();
    if (test == "both") {
        runBoth(type, vector);
    } else if (test == "pack") {
        runPack(type, vector);
    } else if (test == "unpack") {
        runUnpack(type, vector);
    } else if (test == "text") {
        runText(type, vector);
    } else if (test == "fresh") {
        runFresh(type, vector);
    } else if (test == "stream") {
        runStream(type, vector);
    } else {
        ADD_FAILURE() << "no such test: " << test;
    }
}

std::vector<std::string> vectorFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(KORVAN_VECTORS)) {
        if (entry.path().extension() == ".jsonl") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Vectors : public testing::TestWithParam<std::string> {};

TEST_P(Vectors, Hold) {
    std::ifstream file(std::string(KORVAN_VECTORS) + "/" + GetParam() + ".jsonl");
    std::string line;
    size_t count = 0;
    while (std::getline(file, line)) {
        const Json vector = Json::parse(line);
        SCOPED_TRACE(vector.at("id").get<std::string>());
        run(vector);
        ++count;
    }
    EXPECT_GT(count, 0u);
}

INSTANTIATE_TEST_SUITE_P(File, Vectors, testing::ValuesIn(vectorFiles()),
                         [](const auto& file) { return file.param; });

} // namespace
} // namespace vectors
