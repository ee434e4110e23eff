#include "tools/relaymsg/JsonText.h"

#include "tools/relaymsg/HexDigits.h"
#include "tools/relaymsg/Utf8.h"

namespace relaymsg {

using cs_relay_msg::schema::Kind;

namespace {

void appendEscape(std::string& to, uint32_t code) {
    switch (code) {
    case '\n':
        to += "\\n";
        return;
    case '\r':
        to += "\\r";
        return;
    case '\t':
        to += "\\t";
        return;
    default:
        break;
    }
    const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xff)};
    to += "\\u";
    appendHex(to, {bytes, sizeof(bytes)}); // none of them is above 0xffff
}

void appendHexString(std::string& to, std::string_view bytes) {
    to += '"';
    appendHex(to, bytes);
    to += '"';
}

void appendInteger(std::string& to, const Leaf& leaf) {
    if (leaf.field.width == sizeof(uint64_t)) {
        to += '"' + std::to_string(leaf.value) + '"';
    } else if (leaf.field.isSigned) {
        to += std::to_string(static_cast<int32_t>(leaf.value));
    } else {
        to += std::to_string(leaf.value);
    }
}

class JsonVisitor : public FieldVisitor {
public:
    explicit JsonVisitor(std::string& to) : to_(to) {}

    void open(const Group& group) override {
        next();
        switch (group.shape) {
        case Shape::Union:
            union_ = group.name; // follows if it has a member
            return;
        case Shape::Member:
            key(union_);
            to_ += '{';
            key(group.name);
            to_ += '{';
            return;
        case Shape::Array:
            key(group.name);
            to_ += '[';
            return;
        case Shape::Record:
            key(group.name);
            [[fallthrough]];
        case Shape::Element:
            to_ += '{';
            return;
        }
    }

    void close(const Group& group) override {
        if (group.shape == Shape::Union) {
            return;
        }
        to_ += group.shape == Shape::Array ? "]" : group.shape == Shape::Member ? "}}" : "}";
    }

    void leaf(const Leaf& leaf) override {
        next();
        key(leaf.field.name);
        appendJsonValue(to_, leaf);
    }

private:
    /// What joins a value to the one before it.
    void next() {
        if (to_.back() != '{' && to_.back() != '[' && to_.back() != ',') {
            to_ += ',';
        }
    }

    void key(const char* name) {
        to_ += '"';
        to_ += name;
        to_ += "\":";
    }

    std::string& to_;
    const char* union_ = "";
};

} // namespace

bool appendJsonString(std::string& to, std::string_view text) {
    const size_t start = to.size();
    to += '"';
    while (!text.empty()) {
        const Utf8Character character = firstCharacter(text);
        if (character.length == 0) {
            to.resize(start);
            return false;
        }
        if (deceives(character.code)) {
            appendEscape(to, character.code);
        } else {
            if (text[0] == '"' || text[0] == '\\') {
                to += '\\';
            }
            to += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    to += '"';
    return true;
}

void appendJsonValue(std::string& to, const Leaf& leaf) {
    if (leaf.field.kind == Kind::Scalar) {
        appendInteger(to, leaf);
    } else if (leaf.field.kind == Kind::Bytes) {
        appendHexString(to, leaf.bytes);
    } else if (!appendJsonString(to, leaf.bytes)) {
        to += "{\"hex\":";
        appendHexString(to, leaf.bytes);
        to += '}';
    }
}

void appendJson(std::string& to, std::string_view bytes) {
    JsonVisitor visitor(to);
    to += '{';
    walkMessage(bytes, visitor);
    if (to.back() == ',') { // a head without a body
        to.pop_back();
    }
    to += '}';
}

void appendJson(std::string& to, const MessageReader& stream) {
    appendJson(to, stream.bytes());
    const auto key = [&](const char* name) { to.append(",\"").append(name).append("\":"); };
    if (const Origin* origin = stream.origin()) {
        to.pop_back();
        key(PACKET_KEY);
        to += "{\"number\":" + std::to_string(origin->packet) +
              ",\"time\":" + secondsText(origin->nanoseconds) + ",\"protocol\":\"" + origin->flow.protocol() +
              "\",\"from\":\"" + endpointText(origin->flow, origin->flow.from) + "\",\"to\":\"" +
              endpointText(origin->flow, origin->flow.to) + "\"}}";
    }
    if (stream.guessed()) {
        to.pop_back();
        key(GUESS_KEY);
        to += "true}";
    }
}

} // namespace relaymsg
