# Settings and functions for all targets of the project.
include(GNUInstallDirs)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# Installed libraries and programs find the libraries by relative paths, so the installed folder can be moved.
if(NOT WIN32 AND NOT APPLE)
    file(RELATIVE_PATH from_programs_to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${from_programs_to_libraries}")
endif()

# The libraries are shared unless the user or the including project decides otherwise.
if(NOT DEFINED BUILD_SHARED_LIBS)
    set(BUILD_SHARED_LIBS ON)
endif()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Microsoft's compiler warns when a source defines a macro that its precompiled header was made without. Each module
# defines such a macro for its exports.
set(fast_build ON)
if(MSVC)
    set(fast_build OFF)
endif()
option(VANCOREXML_FAST_BUILD "Precompile headers and compile related sources together" ${fast_build})

if(MSVC AND NOT BUILD_SHARED_LIBS)
    message(FATAL_ERROR "static libraries need g++ or clang")
endif()
if(MSVC AND VANCOREXML_SANITIZE)
    message(FATAL_ERROR "VANCOREXML_SANITIZE needs g++ or clang")
endif()

# With this setting, ccache also caches sources that use precompiled headers.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND VANCOREXML_DEVELOPER AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${CCACHE_PROGRAM}")
endif()

# Sets the compiler options that all targets of the project share.
function(vancorexml_target_settings target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 20
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    if(WIN32)
        target_compile_definitions(${target} PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN)
    endif()
    if(MSVC)
        # Without these options, the compiler reads sources in the code page of the machine, accepts code that is not
        # C++20, gives __cplusplus the value of C++98, and limits an object file to 65,279 sections.
        target_compile_options(${target} PRIVATE /utf-8 /permissive- /Zc:__cplusplus /bigobj)
        # The functions of the C library that the compiler calls unsafe are standard.
        target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
    endif()
    if(VANCOREXML_DEVELOPER AND MSVC)
        target_compile_options(${target} PRIVATE /W4)
    elseif(VANCOREXML_DEVELOPER)
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
            -Werror)
    endif()
    if(VANCOREXML_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${VANCOREXML_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VANCOREXML_SANITIZE})
    endif()
endfunction()

# Precompiles headers for the target.
function(vancorexml_precompile target)
    if(NOT VANCOREXML_FAST_BUILD)
        return()
    endif()
    target_precompile_headers(${target} PRIVATE ${ARGN})
    vancorexml_cache_precompiled(${target})
endfunction()

# Compiles the target with the precompiled headers of the target `other`, which must have the same compiler options.
function(vancorexml_reuse_precompiled target other)
    if(NOT VANCOREXML_FAST_BUILD)
        return()
    endif()
    target_precompile_headers(${target} REUSE_FROM ${other})
    vancorexml_cache_precompiled(${target})
endfunction()

# ccache needs -fpch-preprocess to cache sources that use precompiled headers of g++.
function(vancorexml_cache_precompiled target)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()

# On Windows, gives the target a resource with its version and the description, which must be plain ASCII.
function(vancorexml_version_resource target description)
    if(NOT WIN32)
        return()
    endif()
    get_target_property(target_type ${target} TYPE)
    if(target_type STREQUAL "EXECUTABLE")
        set(type VFT_APP)
        set(file_name "${target}${CMAKE_EXECUTABLE_SUFFIX}")
    else()
        set(type VFT_DLL)
        set(file_name "${CMAKE_SHARED_LIBRARY_PREFIX}${target}${CMAKE_SHARED_LIBRARY_SUFFIX}")
    endif()
    configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc" @ONLY)
    # A separate library compiles the resource: the resource compiler does not know the compiler options of the target.
    add_library(${target}_version OBJECT "${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc")
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()

# Adds a library of the project, which is static if BUILD_SHARED_LIBS is off. Include paths start at the root of the
# repository, and at the include root of the installed copy.
#   vancorexml_add_module(NAME EXPORT_MACRO [OBJECTS] DESCRIPTION ... SOURCES ... PUBLIC ... PRIVATE ...)
# With OBJECTS, the sources are compiled into the object library NAME_objects. Tests of classes that the library does
# not export link NAME_objects instead of NAME. A program must not link both.
function(vancorexml_add_module name macro)
    cmake_parse_arguments(arg "OBJECTS" "DESCRIPTION" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    if(arg_OBJECTS)
        set(compiled ${name}_objects)
        add_library(${compiled} OBJECT ${arg_SOURCES})
        vancorexml_module_settings(${compiled})
        target_compile_definitions(${compiled} PRIVATE ${macro}_BUILD)
        target_link_libraries(${compiled} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
        # On Windows, a program that links the objects must not import their symbols.
        if(WIN32)
            target_compile_definitions(${compiled} INTERFACE ${macro}_BUILD)
        endif()
        add_library(${name} $<TARGET_OBJECTS:${compiled}>)
        set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    else()
        set(compiled ${name})
        add_library(${name} ${arg_SOURCES})
    endif()
    vancorexml_reuse_precompiled(${compiled} modules_precompiled)
    add_library(vancorexml::${name} ALIAS ${name})
    vancorexml_module_settings(${name})
    target_compile_definitions(${name} PRIVATE ${macro}_BUILD)
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    if(BUILD_SHARED_LIBS)
        vancorexml_version_resource(${name} "${arg_DESCRIPTION}")
    endif()
    set_property(GLOBAL APPEND PROPERTY VANCOREXML_MODULES ${name})
endfunction()

# Sets the compiler options of the sources of a module.
function(vancorexml_module_settings name)
    vancorexml_target_settings(${name})
    target_compile_features(${name} PUBLIC cxx_std_20)
    # The headers of a static library must not declare its symbols as imports.
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(${name} PUBLIC VANCOREXML_STATIC)
    endif()
    # Exported classes have members and bases of the standard library, which is not exported. This is safe if the
    # library and its callers use the same standard library, which they need anyway.
    if(MSVC)
        target_compile_options(${name} PUBLIC /wd4251 /wd4275)
    endif()
    # Calls inside a library bind locally and can be inlined (no symbol interposition). Calls out of it skip the PLT.
    if(NOT WIN32 AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-plt)
    endif()
    # g++ marks some symbols of the standard library's templates as unique in the process. The loader never unloads a
    # library that has such a symbol.
    if(NOT WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fno-gnu-unique)
    endif()
    # Headers of Xerces-C contain their paths, which must not be those of the computer that builds the DLLs.
    if(MINGW AND CMAKE_CROSSCOMPILING)
        target_compile_options(${name} PRIVATE "-fmacro-prefix-map=${VANCOREXML_WINDOWS_LIBRARIES}/=")
    endif()
    target_compile_definitions(${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
endfunction()

# Sets the compiler options of test programs. The tests spend their time in the library. So their own code is not
# optimized, which halves its compile time.
function(vancorexml_test_settings name)
    vancorexml_target_settings(${name})
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    if(NOT MSVC)
        target_compile_options(${name} PRIVATE -O0)
    endif()
    target_link_libraries(${name} PRIVATE GTest::gtest GTest::gmock)
endfunction()

# Adds a program of GoogleTest cases. Each case is a test of CTest, except with a sanitizer. The sources listed as
# SOURCES are compiled in batches. Each source listed as ALONE is compiled alone, because it defines a name that another
# source also defines.
#   vancorexml_add_tests(NAME SOURCES ... ALONE ... LIBRARIES ... [SHARDS NUMBER])
# SHARDS is the number of parts of a long program.
function(vancorexml_add_tests name)
    cmake_parse_arguments(arg "" "SHARDS" "SOURCES;ALONE;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES} ${arg_ALONE})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} cpu_time GTest::gtest_main)
    vancorexml_test_settings(${name})
    # On Windows, a program that links the objects defines a macro that the precompiled headers were made without.
    if(NOT (WIN32 AND "vancorexml_objects" IN_LIST arg_LIBRARIES))
        vancorexml_reuse_precompiled(${name} tests_precompiled)
    endif()
    if(VANCOREXML_FAST_BUILD)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
        set_source_files_properties(${arg_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        # A batch is one source that includes the others. g++ then warns about test fixtures in unnamed namespaces.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            target_compile_options(${name} PRIVATE -Wno-subobject-linkage)
        endif()
    endif()
    set(has_thread_tests OFF)
    foreach(source ${arg_SOURCES} ${arg_ALONE})
        get_filename_component(source "${source}" ABSOLUTE)
        if(EXISTS "${source}")
            file(STRINGS "${source}" thread_tests REGEX "^TEST.*Thread")
            if(thread_tests)
                set(has_thread_tests ON)
            endif()
        endif()
    endforeach()

    # A program starts slowly with a sanitizer or with Wine, and ends slowly when it measures its coverage. So the whole
    # program, or each of its shards, is one test of CTest there. The thread sanitizer runs only the cases with "Thread"
    # in their names; the target thread_tests builds the programs that have some.
    if(VANCOREXML_SANITIZE STREQUAL "thread")
        if(has_thread_tests)
            add_test(NAME ${name}.Thread COMMAND ${name} --gtest_filter=*Thread*)
            set_tests_properties(${name}.Thread PROPERTIES TIMEOUT 1200)
            if(NOT TARGET thread_tests)
                add_custom_target(thread_tests)
            endif()
            add_dependencies(thread_tests ${name})
        endif()
    elseif(VANCOREXML_SANITIZE OR CMAKE_CROSSCOMPILING OR CMAKE_CXX_FLAGS MATCHES "--coverage")
        if(NOT arg_SHARDS)
            set(arg_SHARDS 1)
        endif()
        foreach(shard RANGE 1 ${arg_SHARDS})
            math(EXPR index "${shard} - 1")
            set(test ${name})
            if(arg_SHARDS GREATER 1)
                string(APPEND test .${shard})
            endif()
            add_test(NAME ${test} COMMAND ${name})
            set_tests_properties(${test} PROPERTIES
                ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}" TIMEOUT 1200)
            if(arg_SHARDS GREATER 1)
                set_tests_properties(${test} PROPERTIES COST 1000)  # CTest starts long programs first
            endif()
        endforeach()
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600)
    endif()
endfunction()
