// Both buffers under any sequence of operations.
//
// Holds: result, cursor and every byte are those of a model that knows only a vector and a number. The input
// is the buffer's size, then operations: one byte for the operation, then its arguments.
#include "fuzz/Memory.h"
#include "fuzz/Require.h"
#include "fuzz/Target.h"

#include "Common/Source/Core/BIX/BixBuf.h"

#include <utility>
#include <vector>

using namespace Korvan;

namespace {

constexpr size_t MOST = 96; ///< more than any buffer or run of bytes here has

/// The input, one argument after the other; zeros when it is used up.
class Arguments {
public:
    Arguments(const uint8_t* data, size_t size) : at_(data), left_(size) {}

    bool any() const { return left_ != 0; }
    uint8_t byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *at_++;
    }
    uint64_t number(size_t bytes) {
        uint64_t value = 0;
        for (size_t i = 0; i < bytes; ++i) {
            value = value * 256 + byte();
        }
        return value;
    }
    /// A size or position: as a rule small, at times among the largest there are.
    size_t size() {
        const uint8_t low = byte();
        return low < 240 ? low % 80u : SIZE_MAX - (low - 240u);
    }

private:
    const uint8_t* at_;
    size_t left_;
};

/// What a write buffer must do, in the fewest words.
struct Model {
    std::vector<char> bytes;
    size_t position = 0;

    size_t room() const { return bytes.size() - position; }

    /// The bytes of @p value, at @p where.
    void put(size_t where, uint64_t value, size_t width) {
        for (size_t i = 0; i < width; ++i) {
            bytes[where + i] = static_cast<char>(value >> (8 * (width - 1 - i)) & 0xFF);
        }
    }
    int32_t write(uint64_t value, size_t width) {
        if (room() < width) {
            return -1;
        }
        put(position, value, width);
        position += width;
        return 0;
    }
    int32_t patch(uint64_t value, size_t width, size_t where) {
        if (where > bytes.size() || bytes.size() - where < width) {
            return -1;
        }
        put(where, value, width);
        return 0;
    }
    int32_t skip(size_t count) {
        if (room() < count) {
            return -1;
        }
        position += count;
        return 0;
    }
    int32_t append(const char* source, size_t count) {
        const size_t start = position;
        const int32_t result = skip(count);
        for (size_t i = start; i < position; ++i) {
            bytes[i] = source[i - start];
        }
        return result;
    }
    int32_t charWithNull(char c) {
        if (room() < 2) {
            return -1;
        }
        bytes[position] = c;
        bytes[++position] = '\0';
        return 0;
    }
    int32_t text(const char* text, size_t count) {
        for (size_t i = 0; i < count && i + 1 < room(); ++i) {
            bytes[position + i] = text[i];
        }
        if (room() != 0) {
            bytes[position + (count < room() ? count : room() - 1)] = '\0';
        }
        if (count >= room()) {
            return -1;
        }
        position += count;
        return 0;
    }
};

/// One operation on the buffer, and on the model: the two results, which must agree.
std::pair<int32_t, int32_t> write(Arguments& arguments, BixWriteBuf& out, Model& model) {
    switch (arguments.byte() % 14) {
    case 0: {
        const uint8_t v = arguments.byte();
        return {out.writeUInt8(v), model.write(v, 1)};
    }
    case 1: {
        const uint8_t v = arguments.byte();
        return {out.writeUChar(v), model.write(v, 1)};
    }
    case 2: {
        const auto v = static_cast<uint16_t>(arguments.number(2));
        return {out.writeUInt16(v), model.write(v, 2)};
    }
    case 3: {
        const auto v = static_cast<uint32_t>(arguments.number(4));
        return {out.writeUInt32(v), model.write(v, 4)};
    }
    case 4: {
        const auto v = static_cast<uint32_t>(arguments.number(4));
        return {out.writeInt32(static_cast<int32_t>(v)), model.write(v, 4)};
    }
    case 5: {
        const uint64_t v = arguments.number(8);
        return {out.writeUInt64(v), model.write(v, 8)};
    }
    case 6: {
        const uint8_t v = arguments.byte();
        const size_t where = arguments.size();
        return {out.writeUInt8(v, where), model.patch(v, 1, where)};
    }
    case 7: {
        const uint8_t v = arguments.byte();
        const size_t where = arguments.size();
        return {out.writeChar(static_cast<char>(v), where), model.patch(v, 1, where)};
    }
    case 8: {
        const auto v = static_cast<uint32_t>(arguments.number(4));
        const size_t where = arguments.size();
        return {out.writeUInt32(v, where), model.patch(v, 4, where)};
    }
    case 9: {
        char source[MOST];
        std::memset(source, arguments.byte(), sizeof(source));
        const size_t count = arguments.size();
        return {out.writeBytes(source, count), model.append(source, count)};
    }
    case 10: {
        const size_t count = arguments.size();
        return {out.reserve(count), model.skip(count)};
    }
    case 11: {
        const auto c = static_cast<char>(arguments.byte());
        return {out.writeCharWithNull(c), model.charWithNull(c)};
    }
    case 12: {
        char text[MOST + 4]; // no std::string: MemorySanitizer does not see it filled
        const size_t count = arguments.byte() % sizeof(text);
        std::memset(text, 'a' + arguments.byte() % 26, count);
        text[count] = '\0';
        return {out.textize("%s", text), model.text(text, count)};
    }
    default:
        return {out.writeBytes(nullptr, arguments.size()), BIX_ERR_NULL_POINTER};
    }
}

void runWriter(Arguments& arguments) {
    Model model;
    model.bytes.assign(arguments.byte() % MOST, '\xA5');
    fuzz::Block memory(model.bytes.data(), model.bytes.size());
    BixWriteBuf out(memory.data(), memory.size());
    while (arguments.any()) {
        const auto [code, expected] = write(arguments, out, model);
        KORVAN_REQUIRE(code == expected);
        KORVAN_REQUIRE(out.getUsedSize() == model.position);
        KORVAN_REQUIRE(out.getTotalSize() == model.bytes.size());
    }
    KORVAN_REQUIRE(fuzz::same(memory.data(), model.bytes.data(), model.bytes.size()));
}

/// Reads one integer of the width of @p had; a read that fails leaves it as it is.
template <class T, class Read>
void readInteger(const std::vector<char>& bytes, size_t& position, T had, Read read) {
    T value = had;
    const int32_t code = read(value);
    if (bytes.size() - position < sizeof(T)) {
        KORVAN_REQUIRE(code == BIX_ERR_READ_UNDERFLOW && value == had);
        return;
    }
    uint64_t expected = 0;
    for (size_t i = 0; i < sizeof(T); ++i) {
        expected = expected * 256 + static_cast<uint8_t>(bytes[position + i]);
    }
    KORVAN_REQUIRE(code == BIX_OK && value == static_cast<T>(expected));
    position += sizeof(T);
}

void readAt(const std::vector<char>& bytes, const BixReadBuf& in, size_t where) {
    uint8_t value = 0xA5;
    const int32_t code = in.readUInt8(value, where);
    if (where < bytes.size()) {
        KORVAN_REQUIRE(code == BIX_OK && value == static_cast<uint8_t>(bytes[where]));
    } else {
        KORVAN_REQUIRE(code == BIX_ERR_READ_UNDERFLOW && value == 0xA5);
    }
}

void readRun(const std::vector<char>& bytes, size_t& position, BixReadBuf& in, size_t count) {
    char target[MOST];
    std::memset(target, 0x5A, sizeof(target));
    const int32_t code = in.readBytes(target, count);
    const bool fits = count <= bytes.size() - position;
    KORVAN_REQUIRE(code == (fits ? BIX_OK : BIX_ERR_READ_UNDERFLOW));
    const size_t copied = fits ? count : 0;
    KORVAN_REQUIRE(fuzz::same(target, bytes.data() + position, copied));
    for (size_t i = copied; i < sizeof(target); ++i) {
        KORVAN_REQUIRE(target[i] == 0x5A);
    }
    position += copied;
}

void runReader(Arguments& arguments) {
    std::vector<char> bytes(arguments.byte() % MOST);
    for (char& byte : bytes) {
        byte = static_cast<char>(arguments.byte());
    }
    const fuzz::Block memory(bytes.data(), bytes.size());
    BixReadBuf in(memory.data(), memory.size());
    size_t position = 0;
    while (arguments.any()) {
        switch (arguments.byte() % 9) {
        case 0:
            readInteger<uint8_t>(bytes, position, 0xA5, [&](uint8_t& v) { return in.readUInt8(v); });
            break;
        case 1:
            readInteger<uint8_t>(bytes, position, 0xA5, [&](uint8_t& v) { return in.readUChar(v); });
            break;
        case 2:
            readInteger<uint16_t>(bytes, position, 0xA5, [&](uint16_t& v) { return in.readUInt16(v); });
            break;
        case 3:
            readInteger<uint32_t>(bytes, position, 0xA5, [&](uint32_t& v) { return in.readUInt32(v); });
            break;
        case 4:
            readInteger<int32_t>(bytes, position, -7, [&](int32_t& v) { return in.readInt32(v); });
            break;
        case 5:
            readInteger<uint64_t>(bytes, position, 0xA5, [&](uint64_t& v) { return in.readUInt64(v); });
            break;
        case 6:
            readAt(bytes, in, arguments.size());
            break;
        case 7:
            readRun(bytes, position, in, arguments.size());
            break;
        default:
            KORVAN_REQUIRE(in.readBytes(nullptr, arguments.size()) == BIX_ERR_NULL_POINTER);
        }
        KORVAN_REQUIRE(in.getUsedSize() == position);
        KORVAN_REQUIRE(in.getLeftSize() == bytes.size() - position);
    }
    KORVAN_REQUIRE(fuzz::same(memory.data(), bytes.data(), bytes.size()));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Arguments arguments(data, size);
    if (arguments.byte() % 2 == 0) {
        runWriter(arguments);
    } else {
        runReader(arguments);
    }
    return 0;
}
