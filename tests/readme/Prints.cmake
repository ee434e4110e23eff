# Fails unless ${program} ${command} ${file} succeeds and prints exactly what the file ${expected} holds, or, with
# ${start} on, begins with that.
execute_process(COMMAND ${emulator} "${program}" ${command} ${file} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
string(REPLACE "\r\n" "\n" printed "${printed}")
file(READ "${expected}" text)
if(start)
    string(LENGTH "${text}" length)
    string(SUBSTRING "${printed}" 0 ${length} printed)
endif()
if(text STREQUAL "" OR NOT status EQUAL 0 OR NOT printed STREQUAL text)
    message(FATAL_ERROR "${program} ended with ${status} and printed\n${printed}instead of\n${text}")
endif()
