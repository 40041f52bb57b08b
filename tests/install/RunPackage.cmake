# Makes the package of the build folder BUILD with the program CPACK, unpacks it into an empty folder, checks the links
# of its pages, and runs the commands of the tool there that the READMEs of the repository and of the package show.
# SOURCE is the root of the repository, and LIBRARIES is the folder with the libraries for Windows. EMULATOR is the list
# of words to put before a program. The tool runs in a new Wine prefix.
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

# Fails if a page has a link to a file that is not in the package. Links to the web and within a page are skipped.
file(GLOB_RECURSE pages "${folder}/*.md")
set(link_count 0)
foreach(page ${pages})
    get_filename_component(page_folder "${page}" DIRECTORY)
    file(READ "${page}" text)
    # Brackets and semicolons have a meaning in the lists of CMake.
    string(REGEX REPLACE "[][;]" "|" text "${text}")
    string(REGEX MATCHALL "[|]\\([^()#: ]+[)#]" links "${text}")
    foreach(link ${links})
        string(REGEX REPLACE "^[|].(.*).$" "\\1" link "${link}")
        math(EXPR link_count "${link_count} + 1")
        if(NOT EXISTS "${page_folder}/${link}")
            message(FATAL_ERROR "${page} has a link to ${link}, which is not in the package")
        endif()
    endforeach()
endforeach()
if(link_count LESS 4)
    message(FATAL_ERROR "the pages of the package have only ${link_count} links")
endif()

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

# In the README of the repository, `scripts/run` stands for the tool. In both, FILE stands for a document and OLD for a
# data source.
file(READ "${SOURCE}/README.md" readme)
string(REGEX MATCHALL "`scripts/run [^`]*FILE[^`]*`" commands "${readme}")
file(READ "${folder}/README.md" readme)
string(REGEX MATCHALL "`vanxml [^`]*FILE[^`]*`" packed_commands "${readme}")
foreach(list commands packed_commands)
    list(LENGTH ${list} count)
    if(NOT count EQUAL 6)
        message(FATAL_ERROR "a README has ${count} commands of the tool")
    endif()
endforeach()
foreach(command ${commands} ${packed_commands})
    string(REGEX REPLACE "^`(scripts/run|vanxml) |`$" "" command "${command}")
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
