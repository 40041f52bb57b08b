// Queries over elements that nest inside themselves.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// A canopy is an element whose children may be canopies of the same name. `canopyPath` is a
// path of DOMPath that names the outermost ones; where it names canopies inside others, as
// "//folder" does, each is asked, and what lies in several is found several times. Nesting is
// followed for 1,024 levels under each canopy; what lies deeper is left out. Nothing throws for
// any text; linear in the elements looked at. Null is never among the results.
//
//     DOMPathCanopy::WithinCanopy(root, "library/shelf", "folder");       // folders in folders
//     DOMPathCanopy::UnderneathCanopy(root, "library/folder", "book/title");
namespace DOMPathCanopy {

// The children of each canopy called `name`, their children of that name and so on, each
// before what is nested in it. "*" is refused: it finds nothing.
VANCOREXML_API std::vector<DOMElement*> WithinCanopy(DOMElement& element, const VString& canopyPath, const VString& name);
VANCOREXML_API std::vector<const DOMElement*> WithinCanopy(const DOMElement& element, const VString& canopyPath, const VString& name);

// What `subPath` names from every child, at any level of nested canopies, that its first
// segment matches. A child that has the canopy's name is searched through, not matched, also
// for "*". An empty sub-path and one that begins with a slash find nothing.
VANCOREXML_API std::vector<DOMElement*> UnderneathCanopy(DOMElement& element, const VString& canopyPath, const VString& subPath);
VANCOREXML_API std::vector<const DOMElement*> UnderneathCanopy(const DOMElement& element, const VString& canopyPath, const VString& subPath);

}  // namespace DOMPathCanopy
