#include "tests/support/RandomRecord.h"

#include "protocol/cs_relay_msg.h"
#include "tests/support/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tests {

namespace {

using cs_relay_msg::schema::Command;
using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

constexpr int UNASSIGNED_COMMAND = 166;

/// From 0 to the smaller of @p bound and @p most, both ends often.
uint32_t randomSize(Random& random, uint32_t bound, uint32_t most, bool full) {
    const uint32_t limit = std::min(bound, most);
    if (full || random.chance(25)) {
        return limit;
    }
    return random.chance(20) ? 0 : static_cast<uint32_t>(random.below(uint64_t{limit} + 1));
}

void fillText(const Field& field, char* text, Random& random, const Shape& shape) {
    const bool unterminated = random.chance(shape.unterminated);
    const uint32_t length = randomSize(random, field.bound - 1, shape.text, shape.full);
    std::replace(text, text + (unterminated ? field.bound : length), '\0', '%');
    if (!unterminated) {
        text[length] = '\0';
    }
}

void fillFields(const Type& type, char* record, Random& random, const Shape& shape) {
    for (const Field& field : type) {
        char* const at = record + field.offset;
        switch (field.kind) {
        case Kind::Scalar:
            if (random.chance(20)) {
                storeScalar(field, at, random.chance(50) ? 0 : UINT64_MAX);
            }
            break;
        case Kind::String:
            fillText(field, at, random, shape);
            break;
        case Kind::Record:
            fillFields(*field.type, at, random, shape);
            break;
        case Kind::Bytes:
        case Kind::RecordArray: {
            const Field& count = type.fields[field.countField];
            const bool isBytes = field.kind == Kind::Bytes;
            const uint32_t size =
                randomSize(random, field.bound, isBytes ? shape.bytes : shape.elements, shape.full);
            storeScalar(count, record + count.offset, size);
            for (uint32_t i = 0; !isBytes && i < size; ++i) {
                fillFields(*field.type, at + size_t{i} * field.width, random, shape);
            }
            break;
        }
        case Kind::Union: {
            const auto commands = cs_relay_msg::schema::commands();
            const int command = shape.command != ANY_COMMAND
                                    ? shape.command
                                    : commands[static_cast<size_t>(random.below(commands.size))].id;
            record[offsetof(cs_relay_msg::CSRelayMsgHead, bCmdId)] = static_cast<char>(command);
            if (const Command* member = cs_relay_msg::schema::findCommand(command)) {
                fillFields(*member->type, at, random, shape);
            }
            break;
        }
        }
    }
}

} // namespace

Shape Shape::of(int commandId) const {
    Shape shape = *this;
    shape.command = commandId;
    return shape;
}

Shape Shape::withUnterminated(unsigned percent) const {
    Shape shape = *this;
    shape.unterminated = percent;
    return shape;
}

void fillRecord(const Type& type, char* record, Random& random, const Shape& shape) {
    fillNoise(random, record, type.size);
    fillFields(type, record, random, shape);
}

std::vector<int> commandsFor(const Type& type) {
    if (!isMessage(type)) {
        return {ANY_COMMAND};
    }
    std::vector<int> ids{UNASSIGNED_COMMAND};
    for (const Command& command : cs_relay_msg::schema::commands()) {
        ids.push_back(command.id);
    }
    return ids;
}

} // namespace tests
