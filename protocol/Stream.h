/// @file
/// Messages from a stream and in little memory: free functions beside the records of cs_relay_msg.h.
///
/// - `scan` tells where a message ends, while its bytes arrive piece by piece.
/// - `unpackHead` reads the head alone, which is enough to route a message.
/// - `packMessage` and `unpackMessage` handle a head and one member without a `CSRelayMsg`, which is half a
///   megabyte.
/// - `beginMessage` makes a `CSRelayMsg` ready for a command.
/// - `setText` and `setBytes` fill a field and refuse what does not fit.
/// - `equal` compares what two records mean.
///
/// They work from the same tables as the records' own operations. All are synchronous, keep no state but the
/// caller's, allocate nothing and throw nothing; calls that share no record, buffer or state may run at the
/// same time. All sizes and offsets are in bytes.
#ifndef KORVAN_PROTOCOL_STREAM_H
#define KORVAN_PROTOCOL_STREAM_H

#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cs_relay_msg {

// ---- Where a message ends ----

/// What is known of a message, given its bytes so far.
enum class ScanStatus : uint8_t {
    Need,           ///< It goes on: at least `ScanResult::need` more bytes are to come.
    Complete,       ///< It is whole: `CSRelayMsg::unpack` of its bytes returns 0 and uses them all.
    UnknownCommand, ///< Its head, 12 bytes, names an unassigned command: where it ends cannot be known.
    Malformed,      ///< Whatever follows, `CSRelayMsg::unpack` fails.
};

/// How far a scan has come: constant in size, a plain value that may be copied, and the caller's to keep, one
/// for each stream. A new one stands before the first byte of a message. `state = {}` starts over.
///
/// The members are for `scan` alone. The state points to nothing of the caller's.
struct ScanState {
    /// A record that the scan is inside of.
    struct Level {
        const schema::Type* type; ///< its type
        uint32_t field;           ///< index of the current field
        uint32_t elements;        ///< records in that field, as many as the count says
        uint32_t element;         ///< index of the current one of them
    };

    Level levels[schema::MAX_DEPTH] = {};     ///< from the message inward
    const schema::Command* command = nullptr; ///< once the head is complete
    uint64_t value = 0;                       ///< of the latest integer or length, as far as it is known
    uint32_t size = 0;                        ///< bytes of the message so far
    uint32_t left = 0;                        ///< bytes of the current integer, length, text or array to come
    int32_t code = Korvan::BIX_OK;            ///< as in `ScanResult`
    ScanStatus status = ScanStatus::Need;     ///< as in `ScanResult`
    uint8_t depth = 0;                        ///< levels in use; none before and behind the message
    uint8_t version = schema::BASE_VERSION;   ///< of the message
    bool inText = false;                      ///< behind the length of a string
};

/// What `scan` found.
struct ScanResult {
    ScanStatus status; ///< what is known of the message

    /// Malformed: the code that `CSRelayMsg::unpack` returns once enough bytes follow: -3, -4, -5, -7 or -20
    /// (BixResult.h). With too few it is -2 instead, as for every message cut short. Otherwise 0.
    int32_t code;

    /// Bytes of this piece that the scan took. Complete: the next message begins behind them. Malformed: the
    /// last one is the byte at `offset`.
    size_t used;

    /// Bytes of the message so far, this piece's included; the whole message's when it is complete.
    size_t size;

    /// Need: the fewest bytes that can complete the message, or its head while the command is not known; at
    /// least 1. Who reads no more than these at a time never takes a byte of the next message, and `size` and
    /// `need` together are never above `CSRelayMsg::maxWireSize`. Otherwise 0.
    size_t need;

    /// Malformed, UnknownCommand: where the byte stands, from the start of the message, that decided it.
    /// Otherwise 0.
    size_t offset;

    /// Malformed, UnknownCommand: the field that this byte belongs to: `bVersion`, `bCmdId`, a count or a
    /// string. Otherwise null. `scanPath` tells which of the fields of this name it is.
    const schema::Field* field;
};

/// Looks at the next bytes of a stream and tells whether the message in it is whole, can become so, or never
/// will. The first call with a new state begins at the first byte of a message; however the bytes are cut
/// into pieces, the outcome is the same.
///
/// Stops at the end of the message or at the byte that spoils it, and takes no byte behind that. Looks at
/// each byte once, keeps none of them, and decides at the earliest byte possible: a length or count whose
/// first bytes alone put it above its bound is malformed there and then, and so is a text at its first NUL if
/// that is not its last byte.
///
/// After `Complete` the next call begins the next message. After `UnknownCommand` and `Malformed` nothing in
/// the stream tells where another message begins: further calls take nothing and find the same, until the
/// caller sets `state = {}`. (In a datagram an unknown command is no error: it is to be skipped.)
///
/// @param bytes what arrived; may be cut anywhere, and is not needed after the call. Null is an empty piece.
/// @param size the bytes in it; 0 asks how the message stands
KORVAN_API ScanResult scan(ScanState& state, const char* bytes, size_t size) noexcept;

/// Writes the path of the field that the scan has come to, after a malformed message the one at fault, such
/// as "stBody.stRelayLockStep.astRelayData[1].astRelayData[17].wRelayLen"; 100 bytes are enough for each.
///
/// @return @p buffer, which holds the path, or what fits of it at whole names, and a NUL; an empty text if
///         there is no buffer or its size is 0. A new state, and one whose message is complete, has an empty
///         path.
KORVAN_API const char* scanPath(const ScanState& state, char* buffer, size_t size) noexcept;

// ---- A head, and one member with it ----

/// The head's command does not select a member of the given type. No code of BixResult.h, since no message is
/// at fault: above 0, where those are below.
inline constexpr int32_t OTHER_COMMAND = 1;

/// Reads the head of the message at the start of @p buffer: version, command and ids, without the rest. Bytes
/// behind the first 12 are not looked at. The result and the head are those of `CSRelayMsg::unpack` as far as
/// the head goes.
///
/// @return 0; -19 (`BIX_ERR_NULL_ARGUMENT`) for a null @p buffer, -2 (`BIX_ERR_READ_UNDERFLOW`) for fewer
///         than 9 bytes, and -20 (`BIX_ERR_VERSION_OUT_OF_RANGE`) for a version other than 1 to 3: @p head
///         then stays as it was; -2 for 9 to 11 bytes: the fields that are there are then in @p head.
KORVAN_API int32_t unpackHead(CSRelayMsgHead& head, const char* buffer, size_t size) noexcept;

/// Packs a message of @p head and @p member as `CSRelayMsg::pack` does: same bytes, same result, same used
/// size, and the same left behind after a failure, with the same store into a string whose last character is
/// not NUL.
///
/// The head's `bCmdId` must select a member of type @p T; if it does not, the result is `OTHER_COMMAND`, and
/// nothing is written: the cursor stays, and a plain buffer's used size is 0. A null plain buffer is -19
/// before that.
template <class T>
int32_t packMessage(const CSRelayMsgHead& head, const Record<T>& member, char* buffer, size_t size,
                    size_t* usedSize = nullptr, uint32_t cutVer = 0) noexcept;
/// The same at the cursor of @p buffer.
template <class T>
int32_t packMessage(const CSRelayMsgHead& head, const Record<T>& member, Korvan::BixWriteBuf& buffer,
                    uint32_t cutVer = 0) noexcept;

/// Unpacks a message into @p head and @p member as `CSRelayMsg::unpack` does: same result, same used size,
/// and the same in both records after a failure. The version is the one in the message.
///
/// The message's command must select a member of type @p T; if it does not, the result is `OTHER_COMMAND`,
/// and head, member and the buffer's cursor stay as they were: try the next type, or route by `unpackHead`
/// first. So an unassigned command is not 0 here, but a version out of range is -20 before it, and fewer than
/// 12 bytes are -2.
template <class T>
int32_t unpackMessage(CSRelayMsgHead& head, Record<T>& member, const char* buffer, size_t size,
                      size_t* usedSize = nullptr) noexcept;
/// The same at the cursor of @p buffer.
template <class T>
int32_t unpackMessage(CSRelayMsgHead& head, Record<T>& member, Korvan::BixReadBuf& buffer) noexcept;

/// Makes @p message ready to be filled in for a command: the head at its defaults with `bCmdId` set, and the
/// member that it selects as its `construct` leaves it. The rest of the body stays as it was and is not
/// touched, so this costs no more than that member.
///
/// @return whether @p command, one of the constants in `cmd`, is assigned; if not, @p message stays as it was
[[nodiscard]] KORVAN_API bool beginMessage(CSRelayMsg& message, long long command) noexcept;

// ---- Fields set with a check ----

/// Sets a text field, such as `setText(record.szSigBuf, "token")`. `pack` cuts a text that is too long and
/// one that holds a NUL without a word; this refuses both.
///
/// Writes the text, the NUL behind it, and a NUL into the field's last character, so that packing this field
/// writes nothing to the record. Characters in between stay as they were. @p text may lie in the field.
///
/// @return 0; -3 (`BIX_ERR_STRING_TOO_LONG`) if the text has more than N - 1 characters; -5
///         (`BIX_ERR_STRING_MALFORMED`) if it holds a NUL. The field then stays as it was.
template <size_t N>
int32_t setText(char (&field)[N], std::string_view text) noexcept;
template <size_t N>
int32_t setText(char (&field)[N], std::nullptr_t) = delete;

/// Sets an array of bytes and its count, such as `setBytes(datum, &CSRelayData::szRelayBuf, input, size)`.
/// Bytes behind the counted ones stay as they were. @p bytes may lie in the field itself.
///
/// @return 0; -7 (`BIX_ERR_COUNT_OUT_OF_RANGE`) if @p size is above N; -8 (`BIX_ERR_NULL_POINTER`) if
///         @p bytes is null and @p size is not 0. Field and count then stay as they were.
template <class T, size_t N>
int32_t setBytes(T& record, uint8_t (T::*field)[N], const void* bytes, size_t size) noexcept;

// ---- Meaning ----

/// Whether two records mean the same: every integer is equal, and so is every text up to its NUL, and every
/// array in its counted elements. What lies behind these is not looked at.
///
/// Of a message the head and the selected member are compared; with an unassigned command, the heads alone.
/// The head's `bVersion` counts like any other field. A count above its bound means the whole array, and a
/// text without a NUL is its whole field: such records are compared too, within their arrays.
template <class T>
bool equal(const Record<T>& a, const Record<T>& b) noexcept;

// ---- The same for a type known only at run time ----

/// As above, with the records given by their address, which must be of type @p type.
/// @{
KORVAN_API int32_t packMessage(const CSRelayMsgHead& head, const schema::Type& type, const void* member,
                               Korvan::BixWriteBuf& buffer, uint32_t cutVer = 0) noexcept;
KORVAN_API int32_t unpackMessage(CSRelayMsgHead& head, const schema::Type& type, void* member,
                                 Korvan::BixReadBuf& buffer) noexcept;
KORVAN_API bool equal(const schema::Type& type, const void* a, const void* b) noexcept;
/// @}

// ---- Behind the templates ----

namespace detail {
KORVAN_API int32_t packFlat(const CSRelayMsgHead& head, const schema::Type& type, const void* member,
                            char* buffer, size_t size, size_t* usedSize, uint32_t cutVer) noexcept;
KORVAN_API int32_t unpackFlat(CSRelayMsgHead& head, const schema::Type& type, void* member,
                              const char* buffer, size_t size, size_t* usedSize) noexcept;
KORVAN_API int32_t setText(char* field, size_t capacity, std::string_view text) noexcept;
KORVAN_API int32_t setBytes(const schema::Type& type, void* record, const uint8_t* field, const void* bytes,
                            size_t size) noexcept;
} // namespace detail

template <class T>
int32_t packMessage(const CSRelayMsgHead& head, const Record<T>& member, char* buffer, size_t size,
                    size_t* usedSize, uint32_t cutVer) noexcept {
    return detail::packFlat(head, schema::typeOf<T>(), &member, buffer, size, usedSize, cutVer);
}

template <class T>
int32_t packMessage(const CSRelayMsgHead& head, const Record<T>& member, Korvan::BixWriteBuf& buffer,
                    uint32_t cutVer) noexcept {
    return packMessage(head, schema::typeOf<T>(), &member, buffer, cutVer);
}

template <class T>
int32_t unpackMessage(CSRelayMsgHead& head, Record<T>& member, const char* buffer, size_t size,
                      size_t* usedSize) noexcept {
    return detail::unpackFlat(head, schema::typeOf<T>(), &member, buffer, size, usedSize);
}

template <class T>
int32_t unpackMessage(CSRelayMsgHead& head, Record<T>& member, Korvan::BixReadBuf& buffer) noexcept {
    return unpackMessage(head, schema::typeOf<T>(), &member, buffer);
}

template <size_t N>
int32_t setText(char (&field)[N], std::string_view text) noexcept {
    return detail::setText(field, N, text);
}

template <class T, size_t N>
int32_t setBytes(T& record, uint8_t (T::*field)[N], const void* bytes, size_t size) noexcept {
    return detail::setBytes(schema::typeOf<T>(), &record, record.*field, bytes, size);
}

template <class T>
bool equal(const Record<T>& a, const Record<T>& b) noexcept {
    return equal(schema::typeOf<T>(), &a, &b);
}

} // namespace cs_relay_msg

#endif
