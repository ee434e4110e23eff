#include "Hostile.h"

#include "Works.h"

namespace hostile {

namespace {

using namespace cs_relay_msg;
using Wire = std::vector<char>;

Wire packed(works::MessagePtr record) {
    return works::make('H', std::move(record)).wire;
}

Wire head(uint8_t version, uint8_t command) {
    Wire wire(12);
    wire[8] = static_cast<char>(version);
    wire[11] = static_cast<char>(command);
    return wire;
}

void append32(Wire& wire, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        wire.push_back(static_cast<char>(value >> shift));
    }
}

/// A text of @p length bytes with its NUL, and a NUL at @p early as well; the last byte is @p last.
void appendText(Wire& wire, uint32_t length, uint32_t early, char last) {
    append32(wire, length);
    for (uint32_t i = 0; i + 1 < length; ++i) {
        wire.push_back(i == early ? '\0' : 'x');
    }
    wire.push_back(last);
}

Wire statistics(uint32_t length, uint32_t early, char last) {
    Wire wire = head(3, cmd::stCSRelayMsgStatUserRes);
    appendText(wire, length, length, '\0');
    appendText(wire, length, length, '\0');
    appendText(wire, length, early, last);
    return wire;
}

Wire oldFrames(uint8_t frames) {
    Wire wire = head(1, cmd::stRelayLockStep);
    wire.push_back(static_cast<char>(frames));
    wire.resize(wire.size() + 5u * frames); // id and count, both 0
    return wire;
}

Wire inputs(uint8_t count) {
    Wire wire = head(3, cmd::stRelayInputMulty);
    wire.push_back(static_cast<char>(count));
    wire.resize(wire.size() + 9u * count); // no payload
    return wire;
}

Wire cut(Wire wire, size_t bytes) {
    wire.resize(wire.size() - bytes);
    return wire;
}

/// The last datum claims more than its array holds.
Wire lateCount(Wire wire, uint16_t length) {
    const size_t at = wire.size() - 4 - 3 - length - 2; // before it the payload and what follows
    wire[at] = 4;
    wire[at + 1] = 1;
    return wire;
}

std::vector<Input> makeAll() {
    std::vector<Input> list;
    const auto add = [&list](std::string name, Wire wire) {
        list.push_back({std::move(name), std::move(wire)});
    };
    add("8 bytes", Wire(8));
    add("12 bytes, version 0", head(0, cmd::stRelayLockStep));
    add("12 bytes, unknown command", head(3, 1));
    add("12 bytes, nothing behind the head", head(3, cmd::stRelayLockStep));
    for (const int count : {1, 2, 5}) {
        add(std::to_string(count) + " empty frames of version 1", oldFrames(static_cast<uint8_t>(count)));
    }
    for (const int count : {1, 10}) {
        add(std::to_string(count) + " inputs without payload", inputs(static_cast<uint8_t>(count)));
    }
    for (const int length : {0, 1, 2, 3, 4, 7, 15, 32, 33, 64}) {
        add("500 data of " + std::to_string(length) + " bytes",
            packed(works::makeFramePack(5, 100, static_cast<uint16_t>(length))));
    }
    add("50 data of 0 bytes", packed(works::makeFramePack(5, 10, 0)));
    add("500 data of 1 byte, the last too long", lateCount(packed(works::makeFramePack(5, 100, 1)), 1));
    add("500 data of 0 bytes, cut by 1 byte", cut(packed(works::makeFramePack(5, 100, 0)), 1));
    for (const uint32_t length : {1u, 2u, 16u, 256u, 4096u}) {
        const std::string texts = "3 texts of " + std::to_string(length) + (length == 1 ? " byte" : " bytes");
        add(texts, statistics(length, length, '\0'));
        add(texts + ", no NUL at the end", statistics(length, length, 'x'));
        if (length > 2) {
            add(texts + ", NUL before the end", statistics(length, length - 2, '\0'));
            add(texts + ", NUL at the start", statistics(length, 0, '\0'));
        }
    }
    return list;
}

} // namespace

const std::vector<Input>& all() {
    static const std::vector<Input> list = makeAll();
    return list;
}

} // namespace hostile
