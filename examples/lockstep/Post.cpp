#include "examples/lockstep/Post.h"

#include "examples/lockstep/Payload.h"
#include "protocol/Stream.h"

#include <stdexcept>

namespace lockstep {

using namespace cs_relay_msg;

Post::Post(const std::string& log, const std::string& capture)
    : out_(std::make_unique<CSRelayMsg>()), in_(std::make_unique<CSRelayMsg>()),
      wire_(CSRelayMsg::maxWireSize, '\0'), text_(32 * 1024, '\0'), log_(open(log)), capture_(open(capture)) {
}

CSRelayMsg& Post::begin(uint8_t command, uint32_t user, uint16_t asyncId) {
    if (!beginMessage(*out_, command)) {
        throw std::logic_error("command " + std::to_string(command) + " is not assigned");
    }
    out_->stHead.dwUserID = user;
    out_->stHead.dwRoomID = ROOM;
    out_->stHead.wAsyncID = asyncId;
    return *out_;
}

std::string_view Post::pack(const CSRelayMsg& message, uint32_t peerVersion) {
    size_t used = 0;
    const int32_t result = message.pack(wire_.data(), wire_.size(), &used, peerVersion);
    if (result != BIX_OK) {
        note(std::string("not sent: ") + Korvan::resultSentence(result));
        return {};
    }
    const std::string_view bytes(wire_.data(), used);
    record("sent", message, bytes);
    return bytes;
}

const CSRelayMsg* Post::unpack(std::string_view bytes) {
    size_t used = 0;
    const int32_t result = in_->unpack(bytes.data(), bytes.size(), &used);
    if (result != BIX_OK) {
        note(std::string("dropped ") + std::to_string(bytes.size()) +
             " bytes: " + Korvan::resultName(result) + " behind byte " + std::to_string(used));
        return nullptr;
    }
    if (used != bytes.size() || commandName(in_->stHead.bCmdId) == nullptr) {
        note("dropped a message of unknown command or with bytes behind it");
        return nullptr;
    }
    record("received", *in_, bytes);
    return in_.get();
}

void Post::note(const std::string& line) {
    if (log_) {
        std::fprintf(log_.get(), "%s\n", line.c_str());
        std::fflush(log_.get());
    }
}

void Post::record(const char* direction, const CSRelayMsg& message, std::string_view bytes) {
    if (capture_) {
        std::fwrite(bytes.data(), 1, bytes.size(), capture_.get());
    }
    if (!log_) {
        return; // a text costs more than a message: not made for nobody
    }
    // A signature is a secret and stays out of the log: of a login only the head is shown.
    const bool secret = message.stHead.bCmdId == cmd::stRelayLoginReq;
    const char* text = secret ? message.stHead.visualize_ex(text_.data(), text_.size(), nullptr, 1)
                              : message.visualize_ex(text_.data(), text_.size(), nullptr, 1);
    const unsigned version =
        static_cast<uint8_t>(bytes[schema::VERSION_BYTE]); // the record has none before it is sent
    std::fprintf(log_.get(), "%s %s at version %u, %zu bytes\n%s", direction,
                 commandName(message.stHead.bCmdId), version, bytes.size(), text);
}

Post::File Post::open(const std::string& path) {
    File file(path.empty() ? nullptr : std::fopen(path.c_str(), "wb"));
    if (!path.empty() && !file) {
        throw std::runtime_error("cannot write " + path);
    }
    return file;
}

} // namespace lockstep
