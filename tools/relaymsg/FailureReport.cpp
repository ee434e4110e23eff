#include "tools/relaymsg/FailureReport.h"

#include "Common/Source/Core/BIX/BixResult.h"

#include <cinttypes>
#include <cstdio>

namespace relaymsg {

namespace {

/// The numbers behind the failure.
std::string particulars(const MessageReader& stream) {
    const Stop& stop = stream.stop();
    const std::string value = std::to_string(stop.value);
    const std::string most = std::to_string(stop.most);
    switch (stop.code) {
    case Korvan::BIX_ERR_READ_UNDERFLOW: {
        std::string text = "The field ends at offset " + offsetText(stream.offset() + stop.needed) +
                           ", the input at offset " + offsetText(stream.offset() + stream.available()) + ".";
        return stop.value > stop.most
                   ? text + " Its length is given as " + value + ", but it holds at most " + most + "."
                   : text;
    }
    case Korvan::BIX_ERR_STRING_MALFORMED:
        return "Its length is given as " + value + ".";
    case Korvan::BIX_ERR_STRING_TOO_LONG:
        return "Its length is given as " + value + "; it holds at most " + most + ", the NUL included.";
    case Korvan::BIX_ERR_COUNT_OUT_OF_RANGE:
        return "The count is " + value + "; " + stop.array + " holds at most " + most + ".";
    case Korvan::BIX_ERR_VERSION_OUT_OF_RANGE:
        return "The version byte is " + value + ".";
    default:
        return "";
    }
}

/// Behind an offset: of what it is one.
std::string originText(const MessageReader& stream) {
    const Origin* const origin = stream.origin();
    return origin == nullptr
               ? ""
               : " of " + flowText(origin->flow) + " in packet " + std::to_string(origin->packet);
}

} // namespace

std::string offsetText(uint64_t offset) {
    char text[64];
    std::snprintf(text, sizeof(text), "%" PRIu64 " (0x%" PRIx64 ")", offset, offset);
    return text;
}

std::string messageText(const MessageReader& stream) {
    const auto* command = stream.command();
    return "message " + std::to_string(stream.number()) +
           (command != nullptr ? std::string(" (") + command->name + ")" : "") + " at offset " +
           offsetText(stream.offset()) + originText(stream);
}

std::string failureText(const MessageReader& stream, const UnknownCommand& unknown) {
    const Stop& stop = stream.stop();
    std::string text = messageText(stream) + " cannot be decoded.\n";
    text += "  field " + stop.path + " at offset " + offsetText(stream.offset() + stop.offset) + "\n";
    text +=
        std::string("  ") + Korvan::resultName(stop.code) + ": " + Korvan::resultSentence(stop.code) + "\n";
    const std::string numbers = particulars(stream);
    if (!numbers.empty()) {
        text += "  " + numbers + "\n";
    }
    const std::string hint = stream.hint();
    if (!hint.empty()) {
        text += "  " + hint + "\n";
    }
    // In a capture, messages that follow each other need not belong together.
    if (unknown.number != 0 && (stream.origin() == nullptr || unknown.end == stream.offset())) {
        text += "  Message " + std::to_string(unknown.number) + " has the unknown command " +
                std::to_string(unknown.id) + ": what begins at offset " + offsetText(unknown.end) +
                " may be its body.\n";
    } else if (stream.number() == 1 && stream.origin() == nullptr) {
        text += "  Nothing was decoded: is this a stream of relay messages, from its start?\n";
    }
    return text;
}

std::string gapText(const MessageReader& stream) {
    return "the capture lacks " + std::to_string(stream.missing()) + " bytes at offset " +
           offsetText(stream.offset()) + originText(stream) + ".\n";
}

} // namespace relaymsg
