# cmake -DOBJDUMP=... -DLIBRARY=... -P no_state.cmake
#
# Passes if no object of the library has a variable: what can be written to while it runs, also per thread.
execute_process(COMMAND ${OBJDUMP} -h ${LIBRARY} OUTPUT_VARIABLE sections COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " \\.text" objects "${sections}")
if(NOT objects)
    message(FATAL_ERROR "no sections were seen")
endif()
string(REGEX MATCHALL " \\.(data|bss|tdata|tbss)[^ \n]* +[0-9a-f]+" writable "${sections}")
list(FILTER writable EXCLUDE REGEX "^ \\.data\\.rel\\.ro|^ [^ ]+ +0+$") # constants with addresses in them; empty
if(writable)
    message(FATAL_ERROR "the library has variables: ${writable}")
endif()
