# Writes the schema of one version:
#   cmake -D SOURCE=kxa.xsd.in -D VERSION=10.5 -D OUTPUT=kxa_10_5.xsd -P expand-schema.cmake
#
# SOURCE holds the text of all versions. Processing instructions say which lines belong to which version:
#   <?from 10.3?>               At the end of a line, keeps the line in version 10.3 and all later ones. If it is the
#                               only text of a line, keeps all lines down to <?end?>. Such blocks may nest.
#   <?until 10.4?>              Works like <?from?>, for version 10.4 and all earlier ones.
#   <?include name.xsd.in?>     Inserts the expanded text of a file in the folder of SOURCE, with the indentation of
#                               the instruction.
#   @VERSION@ @MAJOR@ @MINOR@   Are replaced by VERSION and its two numbers.
# Several empty lines in a row become one.
cmake_minimum_required(VERSION 3.22)

# Checks a mark: `bound` is "from" or "until", and `version` is its version. Sets `result` to "keep" if the marked lines
# belong to VERSION, otherwise to "skip".
function(judge bound version result)
    if((bound STREQUAL "from" AND VERSION VERSION_LESS version)
            OR (bound STREQUAL "until" AND VERSION VERSION_GREATER version))
        set(${result} skip PARENT_SCOPE)
    else()
        set(${result} keep PARENT_SCOPE)
    endif()
endfunction()

# Sets `result` to the expanded text of `file`.
function(expand file result)
    file(READ "${file}" text)
    set(expanded)
    set(line_number 0)
    # The results of `judge` for the open blocks, the innermost last.
    set(blocks)
    while(text MATCHES "^([^\n]*)\n")
        set(line "${CMAKE_MATCH_1}")
        string(LENGTH "${CMAKE_MATCH_0}" length)
        string(SUBSTRING "${text}" ${length} -1 text)
        math(EXPR line_number "${line_number} + 1")

        set(verdict keep)
        if(line MATCHES "^( *|.*[^ ]) *<\\?(from|until) ([0-9.]+)\\?>$")
            set(line "${CMAKE_MATCH_1}")
            judge(${CMAKE_MATCH_2} ${CMAKE_MATCH_3} verdict)
            if(line MATCHES "^ *$")
                list(APPEND blocks ${verdict})
                continue()
            endif()
        elseif(line MATCHES "^ *<\\?end\\?>$" AND blocks)
            list(POP_BACK blocks)
            continue()
        endif()

        if(line MATCHES "^( *)<\\?include ([a-z.-]+)\\?>$")
            set(indentation "${CMAKE_MATCH_1}")
            expand("${folder}/${CMAKE_MATCH_2}" line)
            string(REGEX REPLACE "\n([^\n])" "\n${indentation}\\1" line "${indentation}${line}")
        elseif(line MATCHES "<\\?" AND NOT line MATCHES "^<\\?xml ")
            message(FATAL_ERROR "${file}:${line_number}: not understood: ${line}")
        else()
            string(APPEND line "\n")
        endif()
        if(NOT skip IN_LIST blocks AND verdict STREQUAL "keep")
            string(APPEND expanded "${line}")
        endif()
    endwhile()
    if(blocks OR NOT text STREQUAL "")
        message(FATAL_ERROR "${file}: an <?end?> or the last line's end is missing")
    endif()
    set(${result} "${expanded}" PARENT_SCOPE)
endfunction()

if(NOT VERSION MATCHES "^([0-9]+)\\.([0-9]+)$")
    message(FATAL_ERROR "not a version: ${VERSION}")
endif()
set(MAJOR ${CMAKE_MATCH_1})
set(MINOR ${CMAKE_MATCH_2})

get_filename_component(SOURCE "${SOURCE}" ABSOLUTE)
get_filename_component(folder "${SOURCE}" DIRECTORY)
expand("${SOURCE}" schema)
string(REGEX REPLACE "\n\n\n+" "\n\n" schema "${schema}")
foreach(name VERSION MAJOR MINOR)
    string(REPLACE "@${name}@" "${${name}}" schema "${schema}")
endforeach()
file(WRITE "${OUTPUT}" "${schema}")
