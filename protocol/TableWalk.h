/// @file
/// Private: `construct` and `visualize`, which walk a record's table at run time.
#ifndef KORVAN_PROTOCOL_TABLE_WALK_H
#define KORVAN_PROTOCOL_TABLE_WALK_H

#include "protocol/Schema.h"

namespace cs_relay_msg::walk {

/// Sets every field of @p record to its default.
void construct(const schema::Type& type, char* record) noexcept;

/// Appends the text of @p record.
int32_t visualize(const schema::Type& type, const char* record, Korvan::BixWriteBuf& buffer, int indent,
                  char sep) noexcept;

/// Appends a header line with this label.
int32_t visualizeHeader(const char* label, size_t labelLength, Korvan::BixWriteBuf& buffer, int indent,
                        char sep) noexcept;

/// The indentation of what a record at @p indent contains.
int deeper(int indent) noexcept;

} // namespace cs_relay_msg::walk

#endif
