/// @file
/// The protocol as a page to read.
#ifndef KORVAN_TOOLS_RELAYMSG_SCHEMA_MARKDOWN_H
#define KORVAN_TOOLS_RELAYMSG_SCHEMA_MARKDOWN_H

#include <string>

namespace relaymsg {

/// Markdown: the commands, then a section for each record.
std::string schemaMarkdown();

} // namespace relaymsg

#endif
