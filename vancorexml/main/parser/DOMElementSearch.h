// Finding an element by its name and an attribute.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace DOMElementSearch {

// The first direct child of that name whose attribute has that value; null when there is
// none. A missing attribute counts as the empty value.
VANCOREXML_API DOMElement* FindChild(
    DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);
VANCOREXML_API const DOMElement* FindChild(
    const DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);

// The first element of that name in document order, among `start` and its descendants down to
// `depth` levels below it; null when there is none. With an attribute name and a value, the
// attribute must have that value. With an attribute name and an empty value, the attribute must
// have a value that is not empty; FindChild differs, because it also finds elements without the
// attribute. Linear in the elements visited. The call stack does not grow with the depth.
VANCOREXML_API DOMElement* FindElement(
    DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);
VANCOREXML_API const DOMElement* FindElement(
    const DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);

}  // namespace DOMElementSearch
