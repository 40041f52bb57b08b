// Finding an element by its name and an attribute.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace DOMElementSearch {

// Returns the first child named `name` whose attribute `attrName` has the value `attrValue`, or
// null. A missing attribute counts as an empty value.
VANCOREXML_API ::DOMElement* FindChild(
    ::DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);
VANCOREXML_API const ::DOMElement* FindChild(
    const ::DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue);

// Returns the first element named `name` in document order, or null. Searches `start` and `depth`
// levels below it. If `attrName` is not empty, the attribute must have the value `attrValue`, or any
// non-empty value if `attrValue` is empty. (FindChild differs: for an empty value it also finds
// elements without the attribute.) Linear in the visited elements. Does not recurse.
VANCOREXML_API ::DOMElement* FindElement(
    ::DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);
VANCOREXML_API const ::DOMElement* FindElement(
    const ::DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue);

}  // namespace DOMElementSearch
