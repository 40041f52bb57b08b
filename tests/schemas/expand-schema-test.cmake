# Tests expand-schema.cmake with small sources:
#   cmake -D SCRIPT=expand-schema.cmake -D FOLDER=folder-to-write-to -P expand-schema-test.cmake
cmake_minimum_required(VERSION 3.22)

file(WRITE "${FOLDER}/part.xsd.in" "part <?from 10.4?>\n")
file(WRITE "${FOLDER}/indented.xsd.in" "<a>\n\n  <b/>\n</a>\n")

# Expands `source` for a version. Sets `status` to the exit status, and `output` to the schema or the error text.
function(run source version status output)
    file(WRITE "${FOLDER}/source.xsd.in" "${source}")
    file(REMOVE "${FOLDER}/expanded.xsd")
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -D "SOURCE=${FOLDER}/source.xsd.in" -D VERSION=${version}
            -D "OUTPUT=${FOLDER}/expanded.xsd" -P "${SCRIPT}"
        RESULT_VARIABLE result ERROR_VARIABLE text)
    if(result EQUAL 0)
        file(READ "${FOLDER}/expanded.xsd" text)
    endif()
    set(${status} ${result} PARENT_SCOPE)
    set(${output} "${text}" PARENT_SCOPE)
endfunction()

# Expects that the schema of a version is `expected`.
function(expect source version expected)
    run("${source}" ${version} status output)
    if(NOT status EQUAL 0 OR NOT output STREQUAL expected)
        message(SEND_ERROR "version ${version} of\n${source}is\n${output}instead of\n${expected}")
    endif()
endfunction()

# Expects that `source` is an error.
function(expect_refused source)
    run("${source}" 10.5 status output)
    if(status EQUAL 0)
        message(SEND_ERROR "accepted the invalid source\n${source}")
    endif()
endfunction()

# CMake must not interpret lists, variables and escapes in the text.
expect("<?xml version='1.0'?>\n[0-9];\\.$x \${y} é\n" 10.5 "<?xml version='1.0'?>\n[0-9];\\.$x \${y} é\n")
expect("@VERSION@ @MAJOR@ @MINOR@\n" 10.5 "10.5 10 5\n")

set(lines "a <?from 10.4?>\nb <?until 10.4?>\n")
expect("${lines}" 10.3 "b\n")
expect("${lines}" 10.4 "a\nb\n")
expect("${lines}" 18.1 "a\n")

set(blocks "<?from 10.3?>\na\n  <?until 10.4?>\n  b\n  <?end?>\n<?end?>\nc\n")
expect("${blocks}" 10.2 "c\n")
expect("${blocks}" 10.4 "a\n  b\nc\n")
expect("${blocks}" 10.5 "a\nc\n")

expect("a\n\n<?include part.xsd.in?>\n\nb\n" 10.4 "a\n\npart\n\nb\n")
expect("a\n\n<?include part.xsd.in?>\n\nb\n" 10.3 "a\n\nb\n")
expect("a\n\n<?include part.xsd.in?> <?from 10.5?>\n\nb\n" 10.4 "a\n\nb\n")
expect("  <?include indented.xsd.in?>\n" 10.5 "  <a>\n\n    <b/>\n  </a>\n")

expect_refused("<?form 10.3?>\na\n<?end?>\n")
expect_refused("<?from 10.3?>\na\n")
expect_refused("a\n<?end?>\n")
expect_refused("<?include missing.xsd.in?>\n")
