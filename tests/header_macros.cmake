# cmake -DCOMMAND="c++ ..." -DHEADER=... -DDIRECTORY=... -P header_macros.cmake
#
# Passes if the header defines no macro of its own but KORVAN_...: the macros with it are compared with those of
# the standard headers that it may use.
cmake_minimum_required(VERSION 3.25)

set(standard "")
foreach(name array cassert climits cstdarg cstddef cstdint cstdio cstring string_view type_traits utility)
    string(APPEND standard "#include <${name}>\n")
endforeach()

separate_arguments(compiler UNIX_COMMAND "${COMMAND}")
function(macros text result)
    string(MAKE_C_IDENTIFIER "${HEADER}_${result}" name)
    file(WRITE ${DIRECTORY}/${name}.cpp "${text}")
    execute_process(COMMAND ${compiler} -dM -E ${DIRECTORY}/${name}.cpp
                    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "#define [A-Za-z0-9_]+" names "${output}")
    list(TRANSFORM names REPLACE "#define " "")
    set(${result} ${names} PARENT_SCOPE)
endfunction()

macros("${standard}" without)
macros("${standard}#include \"${HEADER}\"\n" with)
list(REMOVE_ITEM with ${without})
set(own ${with})
list(FILTER with EXCLUDE REGEX "^KORVAN_")
if(NOT with STREQUAL "")
    message(FATAL_ERROR "${HEADER} defines ${with}")
endif()
if(own STREQUAL "")
    message(FATAL_ERROR "no macro at all was seen: the comparison is broken")
endif()
