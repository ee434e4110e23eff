/// @file
/// Where, behind damage, messages follow each other again.
#ifndef KORVAN_TOOLS_RELAYMSG_RESYNC_H
#define KORVAN_TOOLS_RELAYMSG_RESYNC_H

#include <cstddef>
#include <string_view>

namespace relaymsg {

/// How many messages of known commands in a row make a place plausible, unless the stream ends right behind
/// fewer.
inline constexpr size_t RESYNC_MESSAGES = 3;

struct Place {
    size_t at;     ///< nothing before it is plausible
    bool found;    ///< whether this is
    size_t needed; ///< if not: bytes from there on that must be there before anything more can be told
};

/// Looks for the first plausible place. @param over whether no more bytes follow
Place findMessages(std::string_view bytes, bool over);

} // namespace relaymsg

#endif
