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

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND VANCOREXML_DEVELOPER AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

# The settings that all of the project's targets share.
function(vancorexml_target_settings target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 20
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    if(VANCOREXML_DEVELOPER AND NOT MSVC)
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
    endif()
    if(VANCOREXML_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${VANCOREXML_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VANCOREXML_SANITIZE})
    endif()
endfunction()

# Adds a shared library of the project. Include paths start at the repository's root, also in the installed copy.
#   vancorexml_add_module(NAME EXPORT_MACRO SOURCES ... PUBLIC ... PRIVATE ...)
function(vancorexml_add_module name macro)
    cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} SHARED ${arg_SOURCES})
    add_library(vancorexml::${name} ALIAS ${name})
    vancorexml_target_settings(${name})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    target_compile_features(${name} PUBLIC cxx_std_20)
    # Calls inside a library bind locally and can be inlined (no symbol interposition). Calls out of it skip the PLT.
    if(NOT WIN32 AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-plt)
    endif()
    # g++ marks some symbols of the standard library's templates as unique in the process, and the
    # loader never unloads a library that has one.
    if(NOT WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fno-gnu-unique)
    endif()
    target_compile_definitions(${name} PRIVATE ${macro}_BUILD QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    set_property(GLOBAL APPEND PROPERTY VANCOREXML_MODULES ${name})
endfunction()

# Adds a program of GoogleTest cases. Each case is a test of CTest.
#   vancorexml_add_tests(NAME SOURCES ... LIBRARIES ...)
function(vancorexml_add_tests name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    vancorexml_target_settings(${name})
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600)
endfunction()
