// Every operation of both buffers in every small state: each length, position and argument up to a bound, the
// memory flush against a page that cannot be touched. On success the exact move of the cursor and the exact
// bytes; on failure nothing has changed.
#include "tests/memory/Guarded.h"
#include "tests/support/Memory.h"

#include "Common/Source/Core/BIX/BixBuf.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tests {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

namespace {

constexpr size_t LONGEST = 20; // more than two of the widest integers
constexpr char FILLER = '\xA5';
constexpr uint64_t VALUE = 0x0123456789ABCDEF;
const size_t HUGE_SIZES[] = {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - 3, SIZE_MAX - 7, SIZE_MAX / 2 + 1};

/// Calls @p work with each size from 0 to a few above @p most, and with the largest that there are.
template <class Work>
void forSizes(size_t most, Work work) {
    for (size_t size = 0; size <= most + 9; ++size) {
        work(size);
    }
    for (const size_t size : HUGE_SIZES) {
        work(size);
    }
}

std::string bigEndian(uint64_t value, size_t width) {
    std::string bytes(width, '\0');
    storeBigEndian(bytes.data(), value, width);
    return bytes;
}

class BufferStates : public ::testing::Test {
protected:
    Guarded memory_{LONGEST};
    size_t cases_ = 0;

    void TearDown() override { RecordProperty("cases", std::to_string(cases_)); }

    /// Runs @p operation on a write buffer in each state. @p told says, for a state, where which bytes must
    /// have been stored, by how much the cursor must have moved, and the result.
    struct Told {
        int32_t code;
        size_t at;
        std::string bytes;
        size_t move;
    };
    template <class Operation, class Tell>
    void write(Operation operation, Tell tell) {
        for (size_t length = 0; length <= LONGEST; ++length) {
            for (size_t position = 0; position <= length; ++position) {
                char* const bytes = memory_.place(length, {Place::Behind, 0});
                std::memset(bytes, FILLER, length);
                BixWriteBuf out(bytes, length);
                out.position = position;
                const Told told = tell(position, length);
                std::string expected(length, FILLER);
                expected.replace(told.at, told.bytes.size(), told.bytes);
                ASSERT_EQ(operation(out), told.code) << position << " of " << length;
                ASSERT_EQ(out.position, position + told.move) << position << " of " << length;
                ASSERT_EQ(out.beginPtr, bytes);
                ASSERT_EQ(out.length, length);
                ASSERT_TRUE(sameBytes(bytes, expected.data(), length)) << position << " of " << length;
                ++cases_;
            }
        }
    }

    /// An operation that appends so many bytes.
    template <class Operation>
    void append(const std::string& bytes, Operation operation) {
        write(operation, [&](size_t position, size_t length) {
            return length - position >= bytes.size() ? Told{0, position, bytes, bytes.size()}
                                                     : Told{-1, 0, "", 0};
        });
    }

    /// An operation that writes so many bytes at a given place.
    template <class Operation>
    void patch(const std::string& bytes, Operation operation) {
        forSizes(LONGEST, [&](size_t where) {
            write([&](BixWriteBuf& out) { return operation(out, where); },
                  [&](size_t, size_t length) {
                      return where <= length && length - where >= bytes.size() ? Told{0, where, bytes, 0}
                                                                               : Told{-1, 0, "", 0};
                  });
        });
    }

    /// An operation that reads an integer in each state.
    template <class T, class Operation>
    void read(Operation operation) {
        for (size_t length = 0; length <= LONGEST; ++length) {
            for (size_t position = 0; position <= length; ++position) {
                char* const bytes = memory_.place(length, {Place::Behind, 0});
                for (size_t i = 0; i < length; ++i) {
                    bytes[i] = static_cast<char>(i * 37 + 200);
                }
                const std::string before(bytes, length);
                BixReadBuf in(bytes, length);
                in.position = position;
                T value = static_cast<T>(VALUE);
                const int32_t code = operation(in, value);
                if (length - position >= sizeof(T)) {
                    ASSERT_EQ(code, 0);
                    ASSERT_EQ(in.position, position + sizeof(T));
                    ASSERT_EQ(bigEndian(static_cast<uint64_t>(value), sizeof(T)),
                              before.substr(position, sizeof(T)));
                } else {
                    ASSERT_EQ(code, -2);
                    ASSERT_EQ(in.position, position);
                    ASSERT_EQ(value, static_cast<T>(VALUE));
                }
                ASSERT_EQ(in.getLeftSize(), length - in.position);
                ASSERT_TRUE(sameBytes(bytes, before.data(), length));
                ++cases_;
            }
        }
    }
};

TEST_F(BufferStates, WriteIntegers) {
    append(bigEndian(VALUE, 1),
           [](BixWriteBuf& out) { return out.writeUInt8(static_cast<uint8_t>(VALUE & 0xFF)); });
    append(bigEndian(VALUE, 1),
           [](BixWriteBuf& out) { return out.writeUChar(static_cast<uint8_t>(VALUE & 0xFF)); });
    append(bigEndian(VALUE, 2),
           [](BixWriteBuf& out) { return out.writeUInt16(static_cast<uint16_t>(VALUE & 0xFFFF)); });
    append(bigEndian(VALUE, 4),
           [](BixWriteBuf& out) { return out.writeUInt32(static_cast<uint32_t>(VALUE & 0xFFFFFFFF)); });
    append(bigEndian(VALUE, 4),
           [](BixWriteBuf& out) { return out.writeInt32(static_cast<int32_t>(VALUE & 0xFFFFFFFF)); });
    append(bigEndian(VALUE, 8), [](BixWriteBuf& out) { return out.writeUInt64(VALUE); });
}

TEST_F(BufferStates, WriteBytes) {
    std::string source(LONGEST + 16, '\0');
    for (size_t i = 0; i < source.size(); ++i) {
        source[i] = static_cast<char>(i + 1);
    }
    forSizes(LONGEST, [&](size_t count) {
        const bool small = count <= source.size();
        write([&](BixWriteBuf& out) { return out.writeBytes(source.data(), count); },
              [&](size_t position, size_t length) {
                  return small && length - position >= count
                             ? Told{0, position, source.substr(0, count), count}
                             : Told{-1, 0, "", 0};
              });
        write([&](BixWriteBuf& out) { return out.writeBytes(nullptr, count); },
              [&](size_t, size_t) {
                  return Told{-8, 0, "", 0};
              });
    });
}

TEST_F(BufferStates, Reserve) {
    forSizes(LONGEST, [&](size_t count) {
        write([&](BixWriteBuf& out) { return out.reserve(count); },
              [&](size_t position, size_t length) {
                  return length - position >= count ? Told{0, 0, "", count} : Told{-1, 0, "", 0};
              });
    });
}

TEST_F(BufferStates, WriteCharWithNull) {
    write(
        [](BixWriteBuf& out) { return out.writeCharWithNull('c'); },
        [](size_t position, size_t length) {
            return length - position >= 2 ? Told{0, position, std::string("c\0", 2), 1} : Told{-1, 0, "", 0};
        });
}

TEST_F(BufferStates, Text) {
    for (size_t size = 0; size <= LONGEST + 2; ++size) {
        const std::string text(size, 't');
        write([&](BixWriteBuf& out) { return out.textize("%s", text.c_str()); },
              [&](size_t position, size_t length) {
                  const size_t room = length - position;
                  if (size < room) {
                      return Told{0, position, text + '\0', size};
                  }
                  return room == 0 ? Told{-1, 0, "", 0}
                                   : Told{-1, position, text.substr(0, room - 1) + '\0', 0};
              });
    }
}

TEST_F(BufferStates, WriteAtAPosition) {
    patch(bigEndian(VALUE, 4), [](BixWriteBuf& out, size_t where) {
        return out.writeUInt32(static_cast<uint32_t>(VALUE & 0xFFFFFFFF), where);
    });
    patch("w", [](BixWriteBuf& out, size_t where) { return out.writeUInt8('w', where); });
    patch("w", [](BixWriteBuf& out, size_t where) { return out.writeChar('w', where); });
}

TEST_F(BufferStates, ReadIntegers) {
    read<uint8_t>([](BixReadBuf& in, uint8_t& v) { return in.readUInt8(v); });
    read<uint8_t>([](BixReadBuf& in, uint8_t& v) { return in.readUChar(v); });
    read<uint16_t>([](BixReadBuf& in, uint16_t& v) { return in.readUInt16(v); });
    read<uint32_t>([](BixReadBuf& in, uint32_t& v) { return in.readUInt32(v); });
    read<int32_t>([](BixReadBuf& in, int32_t& v) { return in.readInt32(v); });
    read<uint64_t>([](BixReadBuf& in, uint64_t& v) { return in.readUInt64(v); });
}

TEST_F(BufferStates, ReadBytesAndPeek) {
    Guarded targets(LONGEST + 16);
    for (size_t length = 0; length <= LONGEST; ++length) {
        for (size_t position = 0; position <= length; ++position) {
            forSizes(LONGEST, [&](size_t size) {
                char* const bytes = memory_.place(length, {Place::Behind, 0});
                for (size_t i = 0; i < length; ++i) {
                    bytes[i] = static_cast<char>(i + 1);
                }
                BixReadBuf in(bytes, length);
                in.position = position;

                uint8_t peeked = 0xEE;
                ASSERT_EQ(in.readUInt8(peeked, size), size < length ? 0 : -2);
                ASSERT_EQ(peeked, size < length ? size + 1 : 0xEE);
                ASSERT_EQ(in.position, position);

                ASSERT_EQ(in.readBytes(nullptr, size), -8);
                ASSERT_EQ(in.position, position);

                const bool fits = size <= length - position;
                char* const target = targets.place(fits ? size : 0, {Place::Behind, 0});
                ASSERT_EQ(in.readBytes(target, size), fits ? 0 : -2);
                ASSERT_EQ(in.position, position + (fits ? size : 0));
                ASSERT_TRUE(sameBytes(target, bytes + position, fits ? size : 0));
                ASSERT_TRUE(targets.aroundIsIntact());
                cases_ += 3;
            });
        }
    }
}

} // namespace

} // namespace tests
