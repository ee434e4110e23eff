/// @file
/// Messages of every command and version with fields of all kinds of values.
#ifndef KORVAN_TESTS_TOOL_MESSAGES_H
#define KORVAN_TESTS_TOOL_MESSAGES_H

#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"

#include <cstring>
#include <random>
#include <string>

/// Makes the wire form of messages whose fields are random, a few values of which matter more than others.
class Messages {
public:
    explicit Messages(unsigned seed) : random_(seed) {}

    std::string make(uint8_t command, uint8_t version) {
        std::string wire = number(4) + number(4) + std::string(1, static_cast<char>(version)) + number(2) +
                           std::string(1, static_cast<char>(command));
        if (const auto* found = cs_relay_msg::schema::findCommand(command)) {
            record(*found->type, version, wire);
        }
        return wire;
    }

private:
    using Kind = cs_relay_msg::schema::Kind;

    std::string number(size_t width) {
        const unsigned shape = random_() % 4;
        std::string bytes(width, shape == 0 ? '\0' : '\xff');
        for (char& byte : bytes) {
            byte = shape < 2 ? byte : static_cast<char>(static_cast<unsigned char>(random_()));
        }
        return bytes;
    }

    static std::string big(uint64_t value, size_t width) {
        std::string bytes;
        while (width-- > 0) {
            bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * width)));
        }
        return bytes;
    }

    size_t upTo(size_t most) {
        const unsigned shape = random_() % 16;
        return shape == 0 ? most : shape < 4 ? 0 : random_() % (most < 12 ? most + 1 : 12);
    }

    std::string text(size_t most) {
        static const char* const PIECES[] = {"a",    "\"",           "\\",       "\x1b",
                                             "\n",   "\xff",         "\xc3\xa4", "\xe2\x80\xae",
                                             "\x7f", "\xed\xa0\x80", "/",        "{\"hex\":\"00\"}"};
        std::string text;
        for (size_t pieces = upTo(most); pieces > 0; --pieces) {
            text += PIECES[random_() % (random_() % 2 == 0 ? 5 : std::size(PIECES))];
        }
        return text.substr(0, most);
    }

    void record(const cs_relay_msg::schema::Type& type, uint32_t cutVersion, std::string& wire) {
        const uint32_t version = type.effectiveVersion(cutVersion);
        std::vector<size_t> counts(type.fieldCount);
        for (const auto& field : type) {
            if (field.countField >= 0) {
                counts[static_cast<size_t>(field.countField)] = 1 + upTo(field.bound);
            }
        }
        for (const auto& field : type) {
            const size_t at = static_cast<size_t>(&field - type.fields);
            const size_t count = field.countField < 0 ? 0 : counts[static_cast<size_t>(field.countField)] - 1;
            if (field.since > version) {
                continue;
            }
            switch (field.kind) {
            case Kind::Scalar:
                wire += counts[at] != 0 ? big(counts[at] - 1, field.width) : number(field.width);
                break;
            case Kind::String: {
                const std::string characters = text(field.bound - 1);
                wire += big(characters.size() + 1, 4) + characters + '\0';
                break;
            }
            case Kind::Bytes:
                for (size_t i = 0; i < count; ++i) {
                    wire += static_cast<char>(static_cast<unsigned char>(random_()));
                }
                break;
            case Kind::Record:
                record(*field.type, version, wire);
                break;
            case Kind::RecordArray:
                for (size_t i = 0; i < count; ++i) {
                    record(*field.type, version, wire);
                }
                break;
            case Kind::Union:
                break;
            }
        }
    }

    std::mt19937 random_;
};

#endif
