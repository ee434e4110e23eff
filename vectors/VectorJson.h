/// @file
/// Records as the JSON of the vectors, in both directions, through the library's tables. README.md in this
/// folder describes the JSON.
#ifndef KORVAN_VECTORS_VECTOR_JSON_H
#define KORVAN_VECTORS_VECTOR_JSON_H

#include "protocol/Schema.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vectors {

using Json = nlohmann::ordered_json;
using cs_relay_msg::schema::Type;

/// Memory for one record of any type, each byte set to the same value.
class Storage {
public:
    Storage(const Type& type, char fill) : bytes_(type.size, fill) {}

    char* data() { return bytes_.data(); }
    const char* data() const { return bytes_.data(); }
    bool operator==(const Storage& other) const { return bytes_ == other.bytes_; }

private:
    std::vector<char> bytes_;
};

/// The type of that name. Throws std::runtime_error if there is none.
const Type& typeNamed(const std::string& name);

/// The bytes that a JSON string stands for, its repeats written out.
std::string expand(const Json& text);

/// Text as JSON, long repetitions shortened; `{"hex": ...}` where it is not UTF-8.
Json textJson(const std::string& text);

/// Bytes as hexadecimal digits, long repetitions shortened.
Json hexJson(const std::string& bytes);
std::string fromHex(const Json& hex);

/// What textJson() gave.
std::string fromText(const Json& text);

/// All fields of a record; of a counted field the counted part, or nothing where the count is above its
/// bound.
Json fieldsJson(const Type& type, const char* record);

/// The fields that hold the same bytes in both records: what one operation wrote to both, if they differed in
/// every byte before. Empty lists and objects are left out unless @p complete.
Json writtenJson(const Type& type, const char* one, const char* other, bool complete);

/// Stores the fields that the JSON names, and no others. Throws std::runtime_error on what does not fit.
void apply(const Type& type, char* record, const Json& fields);

} // namespace vectors

#endif
