# Runs one command; what it printed is shown when it fails.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN} failed (${result}):\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${WORK}/prefix")

set(flags)
if(SANITIZE)
    set(flags "-DCMAKE_CXX_FLAGS=-fsanitize=${SANITIZE}")
endif()
run(${CMAKE_COMMAND} -S "${SOURCE}" -B "${WORK}/build" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DCMAKE_CXX_COMPILER=${COMPILER}" ${flags})
run(${CMAKE_COMMAND} --build "${WORK}/build")
run("${WORK}/build/consumer")
if(NOT output STREQUAL "book: <book lang='de' />\n")
    message(FATAL_ERROR "the consumer printed '${output}'")
endif()

# A header that only our sources include stays at home.
if(EXISTS "${WORK}/prefix/include/vancorexml/main/parser/XercesXMLHandler.h")
    message(FATAL_ERROR "a private header was installed")
endif()
