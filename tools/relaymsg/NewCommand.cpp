#include "tools/relaymsg/CommandLine.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/NewMessage.h"

#include <memory>

namespace relaymsg {

namespace {

constexpr const char* HELP =
    R"(COMMAND is a name such as stRelayLoginReq, or its id; --list shows all. The
message has all the defaults of the protocol, on one line, ready to be changed
and given to `relaymsg encode`.

Examples:
  relaymsg new --list
  relaymsg new stRelayLoginReq > login.json
  relaymsg new 184 | jq '.stHead.dwUserID = 1001' | relaymsg encode --hex

)";

struct NewOptions {
    std::string command;
    uint32_t cutVersion = 0;
};

/// The ids and the names of all commands.
std::string commandList() {
    std::string text;
    for (const auto& command : cs_relay_msg::schema::commands()) {
        text += std::to_string(command.id) + "  " + command.name + "\n";
    }
    return text;
}

} // namespace

void addNew(CLI::App& app, ExitStatus& status) {
    const auto options = std::make_shared<NewOptions>();
    CLI::App& command = *app.add_subcommand("new", "Print a new message of a command as JSON");
    command.add_option("COMMAND", options->command, "The name or the id of the command")->type_name("");
    CLI::Option* const list = command.add_flag("--list", "Print the ids and names of all commands");
    addVersion(command, "--cut-version", options->cutVersion,
               "The version of the message; by default the current one");
    command.footer(HELP + exitStatuses());
    command.callback([=, &status] {
        if (*list) {
            status = print(commandList());
            return;
        }
        const auto* found = parseCommand(options->command);
        if (found == nullptr) {
            throw CLI::ValidationError("COMMAND", options->command.empty()
                                                      ? "is missing; `relaymsg new --list` shows all"
                                                      : "there is no " + options->command +
                                                            "; `relaymsg new --list` shows all");
        }
        status = printNew(*found, options->cutVersion);
    });
}

} // namespace relaymsg
