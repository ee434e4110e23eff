# The project's own flags. They are given to its targets one by one and reach no consumer.

# Warnings are errors while the project itself is worked on, not where it is part of another.
option(KORVAN_RELAY_WERROR "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})

if(MSVC)
    set(KORVAN_WARNINGS /W4 $<$<BOOL:${KORVAN_RELAY_WERROR}>:/WX>)
    set(KORVAN_NO_EXCEPTIONS /EHs-c- /GR-)
else()
    set(KORVAN_WARNINGS
        -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
        $<$<CXX_COMPILER_ID:GNU>:-Wcast-align=strict>
        $<$<NOT:$<CXX_COMPILER_ID:GNU>>:-Wcast-align>
        $<$<BOOL:${KORVAN_RELAY_WERROR}>:-Werror>)
    set(KORVAN_NO_EXCEPTIONS -fno-exceptions -fno-rtti)
endif()
