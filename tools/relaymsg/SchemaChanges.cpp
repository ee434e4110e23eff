#include "tools/relaymsg/JsonFault.h"
#include "tools/relaymsg/SchemaJson.h"

#include <algorithm>

namespace relaymsg {

using nlohmann::json;

namespace {

/// The entry of @p list whose @p key is @p value; null if there is none.
const json* find(const json& list, const char* key, const json& value) {
    for (const json& entry : list) {
        if (entry.at(key) == value) {
            return &entry;
        }
    }
    return nullptr;
}

std::string nameOf(const json& entry) {
    return entry.at("name").get<std::string>();
}

class Comparison {
public:
    Comparison(const json& before, const json& after) : before_(before), after_(after) {}

    std::vector<SchemaChange> run() {
        versions("the protocol", before_, after_);
        for (const json& type : before_.at("types")) {
            const json* now = find(after_.at("types"), "name", type.at("name"));
            if (now == nullptr) {
                breaks(nameOf(type) + " is gone.");
            } else {
                compareTypes(type, *now);
            }
        }
        for (const json& type : after_.at("types")) {
            if (find(before_.at("types"), "name", type.at("name")) == nullptr) {
                harmless(nameOf(type) + " is new.");
            }
        }
        commands();
        return std::move(changes_);
    }

private:
    void breaks(std::string sentence) { changes_.push_back({true, std::move(sentence)}); }
    void harmless(std::string sentence) { changes_.push_back({false, std::move(sentence)}); }

    void versions(const std::string& what, const json& before, const json& after) {
        const auto old = before.at("currentVersion").get<uint32_t>();
        const auto now = after.at("currentVersion").get<uint32_t>();
        if (now != old) {
            changes_.push_back({now < old, "The current version of " + what + " went from " +
                                               std::to_string(old) + " to " + std::to_string(now) + "."});
        }
    }

    void compareTypes(const json& before, const json& after) {
        const std::string type = nameOf(before) + '.';
        versions(nameOf(before), before, after);
        const json& old = before.at("fields");
        const json& now = after.at("fields");
        std::vector<std::string> order; // of the old fields that are still there
        for (const json& field : old) {
            if (const json* same = find(now, "name", field.at("name"))) {
                order.push_back(nameOf(field));
                compareFields(type + nameOf(field), field, *same);
            } else {
                breaks(type + nameOf(field) + " is gone.");
            }
        }
        auto next = order.begin();
        for (const json& field : now) {
            if (find(old, "name", field.at("name")) == nullptr) {
                addedField(type + nameOf(field), field, before);
            } else if (*next++ != nameOf(field)) {
                breaks(type + nameOf(field) + " stands at another place.");
                break; // those behind it do so, too
            }
        }
    }

    void addedField(const std::string& path, const json& field, const json& typeBefore) {
        const auto since = field.at("since").get<uint32_t>();
        const bool gated = since > typeBefore.at("currentVersion").get<uint32_t>();
        changes_.push_back({!gated, path + " is new, " +
                                        (gated ? "since version " : "but without a higher version: since ") +
                                        std::to_string(since) + "."});
    }

    /// Whatever is said of a field is on the wire or fills in for it, except how it is printed.
    void compareFields(const std::string& path, const json& before, const json& after) {
        json both = before;
        both.update(after);
        for (const auto& property : both.items()) {
            const json old = before.value(property.key(), json());
            const json now = after.value(property.key(), json());
            if (old != now) {
                changes_.push_back({property.key() != "text", path + ": " + property.key() + " went from " +
                                                                  old.dump() + " to " + now.dump() + "."});
            }
        }
    }

    void commands() {
        for (const json& command : before_.at("commands")) {
            const std::string what = "Command " + command.at("id").dump() + " (" + nameOf(command) + ")";
            const json* now = find(after_.at("commands"), "id", command.at("id"));
            if (now == nullptr) {
                breaks(what + " is gone.");
            } else if (now->at("type") != command.at("type")) {
                breaks(what + " is used again: it was " + command.at("type").get<std::string>() +
                       ", now it is " + now->at("type").get<std::string>() + ".");
            } else if (now->at("name") != command.at("name")) {
                harmless(what + " is now called " + nameOf(*now) + ".");
            }
        }
        for (const json& command : after_.at("commands")) {
            if (find(before_.at("commands"), "id", command.at("id")) == nullptr) {
                harmless("Command " + command.at("id").dump() + " (" + nameOf(command) + ") is new.");
            }
        }
    }

    const json& before_;
    const json& after_;
    std::vector<SchemaChange> changes_;
};

} // namespace

std::vector<SchemaChange> schemaChanges(const json& before, const json& after) {
    return Comparison(before, after).run();
}

} // namespace relaymsg
