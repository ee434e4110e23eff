#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/Schema.h"
#include "tools/relaymsg/SchemaLua.h"
#include "tools/relaymsg/SchemaMarkdown.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(Prints the protocol as JSON: the record types with their fields, and the
commands. --check compares it with what was printed before, and says of each
change whether a peer that still speaks the old protocol misunderstands the
new one.

Examples:
  relaymsg schema | jq '.commands[].name'
  relaymsg schema --markdown > reference.md
  relaymsg schema --lua > relaymsg.lua
  relaymsg schema --check relay.schema.json

)";

struct SchemaOptions {
    bool markdown = false;
    bool lua = false;
    std::string old;
};

} // namespace

void addSchema(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<SchemaOptions>();
    CLI::App& schema = *app.add_subcommand("schema", "Tell the protocol");
    CLI::Option* markdown = schema.add_flag("--markdown", options->markdown, "Print a page to read");
    CLI::Option* lua =
        schema.add_flag("--lua", options->lua, "Print a dissector for Wireshark")->excludes(markdown);
    schema.add_option("--check", options->old, "Say what changed since OLD was printed; - is standard input")
        ->type_name("OLD")
        ->excludes(markdown)
        ->excludes(lua);
    schema.footer(HELP + exitStatuses());
    schema.callback([options, &status] {
        status = !options->old.empty() ? checkSchema(options->old)
                 : options->markdown   ? print(schemaMarkdown())
                 : options->lua        ? print(schemaLua())
                                       : printSchema();
    });
}

} // namespace relaymsg
