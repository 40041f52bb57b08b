// A plug-in that uses the library. Loading the plug-in also loads the library, and unloading it unloads both.
#include <cstddef>
#include <string>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/van-codegen/gen-strings/vancorexml-strings.h"

#if defined(_WIN32)
#  define PLUGIN_API extern "C" __declspec(dllexport)
#else
#  define PLUGIN_API extern "C" __attribute__((visibility("default")))
#endif

// Writes the message about external entities in `language`: at most `size` bytes, including the terminating NUL.
PLUGIN_API void WriteMessage(const char* language, char* buffer, std::size_t size)
{
    const std::string text = CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, language).toStdString();
    buffer[text.copy(buffer, size - 1)] = '\0';
}

// Parses a document with a wrong value against a schema of the library. Returns true if the parser reports an error.
PLUGIN_API bool ParseAgainstSchema()
{
    DOMParser parser;
    parser.AddXSDResourceId(QtVanResourceId::FileFormatKxcXsd);
    return parser.ParseXmlString("<data-connection pool-size='eight' version='18.1'/>", "connection.kxc")->HasErrors();
}
