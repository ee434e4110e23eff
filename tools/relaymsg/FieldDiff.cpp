#include "tools/relaymsg/FieldDiff.h"

#include "tools/relaymsg/FieldWalk.h"
#include "tools/relaymsg/JsonText.h"
#include "tools/relaymsg/Redaction.h"

#include <map>
#include <vector>

namespace relaymsg {

namespace {

struct FieldValue {
    std::string path;
    std::string value;
    std::string shown;
};

class Collector : public FieldVisitor {
public:
    explicit Collector(bool redact) : redact_(redact) {}

    void leaf(const Leaf& leaf) override {
        FieldValue field{leaf.path.text(), "", ""};
        appendJsonValue(field.value, leaf);
        field.shown = field.value;
        if (redact_ && isSecret(leaf.field)) {
            const std::string asterisks(leaf.bytes.size(), '*');
            field.shown.clear();
            appendJsonString(field.shown, asterisks);
        }
        fields.push_back(std::move(field));
    }

    std::vector<FieldValue> fields;

private:
    bool redact_;
};

std::vector<FieldValue> fieldsOf(std::string_view message, bool redact) {
    Collector collector(redact);
    walkMessage(message, collector);
    return std::move(collector.fields);
}

std::string line(const char* sign, const FieldValue& field) {
    return std::string("    ") + sign + ' ' + field.path + "  " + field.shown + '\n';
}

} // namespace

std::string fieldDifferences(std::string_view a, std::string_view b, bool redact) {
    const std::vector<FieldValue> before = fieldsOf(a, redact);
    const std::vector<FieldValue> after = fieldsOf(b, redact);
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
