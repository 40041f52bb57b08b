# Installing, so that a user finds the library with find_package(vancorexml) or pkg-config.
include(CMakePackageConfigHelpers)

get_property(modules GLOBAL PROPERTY VANCOREXML_MODULES)
install(TARGETS ${modules} EXPORT vancorexml
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS vanxml RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")

# What only the library's own sources include.
set(private_headers
    AddressSanitizer.h
    DiagnosticRecords.h
    DiagnosticsIndex.h
    DocumentDiagnostics.h
    DOMBuilder.h
    ElementLinks.h
    ElementPages.h
    ElementTaker.h
    EntityExpansionGuard.h
    EntitySizes.h
    NameTable.h
    OrderedMarks.h
    SharedTexts.h
    SmallBlocks.h
    TwoWriteLocks.h
    Utf16InputSource.h
    XercesMemory.h
    XercesPlatform.h
    XercesXMLHandler.h
    XercesXMLParserImpl.h)
list(TRANSFORM private_headers REPLACE "(.+)\\.h" "/\\1\\\\.h$" OUTPUT_VARIABLE private_patterns)
list(JOIN private_patterns "|" private_pattern)

# Headers keep their place below the include root.
foreach(folder vancoreplatform vansys vancoredata art-cpp metrics2 vancorexml/main vancorexml/van-codegen)
    file(GLOB_RECURSE headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.h")
    foreach(header ${headers})
        if(header MATCHES "${private_pattern}" OR header STREQUAL "vansys/SipHash.h")
            continue()
        endif()
        get_filename_component(place "${header}" DIRECTORY)
        install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${place}")
        set_property(GLOBAL APPEND PROPERTY VANCOREXML_PUBLIC_HEADERS "${header}")
    endforeach()
endforeach()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/vancorexml")
install(EXPORT vancorexml NAMESPACE vancorexml:: FILE vancorexml-targets.cmake DESTINATION "${package_folder}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/vancorexml-config.cmake.in" "${PROJECT_BINARY_DIR}/vancorexml-config.cmake"
    INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vancorexml-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/vancorexml-config.cmake" "${PROJECT_BINARY_DIR}/vancorexml-config-version.cmake" DESTINATION "${package_folder}")

# The prefix is found from the place of the .pc file, because it is not known before `cmake --install --prefix`.
# Only an absolute library folder does not move with the prefix.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
    file(RELATIVE_PATH from_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" from_pc_to_prefix "${from_pc_to_prefix}")
    set(pc_prefix "\${pcfiledir}/${from_pc_to_prefix}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
    string(TOLOWER "pc_${folder}" variable)
    set(${variable} "\${prefix}")
    cmake_path(APPEND ${variable} "${CMAKE_INSTALL_${folder}}")
endforeach()
# The headers need C++20, and Qt's headers refuse code for position-dependent programs.
set(pc_compile_flags "-std=c++20")
if(NOT WIN32)
    string(APPEND pc_compile_flags " -fPIC")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/vancorexml.pc.in" "${PROJECT_BINARY_DIR}/vancorexml.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vancorexml.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
