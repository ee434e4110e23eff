# cmake -DNM=... -DOBJDUMP=... -DASSERTING=a.o -DSILENT=b.o -P shared_symbols.cmake
#
# The linker keeps one body of each shared (weak) function. So none that both objects define may assert, and
# the one function that is not inlined, textize, must have a name of its own in each.

cmake_minimum_required(VERSION 3.25)

function(weak_functions object result)
    execute_process(COMMAND ${NM} --defined-only ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[ ]W [^\n]+" lines "${symbols}")
    list(TRANSFORM lines REPLACE "^ W " "")
    set(${result} ${lines} PARENT_SCOPE)
endfunction()

weak_functions(${ASSERTING} asserting)
weak_functions(${SILENT} silent)

if(NOT asserting MATCHES "textizeILb1E" OR NOT silent MATCHES "textizeILb0E")
    message(FATAL_ERROR "textize is not there, or not told apart: ${asserting} and ${silent}")
endif()

# A shared function lies in a section of its own, .text.NAME, whose relocations show what it calls.
execute_process(COMMAND ${OBJDUMP} -r ${ASSERTING} OUTPUT_VARIABLE relocations COMMAND_ERROR_IS_FATAL ANY)
if(NOT relocations MATCHES "__assert")
    message(FATAL_ERROR "the asserting object does not assert at all")
endif()
string(REPLACE ";" " " relocations "${relocations}")
string(REPLACE "RELOCATION RECORDS FOR [" ";" sections "${relocations}")
foreach(section IN LISTS sections)
    if(section MATCHES "^\\.text\\.([^]]+)\\]" AND section MATCHES "__assert")
        string(REGEX MATCH "^\\.text\\.([^]]+)\\]" ignored "${section}")
        set(symbol "${CMAKE_MATCH_1}")
        if(symbol IN_LIST silent)
            message(FATAL_ERROR "${symbol} asserts and is shared with code built without assertions")
        endif()
    endif()
endforeach()
