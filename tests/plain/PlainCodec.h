/// @file
/// A second codec, as plain as can be: it walks the tables field by field at run time and uses nothing but
/// the buffers' public operations. Tests, fuzzers and benchmarks hold the library against it.
///
/// A record is given by its type and its address. Each operation does what the library's operation of that
/// name does: same result, same cursor, same bytes, same record.
#ifndef KORVAN_TESTS_PLAIN_PLAIN_CODEC_H
#define KORVAN_TESTS_PLAIN_PLAIN_CODEC_H

#include "protocol/Schema.h"

#include <cstdint>

namespace cs_relay_msg::plain {

int32_t construct(const schema::Type& type, void* record);

/// The record is not const: the last byte of every string's array becomes NUL, as it does in the library.
int32_t pack(const schema::Type& type, void* record, Korvan::BixWriteBuf& out, uint32_t cutVer);

int32_t unpack(const schema::Type& type, void* record, Korvan::BixReadBuf& in, uint32_t cutVer);

/// For buffers below 1 GiB, so that an indentation wider than the buffer can still be printed.
int32_t visualize(const schema::Type& type, const void* record, Korvan::BixWriteBuf& out, int indent,
                  char sep);

// The same for the body union at the address @p body.
int32_t constructBody(long long selector, void* body);
int32_t packBody(long long selector, void* body, Korvan::BixWriteBuf& out, uint32_t cutVer);
int32_t unpackBody(long long selector, void* body, Korvan::BixReadBuf& in, uint32_t cutVer);
int32_t visualizeBody(long long selector, const void* body, Korvan::BixWriteBuf& out, int indent, char sep);

} // namespace cs_relay_msg::plain

#endif
