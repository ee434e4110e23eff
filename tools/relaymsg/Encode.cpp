#include "tools/relaymsg/Encode.h"

#include "tools/relaymsg/HexDigits.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/JsonValues.h"
#include "tools/relaymsg/MessageJson.h"

#include <memory>
#include <stdexcept>
#include <string_view>

namespace relaymsg {

using cs_relay_msg::CSRelayMsg;

namespace {

class Encoding {
public:
    explicit Encoding(const EncodeOptions& options)
        : options_(options), job_(options.file), message_(std::make_unique<CSRelayMsg>()),
          bytes_(new char[CSRelayMsg::maxWireSize]) {}

    ExitStatus run() {
        JsonValues values(job_.file());
        while (values.next() && job_.out().error() == 0) {
            try {
                readMessage(values.text(), *message_);
            } catch (const JsonFault& fault) {
                refuse(values, fault);
                return job_.end(job_.file().error().empty() ? ExitStatus::Json : ExitStatus::Input);
            }
            write();
        }
        if (!job_.file().error().empty()) {
            job_.sayOfInput(job_.file().error() + "\n");
            return job_.end(ExitStatus::Input);
        }
        if (values.number() == 0) {
            job_.sayOfInput("is empty: there is no message in it.\n");
            return job_.end(ExitStatus::Input);
        }
        return job_.end(ExitStatus::Ok);
    }

private:
    void write() {
        size_t size = 0;
        const uint32_t version = options_.cutVersion != 0 ? options_.cutVersion : message_->stHead.bVersion;
        if (message_->pack(bytes_.get(), CSRelayMsg::maxWireSize, &size, version) != Korvan::BIX_OK) {
            throw std::logic_error("a message that was read cannot be packed");
        }
        const std::string_view bytes{bytes_.get(), size};
        if (options_.hex) {
            line_.clear();
            appendHex(line_, bytes);
            line_ += '\n';
        }
        job_.out().append(options_.hex ? line_ : bytes);
    }

    void refuse(const JsonValues& values, const JsonFault& fault) {
        std::string text = "message " + std::to_string(values.number()) + ", which begins on line " +
                           std::to_string(values.line()) + ", cannot be encoded.\n  ";
        text += (fault.path.empty() ? "It" : fault.path) + " " + fault.sentence + "\n";
        if (values.text().size() == JsonValues::LONGEST) {
            text += "  No message is so long: only its first " + std::to_string(JsonValues::LONGEST) +
                    " bytes were read.\n";
        }
        if (!job_.file().error().empty()) {
            text += "  The input " + job_.file().error() + "\n";
        }
        job_.sayOfInput(text);
    }

    const EncodeOptions& options_;
    Job job_;
    std::unique_ptr<CSRelayMsg> message_;
    std::unique_ptr<char[]> bytes_;
    std::string line_;
};

} // namespace

ExitStatus encode(const EncodeOptions& options) {
    return Encoding(options).run();
}

} // namespace relaymsg
