/// @file
/// The protocol as JSON, and what a change of it means.
#ifndef KORVAN_TOOLS_RELAYMSG_SCHEMA_JSON_H
#define KORVAN_TOOLS_RELAYMSG_SCHEMA_JSON_H

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace relaymsg {

/// The tables of Schema.h, in their order.
nlohmann::ordered_json schemaJson();

/// One difference between two protocols.
struct SchemaChange {
    bool breaks; ///< a peer of the old protocol misunderstands the new one
    std::string sentence;
};

/// What changed from @p before to @p after, both of which `schemaJson` made. Throws a JsonFault or what
/// nlohmann::json throws if one of them is something else.
std::vector<SchemaChange> schemaChanges(const nlohmann::json& before, const nlohmann::json& after);

} // namespace relaymsg

#endif
