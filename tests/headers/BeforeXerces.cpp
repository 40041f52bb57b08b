// Includes all public headers before those of Xerces-C. An alias gives a class that both libraries have a short name.
#include "all-public-headers.h"

#include "XercesHeaders.h"

using namespace xercesc;
using Element = ::DOMElement;

const DOM* FindDocument(const Element& element)
{
    return element.GetDOMManager();
}

bool IsDocument(const DOMNode& node)
{
    return dynamic_cast<const DOMDocument*>(&node) != nullptr;
}
