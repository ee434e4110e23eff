#include "tools/relaymsg/FieldText.h"

#include "Common/Source/Core/BIX/BixBufUtil.h"

namespace relaymsg {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using Korvan::BIX_OK;
using Korvan::BixWriteBuf;
using namespace Korvan::BixBufUtil;

namespace {

class FieldPrinter : public FieldVisitor {
public:
    FieldPrinter(BixWriteBuf& buffer, int indent, char separator)
        : buffer_(buffer), indent_(indent), separator_(separator) {}

    int32_t result() const { return result_; }

    void open(const Group& group) override {
        const int indent = at(group.depth);
        if (result_ != BIX_OK || group.shape == Shape::Array) {
            return;
        }
        result_ = group.shape == Shape::Element
                      ? printVariable(buffer_, indent, separator_, group.label,
                                      static_cast<uint32_t>(group.index), true)
                      : printVariable(buffer_, indent, separator_, group.label, true);
    }

    void leaf(const Leaf& leaf) override {
        if (result_ == BIX_OK) {
            result_ = leaf.field.kind == Kind::Scalar   ? scalar(leaf)
                      : leaf.field.kind == Kind::String ? printString(buffer_, at(leaf.depth), separator_,
                                                                      leaf.field.label, leaf.bytes.data())
                                                        : byteArray(leaf);
        }
    }

private:
    int at(int depth) const { return indent_ < 0 ? indent_ : indent_ + depth; }

    int32_t scalar(const Leaf& leaf) {
        const Field& field = leaf.field;
        const auto print = [&](auto value) {
            return printVariable(buffer_, at(leaf.depth), separator_, field.label, field.format(), value);
        };
        return field.width == 8                      ? print(leaf.value)
               : field.width == 4 && !field.isSigned ? print(static_cast<unsigned>(leaf.value))
                                                     : print(static_cast<int>(leaf.value));
    }

    int32_t byteArray(const Leaf& leaf) {
        int32_t result = printArray(buffer_, at(leaf.depth), separator_, leaf.field.label,
                                    static_cast<int64_t>(leaf.bytes.size()));
        for (size_t i = 0; result == BIX_OK && i < leaf.bytes.size(); ++i) {
            result = buffer_.textize(" 0x%02x", static_cast<unsigned>(static_cast<uint8_t>(leaf.bytes[i])));
        }
        return result == BIX_OK ? buffer_.writeCharWithNull(separator_) : result;
    }

    BixWriteBuf& buffer_;
    int indent_;
    char separator_;
    int32_t result_ = BIX_OK;
};

} // namespace

int32_t printFields(std::string_view bytes, BixWriteBuf& buffer, int indent, char separator) {
    FieldPrinter printer(buffer, indent, separator);
    walkMessage(bytes, printer);
    return printer.result();
}

} // namespace relaymsg
