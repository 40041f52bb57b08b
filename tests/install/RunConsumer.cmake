# Sets the policies of this script: if(IN_LIST) needs one of them.
cmake_minimum_required(VERSION 3.22)

# Runs one command and sets `output` to its output. If the command fails, shows the output and stops.
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
# Callers need none of these packages, so the project must build although they cannot be found.
foreach(package Boost CLI11 XercesC)
    list(APPEND flags "-DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON")
endforeach()
run(${CMAKE_COMMAND} -S "${SOURCE}" -B "${WORK}/build" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${WORK}/prefix"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" ${flags})
run(${CMAKE_COMMAND} --build "${WORK}/build")
run("${WORK}/build/consumer" WORKING_DIRECTORY "${WORK}/build")
set(expected "book: <book lang='de' />
saved: 1
formatted: 1
edited: <book  lang=\"fr\"><!-- new --></book>
retargeted: <book source='new'/>
names in a formula: 2
other names: 0
")
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the consumer printed '${output}'")
endif()

file(GLOB_RECURSE headers "${WORK}/prefix/include/*.h")
if(headers STREQUAL "")
    message(FATAL_ERROR "no header was installed")
endif()
foreach(header ${headers})
    file(STRINGS "${header}" foreign REGEX "# *include <(boost|xercesc|CLI)/")
    if(foreign)
        message(FATAL_ERROR "${header} includes a header of another package: ${foreign}")
    endif()
    get_filename_component(name "${header}" NAME_WE)
    if(name IN_LIST PRIVATE_HEADERS)
        message(FATAL_ERROR "a private header was installed: ${header}")
    endif()
endforeach()
