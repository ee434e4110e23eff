#include "protocol/Stream.h"

#include "protocol/Table.h"

#include <algorithm>
#include <cstring>

namespace cs_relay_msg {

using schema::Field;
using schema::Kind;
using schema::Type;
using Level = ScanState::Level;

namespace {

/// What an integer or length may be, and what `unpack` calls it otherwise.
struct Limits {
    uint64_t min;
    uint64_t max;
    int32_t belowMin;
    int32_t aboveMax;
};

Level& top(ScanState& state) {
    return state.levels[state.depth - 1];
}

const Level& top(const ScanState& state) {
    return state.levels[state.depth - 1];
}

const Field& fieldOf(const Level& level) {
    return level.type->fields[level.field];
}

/// The array that the current field of @p level counts, or null.
const Field* counted(const Level& level) {
    const size_t next = level.field + 1u;
    return next < level.type->fieldCount &&
                   level.type->fields[next].countField == static_cast<int>(level.field)
               ? &level.type->fields[next]
               : nullptr;
}

/// The integer or length, when those of its bytes that are still to come are 0.
uint64_t lowest(const ScanState& state) {
    return state.value == 0 ? 0 : state.value << (8 * state.left); // never a shift by all 64 bits
}

Limits limitsOf(const ScanState& state) {
    const Level& level = top(state);
    if (fieldOf(level).kind == Kind::String) {
        return {1, fieldOf(level).bound, BIX_ERR_STRING_EMPTY, BIX_ERR_STRING_TOO_LONG};
    }
    if (const Field* array = counted(level)) {
        return {0, array->bound, BIX_OK, BIX_ERR_COUNT_OUT_OF_RANGE};
    }
    if (state.size == schema::VERSION_BYTE) {
        return {schema::BASE_VERSION, state.levels[0].type->currentVersion, BIX_ERR_VERSION_OUT_OF_RANGE,
                BIX_ERR_VERSION_OUT_OF_RANGE};
    }
    return {0, UINT64_MAX, BIX_OK, BIX_OK};
}

// ---- From field to field ----

void push(ScanState& state, const Type& type) {
    state.levels[state.depth++] = {&type, 0, 0, 0};
}

void await(ScanState& state, size_t bytes) {
    state.left = static_cast<uint32_t>(bytes);
}

/// Enters the current field. Returns whether it has bytes of its own to wait for.
bool enter(ScanState& state) {
    Level& level = top(state);
    const Field& field = fieldOf(level);
    if (state.version < field.since) {
        ++level.field;
        return false;
    }
    switch (field.kind) {
    case Kind::Scalar:
        state.value = 0;
        await(state, field.width);
        return true;
    case Kind::String:
        state.value = 0;
        await(state, sizeof(uint32_t));
        return true;
    case Kind::Bytes:
        await(state, static_cast<size_t>(state.value));
        level.field += state.left == 0 ? 1 : 0;
        return state.left != 0;
    case Kind::RecordArray:
        level.elements = static_cast<uint32_t>(state.value);
        break;
    case Kind::Record:
    case Kind::Union:
        level.elements = 1;
        break;
    }
    level.element = 0;
    if (level.elements == 0) {
        ++level.field;
    } else {
        push(state, field.kind == Kind::Union ? *state.command->type : *field.type);
    }
    return false;
}

/// Leaves a record behind its last field, for the next element or for what follows.
void leave(ScanState& state) {
    --state.depth;
    if (state.depth == 0) {
        state.status = ScanStatus::Complete;
        return;
    }
    Level& level = top(state);
    if (++level.element < level.elements) {
        push(state, *fieldOf(level).type);
    } else {
        ++level.field;
    }
}

/// Goes on to the next field that has bytes, or to the end of the message.
void settle(ScanState& state) {
    while (state.status == ScanStatus::Need) {
        if (top(state).field == top(state).type->fieldCount) {
            leave(state);
        } else if (enter(state)) {
            return;
        }
    }
}

void begin(ScanState& state) {
    state = {};
    push(state, schema::typeOf<CSRelayMsg>());
    settle(state);
}

// ---- Bytes ----

void take(ScanState& state, size_t bytes) {
    state.size += static_cast<uint32_t>(bytes);
    state.left -= static_cast<uint32_t>(bytes);
}

void fail(ScanState& state, int32_t code) {
    state.status = ScanStatus::Malformed;
    state.code = code;
}

/// Takes a byte of an integer or length.
void takeDigit(ScanState& state, char byte) {
    const Limits limits = limitsOf(state);
    const size_t at = state.size;
    state.value = state.value << 8 | static_cast<uint8_t>(byte);
    take(state, 1);
    if (lowest(state) > limits.max) {
        fail(state, limits.aboveMax);
    } else if (state.left == 0 && state.value < limits.min) {
        fail(state, limits.belowMin);
    } else if (at == schema::VERSION_BYTE) {
        state.version = static_cast<uint8_t>(state.value);
    } else if (at == schema::COMMAND_BYTE) {
        state.command = schema::findCommand(static_cast<uint8_t>(byte));
        if (state.command == nullptr) {
            state.status = ScanStatus::UnknownCommand;
        }
    }
}

/// Takes some bytes of a text, which must be free of NUL but for the last byte.
void takeText(ScanState& state, const char* text, size_t size) {
    const void* const nul = std::memchr(text, '\0', size);
    const size_t length = nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text) : size;
    const bool ends = size == state.left;
    if (ends ? length != size - 1 : nul != nullptr) {
        take(state, nul != nullptr ? length + 1 : size);
        fail(state, BIX_ERR_STRING_MALFORMED);
    } else {
        take(state, size);
    }
}

/// Takes what belongs to the current field of @p size bytes, at least 1; a field of digits takes one.
void takePart(ScanState& state, const char* bytes, size_t size) {
    const size_t part = std::min<size_t>(size, state.left);
    if (state.inText) {
        takeText(state, bytes, part);
    } else if (fieldOf(top(state)).kind == Kind::Bytes) {
        take(state, part);
    } else {
        takeDigit(state, *bytes);
    }
}

/// Goes on behind an integer, a length, a text or an array of bytes.
void advance(ScanState& state) {
    if (fieldOf(top(state)).kind == Kind::String && !state.inText) {
        state.inText = true;
        await(state, static_cast<size_t>(state.value));
        return;
    }
    state.inText = false;
    ++top(state).field;
    settle(state);
}

// ---- What is still to come ----

/// The fewest bytes of a field that has not begun. No body is counted: its command is not known yet.
size_t fewest(const Field& field, uint32_t version) {
    return version < field.since ? 0 : table::wireSize(field, version, {nullptr, 0}).min;
}

/// The fewest bytes of the fields behind the current one of @p level.
size_t fewestBehind(const Level& level, uint32_t version) {
    size_t bytes = 0;
    for (size_t i = level.field + 1u; i < level.type->fieldCount; ++i) {
        bytes += fewest(level.type->fields[i], version);
    }
    return bytes;
}

/// The fewest bytes of one element of an array.
size_t fewestOfElement(const Field& array, uint32_t version) {
    return array.type != nullptr ? table::wireSize(*array.type, version, {nullptr, 0}).min : array.width;
}

size_t fewestToCome(const ScanState& state) {
    const Level& level = top(state);
    const uint32_t version = state.version;
    size_t bytes = state.left + fewestBehind(level, version);
    if (fieldOf(level).kind == Kind::String) {
        bytes += state.inText ? 0 : static_cast<size_t>(std::max<uint64_t>(lowest(state), 1));
    } else if (const Field* array = counted(level)) {
        bytes += static_cast<size_t>(lowest(state)) * fewestOfElement(*array, version);
    }
    for (size_t i = 0; i + 1 < state.depth; ++i) {
        const Level& outer = state.levels[i];
        bytes += fewestBehind(outer, version);
        if (const size_t more = outer.elements - outer.element - 1) {
            bytes += more * fewestOfElement(fieldOf(outer), version);
        }
    }
    return bytes;
}

} // namespace

ScanResult scan(ScanState& state, const char* bytes, size_t size) noexcept {
    if (state.depth == 0) {
        begin(state);
    }
    const size_t given = bytes != nullptr ? size : 0;
    const size_t before = state.size;
    while (state.status == ScanStatus::Need && state.size - before < given) {
        const size_t used = state.size - before;
        takePart(state, bytes + used, given - used);
        if (state.left == 0 && state.status == ScanStatus::Need) {
            advance(state);
        }
    }
    ScanResult result{state.status, state.code, state.size - before, state.size, 0, 0, nullptr};
    if (state.status == ScanStatus::Need) {
        result.need = fewestToCome(state);
    } else if (state.status != ScanStatus::Complete) {
        result.offset = state.size - 1;
        result.field = &fieldOf(top(state));
    }
    return result;
}

const char* scanPath(const ScanState& state, char* buffer, size_t size) noexcept {
    if (buffer == nullptr || size == 0) {
        return "";
    }
    Korvan::BixWriteBuf path(buffer, size);
    buffer[0] = '\0';
    for (size_t i = 0; i < state.depth; ++i) {
        const Field& field = fieldOf(state.levels[i]);
        const char* const dot = i != 0 ? "." : "";
        int32_t result = BIX_OK;
        if (field.kind == Kind::Union) {
            result = path.textize("%s%s.%s", dot, field.name, state.command->name);
        } else if (field.kind == Kind::RecordArray) {
            result = path.textize("%s%s[%u]", dot, field.name, state.levels[i].element);
        } else {
            result = path.textize("%s%s", dot, field.name);
        }
        if (result != BIX_OK) {
            buffer[path.getUsedSize()] = '\0';
            break;
        }
    }
    return buffer;
}

} // namespace cs_relay_msg
