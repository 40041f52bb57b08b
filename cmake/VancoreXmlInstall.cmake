# Installs the project, so that users find the library with find_package(vancorexml) or pkg-config.
include(CMakePackageConfigHelpers)

get_property(modules GLOBAL PROPERTY VANCOREXML_MODULES)
install(TARGETS ${modules} EXPORT vancorexml
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT programs
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT libraries NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
if(VANCOREXML_TOOL)
    install(TARGETS vanxml RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT programs)
    add_subdirectory(vanxml/shell)
endif()

# The public headers. All other headers are private, and no public header includes one of them. No public header
# includes a header of Xerces-C or Boost, so callers need neither.
set(public_headers
    vancoreplatform/CorePlatformUtils.h
    vancoreplatform/CoreThreadContext.h
    vancoreplatform/DecodingException.h
    vancoreplatform/Encoding.h
    vancoreplatform/Export.h
    vancoreplatform/FileEncoding.h
    vancoreplatform/FileReplacement.h
    vancoreplatform/TextEncoder.h
    vancoreplatform/VCType.h
    vancoreplatform/VFile.h
    vancoreplatform/VFormatString.h
    vancoreplatform/VIOException.h
    vancoreplatform/VLog.h
    vancoreplatform/VPath.h
    vancoreplatform/VScanString.h
    vancoreplatform/VString.h
    vansys/Export.h
    vansys/InitOnce.h
    vansys/LogicException.h
    vansys/MemoryScope.h
    vansys/Unicode.h
    vansys/VError.h
    vansys/VHash32.h
    vansys/VMutex.h
    vansys/VReadWriteLock.h
    vansys/VRecursiveMutex.h
    vansys/VSharedMutex.h
    vansys/VantoraException.h
    vancoredata/DataValue.h
    vancoredata/Export.h
    vancoredata/FieldName.h
    vancoredata/Nullable.h
    vancoredata/QualifiedName.h
    vancoredata/Tuple.h
    vancoredata/VLocale.h
    vancoredata/VResource.h
    vancoredata/VersionNumber.h
    art-cpp/Activity.h
    art-cpp/Export.h
    metrics2/Export.h
    metrics2/Metrics.h
    vancorexml/main/parser/AbstractXMLParser.h
    vancorexml/main/parser/AttributeMap.h
    vancorexml/main/parser/Base64.h
    vancorexml/main/parser/DOM.h
    vancorexml/main/parser/DOMDiagnostic.h
    vancorexml/main/parser/DOMElement.h
    vancorexml/main/parser/DOMElementChildren.h
    vancorexml/main/parser/DOMElementSearch.h
    vancorexml/main/parser/DOMElementTraversal.h
    vancorexml/main/parser/DOMException.h
    vancorexml/main/parser/DOMParser.h
    vancorexml/main/parser/DOMPath.h
    vancorexml/main/parser/DOMPathCanopy.h
    vancorexml/main/parser/DiagnosticCode.h
    vancorexml/main/parser/ExtensionXmlTokens.h
    vancorexml/main/parser/FileInputSource.h
    vancorexml/main/parser/FormulaNames.h
    vancorexml/main/parser/InputSource.h
    vancorexml/main/parser/InputSourceResetter.h
    vancorexml/main/parser/InputSourceUtils.h
    vancorexml/main/parser/NameRetargeter.h
    vancorexml/main/parser/NameRoles.h
    vancorexml/main/parser/OutputTuple.h
    vancorexml/main/parser/ParseDiagnostic.h
    vancorexml/main/parser/Parser.h
    vancorexml/main/parser/PathRenames.h
    vancorexml/main/parser/QtVanResources.h
    vancorexml/main/parser/SAXInterface.h
    vancorexml/main/parser/SourcePosition.h
    vancorexml/main/parser/StandaloneDOMElement.h
    vancorexml/main/parser/StandaloneDOMParser.h
    vancorexml/main/parser/Utf8InputSource.h
    vancorexml/main/parser/VersionSniffer.h
    vancorexml/main/parser/XMLComparison.h
    vancorexml/main/parser/XMLDomFormatter.h
    vancorexml/main/parser/XMLExport.h
    vancorexml/main/parser/XMLFormatter.h
    vancorexml/main/parser/XMLParseException.h
    vancorexml/main/parser/XMLRangeTable.h
    vancorexml/main/parser/XMLSourceEditor.h
    vancorexml/main/parser/XMLSourceFormatter.h
    vancorexml/main/parser/XMLSourceRetargeter.h
    vancorexml/main/parser/XMLStringFormatter.h
    vancorexml/main/parser/XMLUtils.h
    vancorexml/main/parser/XMLValueParsers.h
    vancorexml/main/parser/XSDResources.h
    vancorexml/main/parser/XercesInputSource.h
    vancorexml/main/parser/XercesXMLParser.h
    vancorexml/main/parser/XmlFileType.h
    vancorexml/van-codegen/gen-strings/vancorexml-strings.h)

# An installed header has the same path below the include root as below the root of the repository.
foreach(header ${public_headers})
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}"
        COMPONENT development)
endforeach()
set_property(GLOBAL PROPERTY VANCOREXML_PUBLIC_HEADERS ${public_headers})

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/vancorexml")
install(EXPORT vancorexml NAMESPACE vancorexml:: FILE vancorexml-targets.cmake DESTINATION "${package_folder}"
    COMPONENT development)
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/vancorexml-config.cmake.in" "${PROJECT_BINARY_DIR}/vancorexml-config.cmake"
    INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vancorexml-config-version.cmake" COMPATIBILITY SameMinorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/vancorexml-config.cmake" "${PROJECT_BINARY_DIR}/vancorexml-config-version.cmake"
    DESTINATION "${package_folder}" COMPONENT development)

# The .pc file computes the prefix from its own location, because only `cmake --install --prefix` determines the prefix.
# If the library folder is absolute, it does not move with the prefix, so the .pc file contains the prefix.
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
# The headers need C++20. Qt's headers do not compile without position-independent code.
set(pc_compile_flags "-std=c++20")
if(NOT WIN32)
    string(APPEND pc_compile_flags " -fPIC")
endif()
set(pc_libraries "-lvancorexml -lart-cpp -lmetrics2 -lvancoredata -lvansys -lvancoreplatform")
if(NOT BUILD_SHARED_LIBS)
    # Programs also link what the libraries use. So `pkg-config --libs` prints the same with and without --static. The
    # .pc file of Xerces-C is not required, because its static flags name libraries that only a static Xerces-C needs.
    string(APPEND pc_compile_flags " -DVANCOREXML_STATIC")
    get_target_property(options vancorexml INTERFACE_LINK_OPTIONS)
    list(TRANSFORM options REPLACE "^LINKER:" "-Wl,")
    list(JOIN options " " options)
    string(PREPEND pc_libraries "${options} ")
    get_filename_component(xerces_folder "${XercesC_LIBRARY_RELEASE}" DIRECTORY)
    if(NOT xerces_folder IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
        string(APPEND pc_libraries " -L${xerces_folder}")
    endif()
    string(APPEND pc_libraries " -lxerces-c")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/vancorexml.pc.in" "${PROJECT_BINARY_DIR}/vancorexml.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vancorexml.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)

# The printers for GDB and for the debuggers of Visual Studio.
install(FILES "${PROJECT_SOURCE_DIR}/extras/gdb/vancorexml-gdb.py" "${PROJECT_SOURCE_DIR}/extras/vancorexml.natvis"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/vancorexml" COMPONENT development)
