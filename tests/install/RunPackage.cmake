# Makes the package of the build folder BUILD with the program CPACK, unpacks it into an empty folder, and runs the
# README's commands of the tool there. SOURCE is the root of the repository, and LIBRARIES is the folder with the
# libraries for Windows. EMULATOR is the list of words to put before a program. The tool runs in a new Wine prefix.
cmake_minimum_required(VERSION 3.22)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/unpacked" "${WORK}/documents")
execute_process(COMMAND "${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${WORK}/package"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
file(GLOB zip "${WORK}/package/*.zip")
file(ARCHIVE_EXTRACT INPUT "${zip}" DESTINATION "${WORK}/unpacked")
file(GLOB folder "${WORK}/unpacked/*")
foreach(file "${folder}/README.md" "${folder}/docs/vanxml.md" "${folder}/licences/LGPL-3.txt"
        "${folder}/licences/Apache-2.0.txt")
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "${file} is missing")
    endif()
endforeach()

# Fails if a file of the project contains a path of this computer. The DLLs of other projects contain some.
file(GLOB_RECURSE files "${folder}/*.md" "${folder}/bin/lib*")
list(FILTER files EXCLUDE REGEX "/lib(gcc|stdc|winpthread|xerces)[^/]*$")
foreach(file ${files} "${folder}/bin/vanxml.exe")
    foreach(path "${BUILD}" "${SOURCE}" "${LIBRARIES}")
        string(REGEX REPLACE "([][+.*()^$?|])" "\\\\\\1" path "${path}")
        file(STRINGS "${file}" found LIMIT_COUNT 1 REGEX "${path}/")
        if(found)
            message(FATAL_ERROR "${file} contains '${found}'")
        endif()
    endforeach()
endforeach()

# The tool finds no DLLs outside its folder, and Wine makes a new prefix.
list(FILTER EMULATOR EXCLUDE REGEX "^WINEPATH=")
list(PREPEND EMULATOR ${CMAKE_COMMAND} -E env --unset=WINEPATH "WINEPREFIX=${WORK}/wine")

# Runs the tool in the folder of the documents. Fails unless it succeeds and prints `expected`.
function(run_tool expected)
    execute_process(COMMAND ${EMULATOR} "${folder}/bin/vanxml.exe" ${ARGN}
        WORKING_DIRECTORY "${WORK}/documents" RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    string(FIND "${output}" "${expected}" position)
    if(NOT status EQUAL 0 OR position EQUAL -1)
        message(FATAL_ERROR "vanxml ${ARGN} ended with ${status} and printed:\n${output}${errors}")
    endif()
endfunction()

# A document for the commands of the README, and parts of their outputs.
file(WRITE "${WORK}/documents/shop.xml" "<shop><book id='7'>Tea</book><title lang='de'/></shop>\n")
file(COPY "${SOURCE}/samples/sales.kxa" DESTINATION "${WORK}/documents")
set(format_output "\n  <book id='7'>Tea</book>\n")
set(edit_output "<title lang='en'/></shop>")
set(retarget_output "name='NEW'")
set(check_output "1 document, 0 errors")
set(query_output "/shop/title")
set(query_text_output "Tea")

# In the README, `scripts/run` stands for the tool, FILE for a document and OLD for a data source.
file(READ "${folder}/README.md" readme)
string(REGEX MATCHALL "`scripts/run [^`]*FILE[^`]*`" commands "${readme}")
list(LENGTH commands count)
if(NOT count EQUAL 6)
    message(FATAL_ERROR "the README has ${count} commands of the tool")
endif()
foreach(command ${commands})
    string(REGEX REPLACE "^`scripts/run |`$" "" command "${command}")
    separate_arguments(arguments UNIX_COMMAND "${command}")
    list(GET arguments 0 name)
    if(command MATCHES "--text")
        set(name query_text)
    endif()
    if(name STREQUAL "retarget")
        list(TRANSFORM arguments REPLACE "^FILE$" "sales.kxa")
        list(TRANSFORM arguments REPLACE "^OLD=" "orders=")
    else()
        list(TRANSFORM arguments REPLACE "^FILE(…)?$" "shop.xml")
    endif()
    run_tool("${${name}_output}" ${arguments})
endforeach()
run_tool("vanxml 0.1" --version)
