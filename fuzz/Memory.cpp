#include "fuzz/Memory.h"

#include "protocol/cs_relay_msg.h"
#include "tests/support/Random.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace fuzz {

using cs_relay_msg::schema::Type;

namespace {

size_t numberOf(const Type& type) {
    size_t number = 0;
    while (cs_relay_msg::schema::types()[number] != &type) {
        ++number;
    }
    return number;
}

constexpr size_t COMMAND_BYTE = offsetof(cs_relay_msg::CSRelayMsgHead, bCmdId); // on the wire too

const std::vector<char>& noise() {
    static const std::vector<char> bytes = [] {
        tests::Random random(1);
        return tests::noise(random, sizeof(cs_relay_msg::CSRelayMsg)); // no record is larger
    }();
    return bytes;
}

size_t memberSize(char command) {
    const auto* const selected = cs_relay_msg::schema::findCommand(static_cast<uint8_t>(command));
    return selected != nullptr ? selected->type->size : 0;
}

} // namespace

char* recordOf(const Type& type, size_t number) {
    constexpr size_t EACH = 3;
    static std::vector<std::unique_ptr<Block>> records(cs_relay_msg::schema::types().size * EACH);
    std::unique_ptr<Block>& record = records[numberOf(type) * EACH + number];
    if (!record) {
        record = std::make_unique<Block>(type.size);
    }
    return record->data();
}

size_t extentOf(const Case& input) {
    if (input.type.size != sizeof(cs_relay_msg::CSRelayMsg)) {
        return input.type.size;
    }
    const size_t before = memberSize(noise()[COMMAND_BYTE]);
    const size_t after = input.size > COMMAND_BYTE ? memberSize(input.wire[COMMAND_BYTE]) : 0;
    return sizeof(cs_relay_msg::CSRelayMsgHead) + std::max(before, after);
}

void fillWithNoise(const Case& input, char* record) {
    std::memcpy(record, noise().data(), extentOf(input));
}

} // namespace fuzz
