// Finding an element by its name and an attribute.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace DOMElementSearch {

// The first direct child of that name whose attribute has that value; null when there is
// none. A missing attribute counts as the empty value.
VANCOREXML_API DOMElement* FindChild(DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);
VANCOREXML_API const DOMElement* FindChild(const DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);

// The first element of that name in document order, `start` and its descendants down to
// `depth` levels below it; null when there is none. With an attribute name, only elements
// that have it with that value; with an empty value, only those that have it with any value
// but the empty one: other than FindChild, this does not find elements without it.
// Linear in the elements visited; the stack of the thread is not used up by depth.
VANCOREXML_API DOMElement* FindElement(DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);
VANCOREXML_API const DOMElement* FindElement(const DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);

}  // namespace DOMElementSearch
