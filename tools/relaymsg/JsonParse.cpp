#include "tools/relaymsg/JsonParse.h"

#include "tools/relaymsg/JsonText.h"
#include "tools/relaymsg/TextEscape.h"

#include <algorithm>
#include <set>
#include <vector>

namespace relaymsg {

using nlohmann::json;

namespace {

constexpr size_t DEEPEST = 32;

/// Watches the parser, which itself keeps the last of two members of one name.
class Watch {
public:
    bool operator()(json::parse_event_t event, const json& parsed) {
        switch (event) {
        case json::parse_event_t::object_start:
        case json::parse_event_t::array_start:
            beginValue();
            if (levels_.size() == DEEPEST) {
                throw JsonFault{path(), "is nested too deeply to be a message."};
            }
            levels_.push_back({event == json::parse_event_t::array_start, 0, {}, {}});
            break;
        case json::parse_event_t::key: {
            Level& level = levels_.back();
            level.key = parsed.get<std::string>();
            if (!level.keys.insert(level.key).second) {
                throw JsonFault{path(), "is there twice."};
            }
            break;
        }
        case json::parse_event_t::object_end:
        case json::parse_event_t::array_end:
            levels_.pop_back();
            break;
        case json::parse_event_t::value:
            beginValue();
            break;
        }
        return true;
    }

private:
    struct Level {
        bool isArray;
        size_t count; // elements begun
        std::string key;
        std::set<std::string> keys;
    };

    void beginValue() {
        if (!levels_.empty()) {
            ++levels_.back().count;
        }
    }

    std::string path() const {
        std::string path;
        for (const Level& level : levels_) {
            path = level.isArray ? elementPath(path, level.count - 1) : memberPath(path, level.key);
        }
        return path;
    }

    std::vector<Level> levels_;
};

/// What the parser says, without its own name and its count of bytes.
std::string reason(const json::parse_error& error) {
    const std::string text = error.what();
    const size_t start = text.find("syntax error");
    return escaped(start == std::string::npos ? text : text.substr(start));
}

} // namespace

std::string memberPath(const std::string& path, const std::string& key) {
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    if (!key.empty() && std::all_of(key.begin(), key.end(), isPlain)) {
        return path + '.' + key;
    }
    std::string quoted;
    appendJsonString(quoted, key);
    return path + '[' + quoted + ']';
}

std::string elementPath(const std::string& path, size_t index) {
    return (path.empty() ? "." : path) + '[' + std::to_string(index) + ']';
}

json parseJson(std::string_view text) {
    Watch watch;
    try {
        return json::parse(
            text, [&](int, json::parse_event_t event, json& parsed) { return watch(event, parsed); });
    } catch (const json::parse_error& error) {
        const size_t at = std::min(text.size(), error.byte > 0 ? error.byte - 1 : 0);
        const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
        const size_t lineStart = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
        throw JsonFault{"",
                        "is no JSON: line " + std::to_string(lines + 1) + " of it, column " +
                            std::to_string(at - (lineStart == std::string::npos ? 0 : lineStart + 1) + 1) +
                            ": " + reason(error) + "."};
    } catch (const json::out_of_range&) {
        throw JsonFault{"", "holds a number of a size that nothing here has."};
    }
}

} // namespace relaymsg
