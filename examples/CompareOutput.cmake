# Runs PROGRAM. Fails unless the program succeeds and prints the content of the file EXPECTED.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
    message(FATAL_ERROR "${PROGRAM} ended with ${status} and printed:\n${printed}")
endif()
