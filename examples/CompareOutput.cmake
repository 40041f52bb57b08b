# Runs PROGRAM, a list of words. Fails unless the program succeeds and prints the content of the file EXPECTED. If
# WINDOWS is true, lines may end with CR LF.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${EXPECTED} expected)
if(WINDOWS)
    string(REPLACE "\r\n" "\n" printed "${printed}")
endif()
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
    message(FATAL_ERROR "${PROGRAM} ended with ${status} and printed:\n${printed}")
endif()
