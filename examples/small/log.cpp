/// Logging a message: as indented text, on one line, and without what must not be seen.
#include "protocol/Stream.h"

#include <cstdio>

using namespace cs_relay_msg;

namespace {

CSRelayMsg message;

/// The text of a message for a log. The signature of a login is a secret, so a login shows its head alone.
const char* logText(const CSRelayMsg& shown, char* text, size_t size, int indent, char separator) {
    return shown.stHead.bCmdId == cmd::stRelayLoginReq
               ? shown.stHead.visualize_ex(text, size, nullptr, indent, separator)
               : shown.visualize_ex(text, size, nullptr, indent, separator);
}

} // namespace

int main() {
    char text[512];
    if (!beginMessage(message, cmd::stRelaySyncReq)) {
        return 1;
    }
    message.stHead.dwUserID = 1001;
    message.stBody.stRelaySyncReq.dwFrameIdBegin = 41;
    message.stBody.stRelaySyncReq.dwFrameIdEnd = 44;
    std::printf("indented:\n%s", logText(message, text, sizeof(text), 1, '\n'));

    constexpr int NO_INDENTATION = -1;
    std::printf("on one line: %s\n", logText(message, text, sizeof(text), NO_INDENTATION, ' '));

    if (!beginMessage(message, cmd::stRelayLoginReq) ||
        setText(message.stBody.stRelayLoginReq.szSigBuf, "secret") != BIX_OK) {
        return 1;
    }
    std::printf("a login: %s\n", logText(message, text, sizeof(text), NO_INDENTATION, ' '));

    // A text that does not fit ends at a line, without a word; `visualize` would return -1.
    char small[40];
    std::printf("in 40 bytes: %s\n", logText(message, small, sizeof(small), NO_INDENTATION, ' '));
    return 0;
}
