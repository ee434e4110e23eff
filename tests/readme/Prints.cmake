# Fails unless ${program} succeeds and prints exactly what the file ${expected} holds.
execute_process(COMMAND ${emulator} "${program}" OUTPUT_VARIABLE printed RESULT_VARIABLE status)
string(REPLACE "\r\n" "\n" printed "${printed}")
file(READ "${expected}" text)
if(NOT status EQUAL 0 OR NOT printed STREQUAL text)
    message(FATAL_ERROR "${program} ended with ${status} and printed\n${printed}instead of\n${text}")
endif()
