# cmake -DCOMMAND="c++ ... file" -DSAYS=regex -P compile_fails.cmake
#
# Passes if the command fails because of the static_assert whose text matches SAYS; if SAYS is empty, passes if
# the command succeeds.
cmake_minimum_required(VERSION 3.25)

separate_arguments(arguments UNIX_COMMAND "${COMMAND}")
execute_process(COMMAND ${arguments} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(SAYS STREQUAL "")
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "does not compile:\n${output}")
    endif()
elseif(result EQUAL 0)
    message(FATAL_ERROR "compiles, but must not")
elseif(NOT output MATCHES "error: (static assertion failed|static_assert failed|static assertion)[^\n]*${SAYS}")
    message(FATAL_ERROR "fails, but does not say '${SAYS}':\n${output}")
endif()
