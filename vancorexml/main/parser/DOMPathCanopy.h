// Queries over elements that nest inside themselves.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// A canopy is an element whose children may be canopies of the same name. `canopyPath` is a
// path of DOMPath that names the outermost canopies. If it also names canopies inside others, as
// "//folder" does, each of them is searched, and an element inside several is found several
// times. The search goes 1,024 levels deep under each canopy and ignores deeper elements. No
// operation throws for any text. Cost: linear in the visited elements. No result is null.
//
//     DOMPathCanopy::WithinCanopy(root, "library/shelf", "folder");       // folders in folders
//     DOMPathCanopy::UnderneathCanopy(root, "library/folder", "book/title");
namespace DOMPathCanopy {

// The children of each canopy called `name`, their children of that name and so on, parents
// before children. "*" is not a wildcard here: it finds nothing.
VANCOREXML_API std::vector<DOMElement*> WithinCanopy(
    DOMElement& element, const VString& canopyPath, const VString& name);
VANCOREXML_API std::vector<const DOMElement*> WithinCanopy(
    const DOMElement& element, const VString& canopyPath, const VString& name);

// The matches of `subPath` at every child, at any level of nested canopies. The first segment of
// `subPath` is compared with the child itself. A child with the canopy's name is never compared,
// even with "*"; its children are searched instead. An empty sub-path and one that begins with a
// slash find nothing.
VANCOREXML_API std::vector<DOMElement*> UnderneathCanopy(
    DOMElement& element, const VString& canopyPath, const VString& subPath);
VANCOREXML_API std::vector<const DOMElement*> UnderneathCanopy(
    const DOMElement& element, const VString& canopyPath, const VString& subPath);

}  // namespace DOMPathCanopy
