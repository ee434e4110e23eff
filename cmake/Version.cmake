# Reads the library's version from its one home, protocol/Version.h, into KORVAN_RELAY_VERSION, and the part of it
# that a program compiled before must share with the library it runs with into KORVAN_RELAY_SOVERSION: while MAJOR is
# 0, a new MINOR number is what breaks.
set(version_header ${CMAKE_CURRENT_LIST_DIR}/../protocol/Version.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})
foreach(part MAJOR MINOR PATCH)
    file(STRINGS ${version_header} line REGEX "^#define KORVAN_RELAY_VERSION_${part} [0-9]+$")
    if(NOT line MATCHES "([0-9]+)$")
        message(FATAL_ERROR "${version_header} does not define KORVAN_RELAY_VERSION_${part}")
    endif()
    set(version_${part} ${CMAKE_MATCH_1})
endforeach()

set(KORVAN_RELAY_VERSION ${version_MAJOR}.${version_MINOR}.${version_PATCH})
set(KORVAN_RELAY_SOVERSION ${version_MAJOR})
if(version_MAJOR EQUAL 0)
    set(KORVAN_RELAY_SOVERSION 0.${version_MINOR})
endif()
