#include "tools/relaymsg/Redaction.h"

#include "tools/relaymsg/FieldWalk.h"

#include <algorithm>
#include <cstring>

namespace relaymsg {

namespace {

constexpr std::string_view SECRETS[] = {"szSigBuf", "szUser_ip"};

class Eraser : public FieldVisitor {
public:
    explicit Eraser(char* bytes) : bytes_(bytes) {}

    void leaf(const Leaf& leaf) override {
        if (isSecret(leaf.field)) {
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

bool isSecret(const cs_relay_msg::schema::Field& field) {
    return std::find(std::begin(SECRETS), std::end(SECRETS), field.name) != std::end(SECRETS);
}

bool redact(char* bytes, size_t size) {
    Eraser eraser(bytes);
    walkMessage({bytes, size}, eraser);
    return eraser.found();
}

} // namespace relaymsg
