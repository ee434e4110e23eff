# The project's own flags. They are given to its targets one by one and reach no consumer.

# Warnings are errors while the project itself is worked on, not where it is part of another.
option(KORVAN_RELAY_WERROR "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})

if(MSVC)
    set(KORVAN_WARNINGS /W4 $<$<BOOL:${KORVAN_RELAY_WERROR}>:/WX>)
    set(KORVAN_NO_EXCEPTIONS /EHs-c- /GR-)
else()
    set(KORVAN_WARNINGS
        -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
        -Wformat=2 -Wno-format-nonliteral # the text helpers hand a caller's format on
        $<$<CXX_COMPILER_ID:GNU>:-Wcast-align=strict>
        $<$<NOT:$<CXX_COMPILER_ID:GNU>>:-Wcast-align>
        $<$<BOOL:${KORVAN_RELAY_WERROR}>:-Werror>)
    set(KORVAN_NO_EXCEPTIONS -fno-exceptions -fno-rtti)
endif()

# So that two builds of one source are equal to the byte, wherever they are made. Off by default: a debugger looks for
# the sources where they were.
option(KORVAN_RELAY_REPRODUCIBLE "Leave the paths of this machine out of what is built" OFF)
if(KORVAN_RELAY_REPRODUCIBLE)
    add_compile_options(
        -ffile-prefix-map=${PROJECT_BINARY_DIR}/=build/ -ffile-prefix-map=${PROJECT_BINARY_DIR}=build
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()
