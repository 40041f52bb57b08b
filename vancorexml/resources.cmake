# Embeds the schemas and the compiled translations as Qt resources in the folder ":/vancorexml". Sets `resource_sources`
# to the source that contains them.
# The folders are those of Debian, of vcpkg and of Qt's installer.
find_program(LRELEASE_PROGRAM NAMES lrelease-qt5 lrelease REQUIRED HINTS
    "${Qt5Core_DIR}/../../../qt5/bin"
    "${Qt5Core_DIR}/../../../tools/qt5-tools/bin"
    "${Qt5Core_DIR}/../../../bin")

set(locales ar_YE de_DE en_GB es_ES fr_CA fr_FR ga_IE it_IT ja_JP ko_KR pt_BR zh_CN zh_TW)

set(rows)
set(embedded_files)

# Embeds the file `path` as the resource `name`.
macro(embed name path)
    list(APPEND embedded_files "${path}")
    string(APPEND rows "    <file alias=\"${name}\">${path}</file>\n")
endmacro()

set(resources "${CMAKE_CURRENT_LIST_DIR}/resources")
foreach(name connector_plugin_manifest connector_plugin_resources dynamic_connectors oauth_config user xml)
    string(TOUPPER ${name} NAME)
    embed(VQRC_FILEFORMAT_${NAME}_XSD "${resources}/${name}.xsd")
endforeach()
embed(VQRC_FILEFORMAT_XHTML_DTD "${resources}/xhtml.dtd")

# All versions of the schema of a document type are generated from one source, so that they cannot differ by accident.
# The sources include these shared parts.
set(schema_parts
    alias-keys binary caption column common connection data-connection-name data-source-name field-name field-reference
    field-types file-path flag formula map-source-name non-empty non-empty-file-path option-names text url)
list(TRANSFORM schema_parts PREPEND "${resources}/")
list(TRANSFORM schema_parts APPEND ".xsd.in")
set(expand_schema "${CMAKE_CURRENT_LIST_DIR}/expand-schema.cmake")
macro(embed_versioned_schema type version name)
    set(source "${resources}/${type}.xsd.in")
    set(schema "${CMAKE_CURRENT_BINARY_DIR}/schemas/${name}.xsd")
    add_custom_command(OUTPUT "${schema}"
        COMMAND "${CMAKE_COMMAND}" -D "SOURCE=${source}" -D VERSION=${version} -D "OUTPUT=${schema}"
            -P "${expand_schema}"
        DEPENDS "${source}" ${schema_parts} "${expand_schema}" VERBATIM)
    embed(${name} "${schema}")
endmacro()

# XSDResources.cpp has the list of versions, oldest first. The last one is the current version. The names of its schemas
# have no version.
set(version_list "${CMAKE_CURRENT_LIST_DIR}/main/parser/XSDResources.cpp")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${version_list}")
file(STRINGS "${version_list}" older_versions REGEX "^constexpr .* SchemaVersions\\[\\] = ")
string(REGEX MATCHALL "[0-9]+\\.[0-9]+" older_versions "${older_versions}")
list(POP_BACK older_versions current_version)
if(NOT current_version)
    message(FATAL_ERROR "${version_list} has no line with SchemaVersions")
endif()

foreach(type kxa kxb kxc kxd kxe kxf)
    string(TOUPPER ${type} TYPE)
    embed_versioned_schema(${type} ${current_version} VQRC_FILEFORMAT_${TYPE}_XSD)
endforeach()
foreach(type kxa kxb kxc kxd)
    string(TOUPPER ${type} TYPE)
    foreach(version ${older_versions})
        string(REPLACE . _ suffix ${version})
        embed_versioned_schema(${type} ${version} VQRC_FILEFORMAT_${TYPE}_XSD_${suffix})
    endforeach()
endforeach()

foreach(locale ${locales})
    set(source "${CMAKE_CURRENT_LIST_DIR}/van-codegen/gen-strings/vancorexml-strings_${locale}.ts")
    set(compiled "${CMAKE_CURRENT_BINARY_DIR}/vancorexml-strings_${locale}.qm")
    add_custom_command(OUTPUT "${compiled}"
        COMMAND "${LRELEASE_PROGRAM}" -silent "${source}" -qm "${compiled}"
        DEPENDS "${source}" VERBATIM)
    list(APPEND embedded_files "${compiled}")
    string(APPEND rows "    <file alias=\"VQRC_MODSTRINGS_${locale}\">${compiled}</file>\n")
endforeach()

set(collection "${CMAKE_CURRENT_BINARY_DIR}/vancorexml.qrc")
file(GENERATE OUTPUT "${collection}"
    CONTENT "<RCC>\n  <qresource prefix=\"/vancorexml\">\n${rows}  </qresource>\n</RCC>\n")

set(resource_sources "${CMAKE_CURRENT_BINARY_DIR}/vancorexml-resources.cpp")
add_custom_command(OUTPUT "${resource_sources}"
    COMMAND Qt5::rcc --format-version 3 --name vancorexml -o "${resource_sources}" "${collection}"
    DEPENDS "${collection}" ${embedded_files} VERBATIM)
# When the library is unloaded, the source calls this function of QtVanResources.cpp.
set_source_files_properties("${resource_sources}" PROPERTIES
    COMPILE_DEFINITIONS qUnregisterResourceData=UnregisterEmbeddedFiles)
