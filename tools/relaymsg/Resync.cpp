#include "tools/relaymsg/Resync.h"

#include "protocol/Schema.h"
#include "protocol/Stream.h"

#include <algorithm>

namespace relaymsg {

using namespace cs_relay_msg;

namespace {

enum class Verdict { Plausible, Not, TooShort };

/// What a head tells at once, so that hardly any place needs more than a look.
bool canBegin(std::string_view bytes) {
    const auto version = static_cast<uint8_t>(bytes[schema::VERSION_BYTE]);
    return version >= schema::BASE_VERSION && version <= schema::typeOf<CSRelayMsg>().currentVersion &&
           schema::findCommand(static_cast<uint8_t>(bytes[schema::COMMAND_BYTE])) != nullptr;
}

Verdict judge(std::string_view bytes, bool over, size_t& needed) {
    size_t end = 0;
    for (size_t i = 0; i < RESYNC_MESSAGES; ++i) {
        if (i != 0 && over && end == bytes.size()) {
            return Verdict::Plausible;
        }
        ScanState state;
        const ScanResult result = scan(state, bytes.data() + end, bytes.size() - end);
        if (result.status == ScanStatus::Need && !over) {
            needed = end + result.size + result.need;
            return Verdict::TooShort;
        }
        if (result.status != ScanStatus::Complete) {
            return Verdict::Not;
        }
        end += result.size;
    }
    return Verdict::Plausible;
}

} // namespace

Place findMessages(std::string_view bytes, bool over) {
    constexpr size_t HEAD = CSRelayMsgHead::maxWireSize;
    size_t at = 0;
    for (; bytes.size() - at >= HEAD; ++at) {
        const std::string_view rest = bytes.substr(at);
        size_t needed = 0;
        if (canBegin(rest)) {
            const Verdict verdict = judge(rest, over, needed);
            if (verdict != Verdict::Not) {
                return {at, verdict == Verdict::Plausible, needed};
            }
        }
    }
    return {over ? bytes.size() : at, false, HEAD};
}

} // namespace relaymsg
