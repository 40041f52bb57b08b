# Stops PROGRAM in GDB, loads the file PRINTERS, and compares what GDB prints with the file expected.txt.
set(here "${CMAKE_CURRENT_LIST_DIR}")
execute_process(
    COMMAND "${GDB}" -q -nx -batch -x "${PRINTERS}" -x "${here}/print-objects.gdb" "${PROGRAM}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
string(FIND "${output}" "\n$1 = " begin)
if(begin EQUAL -1)
    message(FATAL_ERROR "gdb ended with ${result} and printed:\n${output}${errors}")
endif()
math(EXPR begin "${begin} + 1")
string(SUBSTRING "${output}" ${begin} -1 output)
file(READ "${here}/expected.txt" expected)
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "gdb printed:\n${output}${errors}")
endif()
