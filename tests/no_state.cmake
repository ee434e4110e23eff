# cmake -DOBJDUMP=... -DLIBRARY=... -P no_state.cmake
#
# Passes if no object of the library has a variable: what can be written to while it runs, also per thread.
# A variable has a name and a size; s390x keeps nameless constants of the compiler's own among them.
execute_process(COMMAND ${OBJDUMP} -t ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES " F \\.text[^\n]*pack")
    message(FATAL_ERROR "no functions were seen")
endif()
string(REGEX MATCHALL " \\.(data|bss|tdata|tbss)[^\t\n]*\t0*[1-9a-f][0-9a-f]* [^\n]+" writable "${symbols}")
list(FILTER writable EXCLUDE REGEX "^ \\.data\\.rel\\.ro") # constants with addresses in them
if(writable)
    message(FATAL_ERROR "the library has variables: ${writable}")
endif()
