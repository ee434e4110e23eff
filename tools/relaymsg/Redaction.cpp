#include "tools/relaymsg/Redaction.h"

#include "tools/relaymsg/FieldWalk.h"

#include <algorithm>
#include <cstring>

namespace relaymsg {

namespace {

/// Fields that identify a person or open a door.
constexpr std::string_view SECRETS[] = {"szSigBuf", "szUser_ip"};

class Eraser : public FieldVisitor {
public:
    explicit Eraser(char* bytes) : bytes_(bytes) {}

    void leaf(const Leaf& leaf) override {
        if (std::find(std::begin(SECRETS), std::end(SECRETS), leaf.field.name) != std::end(SECRETS)) {
            std::memset(bytes_ + (leaf.bytes.data() - bytes_), '*', leaf.bytes.size());
            found_ = found_ || !leaf.bytes.empty();
        }
    }

    bool found() const { return found_; }

private:
    char* bytes_;
    bool found_ = false;
};

} // namespace

bool redact(char* bytes, size_t size) {
    Eraser eraser(bytes);
    walkMessage({bytes, size}, eraser);
    return eraser.found();
}

} // namespace relaymsg
