# Packages the project.
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
    include(DebianPackages)
    return()
endif()

# Packages the tool for Windows: `cpack` makes a ZIP with vanxml.exe, every DLL that it needs, the documentation, and
# the licences of the parts that other projects made. Only a build on Debian can do that, because the licences are those
# of Debian's packages.
if(NOT (WIN32 AND CMAKE_CROSSCOMPILING AND VANCOREXML_TOOL))
    return()
endif()

# The README of the repository is for programmers, and most of its links lead to files that are not in the ZIP.
install(FILES "${PROJECT_SOURCE_DIR}/PACKAGE.md" DESTINATION . RENAME README.md COMPONENT programs EXCLUDE_FROM_ALL)
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" DESTINATION . COMPONENT programs EXCLUDE_FROM_ALL)
install(FILES "${PROJECT_SOURCE_DIR}/docs/vanxml.md" "${PROJECT_SOURCE_DIR}/docs/messages.md" DESTINATION docs
    COMPONENT programs EXCLUDE_FROM_ALL)

# The folders with the DLLs of other projects.
set(dll_folders "$<TARGET_FILE_DIR:Qt5::Core>")
foreach(prefix ${CMAKE_PREFIX_PATH} ${CMAKE_FIND_ROOT_PATH})
    list(APPEND dll_folders "${prefix}/bin")
endforeach()

get_property(modules GLOBAL PROPERTY VANCOREXML_MODULES)
set(own_dlls)
foreach(module ${modules})
    list(APPEND own_dlls $<TARGET_FILE_NAME:${module}>)
endforeach()

install(CODE "
        set(program \"$<TARGET_FILE:vanxml>\")
        set(own_dlls \"${own_dlls}\")
        set(dll_folders \"${dll_folders}\")
        set(objdump \"${CMAKE_OBJDUMP}\")
        set(strip \"${CMAKE_STRIP}\")
        set(links \"${PROJECT_BINARY_DIR}/dll-links\")"
    COMPONENT programs EXCLUDE_FROM_ALL)
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallDlls.cmake" COMPONENT programs EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR ZIP)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME vanxml)
set(CPACK_PACKAGE_FILE_NAME "vanxml-${PROJECT_VERSION}-windows-x86_64")
# The ZIP contains only the program and the DLLs that it needs. All its files lie in one folder.
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENTS_ALL programs)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
