# What is embedded: the schemas and the compiled translations, under ":/vancorexml".
# Sets resource_sources.
find_program(LRELEASE_PROGRAM NAMES lrelease-qt5 lrelease HINTS "${Qt5Core_DIR}/../../../qt5/bin" REQUIRED)

set(locales ar_YE de_DE en_GB es_ES fr_CA fr_FR ga_IE it_IT ja_JP ko_KR pt_BR zh_CN zh_TW)

# Name of the file among the resources, without its ending, and the resource's name.
set(schemas
    connector_plugin_manifest.xsd VQRC_FILEFORMAT_CONNECTOR_PLUGIN_MANIFEST_XSD
    connector_plugin_resources.xsd VQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD
    dynamic_connectors.xsd VQRC_FILEFORMAT_DYNAMIC_CONNECTORS_XSD
    kxe.xsd VQRC_FILEFORMAT_KXE_XSD
    kxf.xsd VQRC_FILEFORMAT_KXF_XSD
    oauth_config.xsd VQRC_FILEFORMAT_OAUTH_CONFIG_XSD
    user.xsd VQRC_FILEFORMAT_USER_XSD
    xhtml.dtd VQRC_FILEFORMAT_XHTML_DTD
    xml.xsd VQRC_FILEFORMAT_XML_XSD)
foreach(type kxa kxb kxc kxd)
    string(TOUPPER ${type} TYPE)
    list(APPEND schemas ${type}.xsd VQRC_FILEFORMAT_${TYPE}_XSD)
    foreach(version 10_2 10_3 10_4 10_5)
        list(APPEND schemas ${type}_${version}.xsd VQRC_FILEFORMAT_${TYPE}_XSD_${version})
    endforeach()
endforeach()

set(rows)
set(embedded_files)

while(schemas)
    list(POP_FRONT schemas file name)
    set(path "${CMAKE_CURRENT_LIST_DIR}/resources/${file}")
    list(APPEND embedded_files "${path}")
    string(APPEND rows "    <file alias=\"${name}\">${path}</file>\n")
endwhile()

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
file(GENERATE OUTPUT "${collection}" CONTENT "<RCC>\n  <qresource prefix=\"/vancorexml\">\n${rows}  </qresource>\n</RCC>\n")

set(resource_sources "${CMAKE_CURRENT_BINARY_DIR}/vancorexml-resources.cpp")
add_custom_command(OUTPUT "${resource_sources}"
    COMMAND Qt5::rcc --format-version 3 --name vancorexml -o "${resource_sources}" "${collection}"
    DEPENDS "${collection}" ${embedded_files} VERBATIM)
