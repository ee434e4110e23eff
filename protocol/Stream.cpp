#include "protocol/Stream.h"

#include "protocol/Envelope.h"
#include "protocol/Scalar.h"

#include <cstring>

namespace cs_relay_msg {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using schema::Field;
using schema::Type;

namespace {

bool selects(uint8_t commandId, const Type& type) {
    const schema::Command* command = schema::findCommand(commandId);
    return command != nullptr && command->type == &type;
}

/// Whether the message at the cursor has a head that can be read, of a command without a member of this type.
bool isOther(const BixReadBuf& buffer, const Type& type) {
    CSRelayMsgHead head;
    return envelope::unpackHead(head, buffer) == BIX_OK && !selects(head.bCmdId, type);
}

/// Runs @p operation on a buffer over plain memory and reports how far it got.
template <class Buffer, class Char, class Operation>
int32_t flat(Char* memory, size_t size, size_t* usedSize, Operation operation) {
    if (memory == nullptr) {
        return BIX_ERR_NULL_ARGUMENT;
    }
    Buffer buffer(memory, size);
    const int32_t result = operation(buffer);
    if (usedSize != nullptr) {
        *usedSize = buffer.getUsedSize();
    }
    return result;
}

} // namespace

int32_t unpackHead(CSRelayMsgHead& head, const char* memory, size_t size) noexcept {
    return flat<BixReadBuf>(memory, size, nullptr,
                            [&](BixReadBuf& buffer) { return envelope::unpackHead(head, buffer); });
}

int32_t packMessage(const CSRelayMsgHead& head, const Type& type, const void* member, BixWriteBuf& buffer,
                    uint32_t cutVer) noexcept {
    return selects(head.bCmdId, type) ? envelope::pack(head, member, buffer, cutVer) : OTHER_COMMAND;
}

int32_t unpackMessage(CSRelayMsgHead& head, const Type& type, void* member, BixReadBuf& buffer) noexcept {
    return isOther(buffer, type) ? OTHER_COMMAND : envelope::unpack(head, member, buffer);
}

bool beginMessage(CSRelayMsg& message, long long command) noexcept {
    const schema::Command* const known = schema::findCommand(command);
    if (known == nullptr) {
        return false;
    }
    message.stHead.construct();
    message.stHead.bCmdId = known->id;
    message.stBody.construct(known->id);
    return true;
}

namespace detail {

int32_t packFlat(const CSRelayMsgHead& head, const Type& type, const void* member, char* memory, size_t size,
                 size_t* usedSize, uint32_t cutVer) noexcept {
    return flat<BixWriteBuf>(memory, size, usedSize, [&](BixWriteBuf& buffer) {
        return packMessage(head, type, member, buffer, cutVer);
    });
}

int32_t unpackFlat(CSRelayMsgHead& head, const Type& type, void* member, const char* memory, size_t size,
                   size_t* usedSize) noexcept {
    return flat<BixReadBuf>(memory, size, usedSize,
                            [&](BixReadBuf& buffer) { return unpackMessage(head, type, member, buffer); });
}

int32_t setText(char* field, size_t capacity, std::string_view text) noexcept {
    if (text.size() >= capacity) {
        return BIX_ERR_STRING_TOO_LONG;
    }
    if (text.find('\0') != std::string_view::npos) {
        return BIX_ERR_STRING_MALFORMED;
    }
    if (!text.empty()) { // an empty text may have no address
        std::memmove(field, text.data(), text.size());
    }
    field[text.size()] = '\0';
    field[capacity - 1] = '\0';
    return BIX_OK;
}

int32_t setBytes(const Type& type, void* record, const uint8_t* field, const void* bytes,
                 size_t size) noexcept {
    char* const base = static_cast<char*>(record);
    const auto offset = static_cast<size_t>(reinterpret_cast<const char*>(field) - base);
    const Field* array = type.begin();
    while (array->offset != offset) { // it is there: the table tiles the record
        ++array;
    }
    if (size > array->bound) {
        return BIX_ERR_COUNT_OUT_OF_RANGE;
    }
    if (size != 0) {
        if (bytes == nullptr) {
            return BIX_ERR_NULL_POINTER;
        }
        std::memmove(base + offset, bytes, size);
    }
    scalar::store(type.fields[array->countField], base, size);
    return BIX_OK;
}

} // namespace detail

} // namespace cs_relay_msg
