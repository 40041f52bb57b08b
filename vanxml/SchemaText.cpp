#include "vanxml/SchemaText.h"

#include <memory>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

// The call stack of the loader in Xerces grows with the depth of the elements.
constexpr int depthLimit = 256;

class SchemaReader : public SAXInterface {
public:
    void StartElement(const VString& name, const AttributeMap&) override
    {
        ++m_depth;
        isTooDeep |= m_depth > depthLimit;
        redefines |= m_depth == 2 && name.mid(name.indexOf(u':') + 1) == "redefine";
    }
    void EndElement() override { --m_depth; }
    void Characters(const VString&) override {}
    bool IsDone() override { return isTooDeep; }

    bool isTooDeep = false;
    bool redefines = false;

private:
    int m_depth = 0;
};

}  // namespace

std::vector<VString> FindSchemaTextErrors(const VString& text, const VString& name)
{
    StringInputSource source(text, name, false);
    const auto reader = std::make_shared<SchemaReader>();
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, reader);
    parser->Parse();
    std::vector<VString> errors = parser->GetErrors();
    if (reader->isTooDeep) {
        errors.push_back(
            VFormatString("The schema \"%1\" nests elements in more than %2 levels").arg(name).arg(depthLimit));
    }
    if (reader->redefines)
        errors.push_back(VFormatString("The schema \"%1\" redefines another, which is not supported").arg(name));
    return errors;
}
