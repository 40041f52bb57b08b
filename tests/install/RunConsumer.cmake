# Installs the build folder BUILD below the folder WORK, builds the project SOURCE against the installed copy, and runs
# its program. The other variables:
#   GENERATOR, COMPILER, SANITIZE  the generator, the compiler and the sanitizers of the build folder
#   CMAKE_OPTIONS                  further options for the project
#   EMULATOR                       the words to put before a program, or empty
#   WINDOWS                        true if the program runs on Windows
#   PKG_CONFIG, PKG_CONFIG_FOLDER  if given, also builds the program with pkg-config; the folder has the .pc file of Qt
#   LIBDIR                         the folder of the libraries below the prefix
#   STATIC_ROOT                    if given, the root of the repository, from which BUILD is made with static libraries
#   PRIVATE_HEADERS                the names of the headers that must not be installed

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

# Runs the program and compares its output with the expected text.
function(run_consumer program)
    if(WINDOWS)
        # Windows looks for DLLs in the folder of the program.
        file(COPY "${program}.exe" DESTINATION "${WORK}/prefix/bin")
        get_filename_component(name "${program}" NAME)
        set(program "${WORK}/prefix/bin/${name}.exe")
    endif()
    run(${EMULATOR} "${program}" WORKING_DIRECTORY "${WORK}/build")
    string(REPLACE "\r\n" "\n" output "${output}")
    set(expected "book: <book lang='de' />
saved: 1
formatted: 1
edited: <book  lang=\"fr\"><!-- new --></book>
retargeted: <book source='new'/>
names in a formula: 2
embedded schemas: 1
other names: 0
")
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "the consumer printed '${output}'")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
if(STATIC_ROOT)
    run(${CMAKE_COMMAND} -S "${STATIC_ROOT}" -B "${BUILD}" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
        -DCMAKE_BUILD_TYPE=None -DBUILD_SHARED_LIBS=OFF -DVANCOREXML_DEVELOPER=OFF -DVANCOREXML_TOOL=OFF)
    run(${CMAKE_COMMAND} --build "${BUILD}")
endif()
run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${WORK}/prefix")

if(WINDOWS)
    # Each DLL is in bin, and its import library is in lib.
    file(GLOB dlls RELATIVE "${WORK}/prefix/bin" "${WORK}/prefix/bin/*.dll")
    file(GLOB misplaced "${WORK}/prefix/lib/*.dll")
    if(NOT dlls OR misplaced)
        message(FATAL_ERROR "the DLLs are not in the folder bin")
    endif()
    foreach(dll ${dlls})
        string(REGEX REPLACE "[.]dll$" "" name "${dll}")
        if(NOT EXISTS "${WORK}/prefix/lib/${name}.dll.a" AND NOT EXISTS "${WORK}/prefix/lib/${name}.lib")
            message(FATAL_ERROR "${dll} has no import library")
        endif()
    endforeach()
endif()

set(flags ${CMAKE_OPTIONS})
if(SANITIZE)
    list(APPEND flags "-DCMAKE_CXX_FLAGS=-fsanitize=${SANITIZE}")
endif()
# Callers need none of these packages, so the project must build although they cannot be found.
set(unneeded Boost CLI11)
if(NOT STATIC_ROOT)
    list(APPEND unneeded XercesC)
endif()
foreach(package ${unneeded})
    list(APPEND flags "-DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON")
endforeach()
run(${CMAKE_COMMAND} -S "${SOURCE}" -B "${WORK}/build" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${WORK}/prefix"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" ${flags})
run(${CMAKE_COMMAND} --build "${WORK}/build")
run_consumer("${WORK}/build/consumer")

if(PKG_CONFIG)
    set(options)
    if(PKG_CONFIG_FOLDER)
        # The .pc file of Qt names the prefix of another system.
        set(options --define-prefix)
        set(ENV{PKG_CONFIG_LIBDIR} "${WORK}/prefix/${LIBDIR}/pkgconfig:${PKG_CONFIG_FOLDER}")
    else()
        set(ENV{PKG_CONFIG_PATH} "${WORK}/prefix/${LIBDIR}/pkgconfig")
    endif()
    if(STATIC_ROOT)
        run(${PKG_CONFIG} --libs vancorexml)
        set(libraries "${output}")
        run(${PKG_CONFIG} --static --libs vancorexml)
        if(NOT output STREQUAL libraries)
            message(FATAL_ERROR "pkg-config --static prints '${output}' instead of '${libraries}'")
        endif()
    endif()
    set(suffix)
    if(WINDOWS)
        set(suffix .exe)
    endif()
    run(${PKG_CONFIG} ${options} --cflags --libs vancorexml)
    separate_arguments(flags UNIX_COMMAND "${output}")
    run(${COMPILER} "${SOURCE}/main.cpp" ${flags} -o "${WORK}/build/consumer_pc${suffix}")
    run_consumer("${WORK}/build/consumer_pc")
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
