/// @file
/// The commands on the command line.
#ifndef KORVAN_TOOLS_RELAYMSG_COMMAND_LINE_H
#define KORVAN_TOOLS_RELAYMSG_COMMAND_LINE_H

#include "protocol/Schema.h"
#include "tools/relaymsg/ExitStatus.h"
#include "tools/relaymsg/Input.h"
#include "tools/relaymsg/Selection.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace relaymsg {

/// Each adds its command to @p app. When the command is given, it runs and puts its exit status to @p status.
/// @{
void addDecode(CLI::App& app, ExitStatus& status);
void addEncode(CLI::App& app, ExitStatus& status);
void addNew(CLI::App& app, ExitStatus& status);
void addDiff(CLI::App& app, ExitStatus& status);
void addSchema(CLI::App& app, ExitStatus& status);
void addStats(CLI::App& app, ExitStatus& status);
/// @}

/// Makes @p app the tool's command line, with all commands of this build.
void addAll(CLI::App& app, ExitStatus& status);

/// The exit statuses in words, for a command's help.
inline std::string exitStatuses() {
    std::string text = "Exit status:\n";
    for (const ExitMeaning& meaning : EXIT_MEANINGS) {
        text += "  " + std::to_string(static_cast<int>(meaning.status)) + "  " + meaning.words + "\n";
    }
    return text;
}

/// Adds the option @p name, whose text @p parse turns into a value for @p target, or into nothing.
template <class Value>
CLI::Option* addParsed(CLI::App& app, const char* name, Value& target,
                       std::optional<Value> (*parse)(std::string_view), const char* requirement,
                       const char* description) {
    const auto take = [=, &target](const std::string& text) {
        const std::optional<Value> value = parse(text);
        if (!value) {
            throw CLI::ValidationError(name, requirement);
        }
        target = *value;
    };
    return app.add_option_function<std::string>(name, take, description);
}

/// Adds the argument for the input.
inline void addFile(CLI::App& app, std::string& file) {
    app.add_option("FILE", file, "What to read; - is standard input")->type_name("");
}

/// Adds the options that tell how an input is read.
void addInput(CLI::App& app, InputOptions& options);

/// Adds the options that choose messages.
void addSelection(CLI::App& app, Selection& selection);

/// Adds an option for a version of the protocol.
inline void addVersion(CLI::App& app, const char* name, uint32_t& target, const char* description) {
    const auto types = cs_relay_msg::schema::types();
    app.add_option(name, target, description)
        ->check(CLI::Range(cs_relay_msg::schema::BASE_VERSION, types[types.size - 1]->currentVersion)
                    .description(""))
        ->type_name("N");
}

} // namespace relaymsg

#endif
