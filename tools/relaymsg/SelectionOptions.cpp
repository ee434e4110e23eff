#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/NewMessage.h"

#include <charconv>
#include <vector>

namespace relaymsg {

namespace {

/// The id that @p text is, or that of the command which it names; ids without a command are ids, too.
uint8_t commandId(const std::string& text) {
    if (const auto* command = parseCommand(text)) {
        return command->id;
    }
    uint8_t id = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, id);
    if (read.ec != std::errc() || read.ptr != end) {
        throw CLI::ValidationError("--command", "there is no " + text + "; `relaymsg new --list` shows all");
    }
    return id;
}

} // namespace

void addSelection(CLI::App& app, Selection& selection) {
    const auto takeCommands = [&selection](const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            selection.commands.set(commandId(name));
        }
    };
    app.add_option_function<std::vector<std::string>>(
           "--command", takeCommands, "Only messages of this command, a name or an id; may be repeated")
        ->allow_extra_args(false)
        ->type_name("C");
    const auto addId = [&](const char* name, std::optional<uint32_t>& target, const char* description) {
        app.add_option_function<uint32_t>(
               name, [&target](uint32_t id) { target = id; }, description)
            ->type_name("ID");
    };
    addId("--user", selection.user, "Only messages with this user in their head");
    addId("--room", selection.room, "Only messages with this room in their head");
    app.add_option("--from", selection.from, "Only messages from number N on, which begin with 1")
        ->type_name("N");
    app.add_option("--to", selection.to, "Only messages up to number N")->type_name("N");
}

} // namespace relaymsg
