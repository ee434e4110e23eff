#include "tests/support/Sites.h"

#include "protocol/cs_relay_msg.h"
#include "tests/support/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tests {

namespace {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

constexpr size_t LENGTH_PREFIX = 4;

class Walk {
public:
    Walk(const char* root, std::vector<Site>& sites) : root_(root), sites_(sites) {}

    void type(const Type& type, size_t base, uint32_t cutVer) {
        const uint32_t version = std::min(cutVer, type.currentVersion);
        for (const Field& field : type) {
            const size_t at = base + field.offset;
            switch (field.kind) {
            case Kind::Scalar:
                add(field, arrayCountedBy(type, field), at, field.width, field.width, version >= field.since);
                break;
            case Kind::Bytes: {
                const size_t size = count(type, field, base);
                add(field, nullptr, at, size, size, true);
                break;
            }
            case Kind::String: {
                // Where there is no NUL, the last character gives way to one.
                const void* const end = std::memchr(root_ + at, '\0', field.bound - 1);
                const size_t length = end != nullptr
                                          ? static_cast<size_t>(static_cast<const char*>(end) - (root_ + at))
                                          : field.bound - 1;
                add(field, nullptr, at, length + 1, LENGTH_PREFIX + length + 1, true);
                break;
            }
            case Kind::Record:
                this->type(*field.type, at, version);
                break;
            case Kind::RecordArray:
                for (size_t i = 0; i < count(type, field, base); ++i) {
                    this->type(*field.type, at + i * field.width, version);
                }
                break;
            case Kind::Union:
                if (const auto* member = cs_relay_msg::schema::findCommand(
                        static_cast<uint8_t>(root_[base + offsetof(cs_relay_msg::CSRelayMsgHead, bCmdId)]))) {
                    this->type(*member->type, at, version);
                }
                break;
            }
        }
    }

private:
    static const Field* arrayCountedBy(const Type& type, const Field& field) {
        for (const Field& array : type) {
            if (array.countField >= 0 && &type.fields[array.countField] == &field) {
                return &array;
            }
        }
        return nullptr;
    }

    size_t count(const Type& type, const Field& array, size_t base) const {
        const Field& field = type.fields[array.countField];
        return static_cast<size_t>(loadScalar(field, root_ + base + field.offset));
    }

    void add(const Field& field, const Field* counted, size_t memory, size_t memorySize, size_t wireSize,
             bool onWire) {
        sites_.push_back({&field, counted, memory, memorySize, wire_, onWire ? wireSize : 0, onWire});
        wire_ += sites_.back().wireSize;
    }

    const char* root_;
    std::vector<Site>& sites_;
    size_t wire_ = 0;
};

} // namespace

std::vector<Site> sitesOf(const Type& type, const char* record, uint32_t cutVer) {
    std::vector<Site> sites;
    Walk(record, sites).type(type, 0, cutVer == 0 ? type.currentVersion : cutVer);
    return sites;
}

size_t wireEnd(const std::vector<Site>& sites) {
    return sites.empty() ? 0 : sites.back().wire + sites.back().wireSize;
}

size_t lastStepWithin(const std::vector<Site>& sites, size_t room) {
    size_t last = 0;
    for (const Site& site : sites) {
        if (site.field->kind == Kind::String) {
            if (site.wire + LENGTH_PREFIX > room) {
                break;
            }
            last = site.wire + LENGTH_PREFIX;
        }
        if (site.wire + site.wireSize > room) {
            break;
        }
        last = site.wire + site.wireSize;
    }
    return last;
}

} // namespace tests
