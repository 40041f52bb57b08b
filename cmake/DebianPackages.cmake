# `cpack` makes three Debian packages from any build of the shared libraries: libvancorexml0 with the libraries,
# libvancorexml-dev with everything that programs need to use them, and vanxml with the tool. They install below /usr.
find_program(DPKG_SHLIBDEPS_PROGRAM dpkg-shlibdeps)
find_program(GZIP_PROGRAM gzip)
if(NOT DPKG_SHLIBDEPS_PROGRAM OR NOT GZIP_PROGRAM)
    return()
endif()

set(library_package libvancorexml${PROJECT_VERSION_MAJOR})
set(package_maintainer "The maintainers of vancorexml <maintainers@vancorexml.invalid>")

# Each package needs a changelog and a statement of its copyright. The version has no revision of Debian.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog "${PROJECT_BINARY_DIR}/debian/changelog")
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in" "${changelog}" @ONLY)
execute_process(COMMAND "${GZIP_PROGRAM}" -9nc "${changelog}" OUTPUT_FILE "${changelog}.gz" COMMAND_ERROR_IS_FATAL ANY)
set(copyright "${PROJECT_SOURCE_DIR}/cmake/debian/copyright")

set(components libraries development)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvancorexml-dev)
if(VANCOREXML_TOOL)
    list(APPEND components programs)
    set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME vanxml)
endif()
foreach(component ${components})
    string(TOUPPER ${component} COMPONENT)
    set(folder "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME}")
    install(FILES "${changelog}.gz" DESTINATION "${folder}" COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES "${copyright}" DESTINATION "${folder}" RENAME copyright COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
# The tool contains code of CLI11, whose licence demands its text.
set(cli11_licence /usr/share/doc/libcli11-dev/copyright)
if(VANCOREXML_TOOL AND EXISTS "${cli11_licence}")
    install(FILES "${cli11_licence}" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/vanxml" RENAME copyright.CLI11
        COMPONENT programs EXCLUDE_FROM_ALL)
endif()
install(FILES "${PROJECT_SOURCE_DIR}/cmake/debian/libvancorexml-dev.lintian"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" RENAME libvancorexml-dev
    COMPONENT development EXCLUDE_FROM_ALL)
# GDB loads this file with the library.
install(FILES "${PROJECT_SOURCE_DIR}/extras/gdb/vancorexml-gdb.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load/usr/${CMAKE_INSTALL_LIBDIR}"
    RENAME "libvancorexml.so.${PROJECT_VERSION}-gdb.py"
    COMPONENT development EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME vancorexml)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/RemoveRunPaths.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${package_maintainer}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

# The first line of each description is its summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENT_LIBRARIES_DESCRIPTION "library for XML documents with positions and diagnostics
Parses XML into a tree with positions and errors, finds elements by path,
validates against versioned schemas, and writes XML.")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "library for XML documents (development files)
Contains the headers, the files for CMake and pkg-config, and the printers
for debuggers. A program that uses vancorexml needs this package to compile.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library_package} (= ${PROJECT_VERSION}), qtbase5-dev (>= 5.15)")

set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION "command-line tool for XML documents
Formats, edits, checks and searches XML documents, and changes nothing in a
document but what you ask for.")
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_PROGRAMS_DEPENDS libraries)
include(CPack)
