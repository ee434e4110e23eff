/// @file
/// In which form an input holds its bytes.
#ifndef KORVAN_TOOLS_RELAYMSG_INPUT_FORM_H
#define KORVAN_TOOLS_RELAYMSG_INPUT_FORM_H

#include "tools/relaymsg/ByteSource.h"

#include <memory>
#include <optional>
#include <string_view>

namespace relaymsg {

enum class InputForm { Detect, Raw, Hex, Base64, Capture };

/// The form with this name; nothing if there is none.
std::optional<InputForm> parseForm(std::string_view name);

/// Bytes at the start of an input that are enough to tell text from raw bytes: up to the version byte of a
/// first message, which is none of a text's characters.
inline constexpr size_t DETECTION_SIZE = 9;

/// And those that tell one kind of text from another, as a rule: the shortest message in base64.
inline constexpr size_t TEXT_DETECTION_SIZE = 16;

/// The form of an input that begins with @p start: so many bytes, or all that it has.
InputForm detectForm(std::string_view start);

/// Bytes and the form that they are in; those of a text are what it stands for.
struct OpenedForm {
    InputForm form;
    std::unique_ptr<ByteSource> bytes;
};

/// Opens @p input, which must outlive the result.
OpenedForm openForm(ByteSource& input, InputForm form);

} // namespace relaymsg

#endif
