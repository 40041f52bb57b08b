// Includes all public headers after `using namespace xercesc`. Names that both libraries have are qualified.
#include "XercesHeaders.h"

using namespace xercesc;

#include "all-public-headers.h"

std::size_t CountChildren(const ::DOMElement& ours, const xercesc::DOMElement& theirs)
{
    return ours.GetChildren().size() + theirs.getChildElementCount();
}

void Write(::XMLFormatter& formatter, const ::DOMElement& element)
{
    formatter.OutputDOMElement(element);
}

void Load(::DOMParser& parser, std::unique_ptr<::InputSource> schema)
{
    parser.AddXSDInputSource(std::move(schema));
}
