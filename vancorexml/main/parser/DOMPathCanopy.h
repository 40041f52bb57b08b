// Queries over elements that nest inside themselves.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// These functions search elements that nest inside elements of the same name, such as folders in
// folders. `canopyPath` is a path (see DOMPath.h). Each element that it matches is a canopy: the start
// of one search. Use a path that matches the outermost elements only. If the path also matches nested
// ones, as "//folder" does, each of them is searched too, and an element inside several canopies is
// found several times.
//
// WithinCanopy ignores elements more than 1,024 levels below their canopy. UnderneathCanopy ignores
// them as matches of the first segment of `subPath`, but the remaining segments may match at any depth.
// Every text is permitted as a path or a name; none raises an exception. The results contain no null
// pointers. Linear in the visited elements.
//
//     DOMPathCanopy::WithinCanopy(root, "library/shelf", "folder");  // folders on shelves, and folders in them
//     DOMPathCanopy::UnderneathCanopy(root, "library/folder", "book/title");
namespace DOMPathCanopy {

// Returns the children named `name` of each canopy, their children of that name, and so on, parents
// before children. "*" is not a wildcard here and finds nothing.
VANCOREXML_API std::vector<::DOMElement*> WithinCanopy(
    ::DOMElement& element, const VString& canopyPath, const VString& name);
VANCOREXML_API std::vector<const ::DOMElement*> WithinCanopy(
    const ::DOMElement& element, const VString& canopyPath, const VString& name);

// Returns the matches of `subPath` at the children of each canopy. The first segment of `subPath` is
// compared with the child itself. A child with the name of the canopy is a nested canopy: no first
// segment matches it, not even "*", and its children are searched in the same way. An empty `subPath`
// and one that begins with a slash find nothing.
VANCOREXML_API std::vector<::DOMElement*> UnderneathCanopy(
    ::DOMElement& element, const VString& canopyPath, const VString& subPath);
VANCOREXML_API std::vector<const ::DOMElement*> UnderneathCanopy(
    const ::DOMElement& element, const VString& canopyPath, const VString& subPath);

}  // namespace DOMPathCanopy
