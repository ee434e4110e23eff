#include "tools/relaymsg/FieldDiff.h"

#include "tools/relaymsg/FieldWalk.h"
#include "tools/relaymsg/JsonText.h"

#include <map>
#include <vector>

namespace relaymsg {

namespace {

struct FieldValue {
    std::string path;
    std::string value;
};

class Collector : public FieldVisitor {
public:
    void leaf(const Leaf& leaf) override {
        FieldValue field{leaf.path.text(), ""};
        appendJsonValue(field.value, leaf);
        fields.push_back(std::move(field));
    }

    std::vector<FieldValue> fields;
};

std::vector<FieldValue> fieldsOf(std::string_view message) {
    Collector collector;
    walkMessage(message, collector);
    return std::move(collector.fields);
}

std::string line(const char* sign, const FieldValue& field) {
    return std::string("    ") + sign + ' ' + field.path + "  " + field.value + '\n';
}

} // namespace

std::string fieldDifferences(std::string_view a, std::string_view b) {
    const std::vector<FieldValue> before = fieldsOf(a);
    const std::vector<FieldValue> after = fieldsOf(b);
    std::map<std::string_view, const FieldValue*> left; // of those after, what is not looked at yet
    for (const FieldValue& field : after) {
        left.emplace(field.path, &field);
    }
    std::string text;
    for (const FieldValue& field : before) {
        const auto same = left.find(field.path);
        if (same == left.end()) {
            text += line("-", field);
            continue;
        }
        if (same->second->value != field.value) {
            text += line("-", field) + line("+", *same->second);
        }
        left.erase(same);
    }
    for (const FieldValue& field : after) {
        if (left.count(field.path) != 0) {
            text += line("+", field);
        }
    }
    return text;
}

} // namespace relaymsg
