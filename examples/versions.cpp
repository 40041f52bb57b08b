#include <iostream>
#include <map>
#include <memory>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

VString MapSource(const std::string& version)
{
    return VString::fromStdString("<map-source name='City' version='" + version +
        "'>\n"
        "  <server url='https://tiles.example.com/{z}/{x}/{y}'/>\n"
        "  <layer name='base' opacity='0.85'/>\n"
        "</map-source>\n");
}

}  // namespace

int main()
{
    // One parser for each schema. It loads and compiles its schema for the first document only.
    std::map<VString, DOMParser> parsers;
    for (const char* version : {"18.1", "10.5", "18.1", "9.9"}) {
        StringInputSource source(MapSource(version), "city.kxd", false);
        auto schema = XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXD, source, VString());
        if (!schema) {
            std::cout << version << ": no schema\n";
            continue;
        }
        const auto [found, isNew] = parsers.try_emplace(schema->Id());
        DOMParser& parser = found->second;
        if (isNew)
            parser.AddXSDInputSource(std::move(schema));
        const auto document = parser.ParseXmlInputSource(source, false);
        std::cout << version << ": " << (document->HasErrors() ? "has errors" : "valid") << "\n";
        for (const ParseDiagnostic& fault : parser.GetDiagnostics())
            std::cout << "  " << fault.start.line << ":" << fault.start.column << ": " << fault.message << "\n";
    }
    std::cout << parsers.size() << " schemas were loaded\n";
}
