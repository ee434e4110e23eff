#include "protocol/Stream.h"

#include "protocol/Scalar.h"

#include <algorithm>
#include <cstring>

namespace cs_relay_msg {

using schema::Field;
using schema::Kind;
using schema::Type;

namespace {

/// Compares a field behind fields that are equal already, so that a count or a command is the same in both.
bool equalField(const Type& type, const Field& field, const char* a, const char* b) {
    const char* const memberA = a + field.offset;
    const char* const memberB = b + field.offset;
    if (field.kind == Kind::Scalar) {
        return std::memcmp(memberA, memberB, field.width) == 0;
    }
    if (field.kind == Kind::String) {
        return std::strncmp(memberA, memberB, field.bound) == 0;
    }
    if (field.kind == Kind::Union) {
        const auto id = static_cast<uint8_t>(a[schema::COMMAND_BYTE]);
        const schema::Command* const command = schema::findCommand(id);
        return command == nullptr || equal(*command->type, memberA, memberB);
    }
    uint64_t count = 1;
    if (field.kind != Kind::Record) {
        count = std::min<uint64_t>(scalar::load(type.fields[field.countField], a), field.bound);
    }
    if (field.kind == Kind::Bytes) {
        return std::memcmp(memberA, memberB, static_cast<size_t>(count)) == 0;
    }
    for (size_t i = 0; i < count; ++i) {
        if (!equal(*field.type, memberA + i * field.width, memberB + i * field.width)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool equal(const Type& type, const void* a, const void* b) noexcept {
    for (const Field& field : type) {
        if (!equalField(type, field, static_cast<const char*>(a), static_cast<const char*>(b))) {
            return false;
        }
    }
    return true;
}

} // namespace cs_relay_msg
