/// @file
/// The version of this library. The protocol's versions, 1 to 3, are counted apart: byte 8 of a message has
/// one of those.
///
/// CHANGELOG.md says which change asks for which number. This is the numbers' one home: the build, the
/// packages and `relaymsg --version` read them here.
#ifndef KORVAN_PROTOCOL_VERSION_H
#define KORVAN_PROTOCOL_VERSION_H

#define KORVAN_RELAY_VERSION_MAJOR 0
#define KORVAN_RELAY_VERSION_MINOR 1
#define KORVAN_RELAY_VERSION_PATCH 0

/// The version as one number to compare with: 10203 is 1.2.3.
#define KORVAN_RELAY_VERSION                                                                                 \
    (KORVAN_RELAY_VERSION_MAJOR * 10000 + KORVAN_RELAY_VERSION_MINOR * 100 + KORVAN_RELAY_VERSION_PATCH)

/// The version as text: "1.2.3".
#define KORVAN_RELAY_VERSION_TEXT                                                                            \
    KORVAN_RELAY_VERSION_QUOTE(KORVAN_RELAY_VERSION_MAJOR)                                                   \
    "." KORVAN_RELAY_VERSION_QUOTE(KORVAN_RELAY_VERSION_MINOR) "." KORVAN_RELAY_VERSION_QUOTE(               \
        KORVAN_RELAY_VERSION_PATCH)
#define KORVAN_RELAY_VERSION_QUOTE(macro) KORVAN_RELAY_VERSION_QUOTED(macro)
#define KORVAN_RELAY_VERSION_QUOTED(number) #number

#endif
