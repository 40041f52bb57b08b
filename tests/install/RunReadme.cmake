# Copies SOURCE, installs the copy with the commands of its README, and builds and runs the README's program. The
# copy keeps its build folder, so the next run compiles only changed files.
set(copy "${WORK}/source")
set(program "${WORK}/program")

# Sets `result` to the README's block of commands whose first line begins with `start`.
function(read_commands start result)
    file(READ "${SOURCE}/README.md" readme)
    string(FIND "${readme}" "```\n${start}" begin)
    if(begin EQUAL -1)
        message(FATAL_ERROR "the README has no commands that begin with '${start}'")
    endif()
    string(SUBSTRING "${readme}" ${begin} -1 readme)
    string(REGEX MATCH "\n[^`]*" commands "${readme}")
    set(${result} "${commands}" PARENT_SCOPE)
endfunction()

# Replaces PREFIX in `commands` by `prefix` and runs them in `folder`.
function(run_commands commands folder prefix)
    string(REPLACE "PREFIX/lib" "PREFIX/${LIBDIR}" commands "${commands}")
    # Not the PREFIX in CMAKE_PREFIX_PATH.
    string(REGEX REPLACE "([ =,])PREFIX" "\\1${prefix}" commands "${commands}")
    file(WRITE "${WORK}/commands.sh" "${commands}")
    execute_process(COMMAND sh -ex "${WORK}/commands.sh" WORKING_DIRECTORY "${folder}"
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "the README's commands failed (${result}):\n${output}")
    endif()
endfunction()

# Builds the README's program against the library installed in `prefix`, runs it and checks its output.
function(build_program prefix)
    file(REMOVE_RECURSE "${program}")
    file(COPY "${SOURCE}/examples/shop.cpp" "${SOURCE}/examples/project/CMakeLists.txt" DESTINATION "${program}")
    read_commands("cmake -S . -B build-shop" commands)
    run_commands("${commands}" "${program}" "${prefix}")
    read_commands("export PKG_CONFIG_PATH" commands)
    run_commands("${commands}" "${program}" "${prefix}")
    execute_process(COMMAND "${program}/shop" RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    file(READ "${SOURCE}/examples/shop.out" expected)
    if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
        message(FATAL_ERROR "the program ended with ${result} and printed:\n${output}")
    endif()
endfunction()

# The copied files keep their modification times, so the build recompiles only changed files.
file(GLOB old "${copy}/*")
list(REMOVE_ITEM old "${copy}/build")
file(REMOVE_RECURSE ${old} "${WORK}/prefix" "${WORK}/moved")
file(GLOB entries "${SOURCE}/*")
foreach(entry ${entries})
    # Skip build folders and .git: they are large, and the copy itself lies in a build folder.
    string(FIND "${WORK}/" "${entry}/" inside)
    if(NOT inside EQUAL 0 AND NOT EXISTS "${entry}/CMakeCache.txt" AND NOT entry MATCHES "/(build|\\.git)$")
        file(COPY "${entry}" DESTINATION "${copy}")
    endif()
endforeach()

read_commands("cmake -S" commands)
run_commands("${commands}" "${copy}" "${WORK}/prefix")
build_program("${WORK}/prefix")

file(RENAME "${WORK}/prefix" "${WORK}/moved")
build_program("${WORK}/moved")
