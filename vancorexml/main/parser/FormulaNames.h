// The names of fields in formulas.
#pragma once

#include <cstddef>
#include <vector>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// A field name in a formula. `offset` and `length` are its place in the formula, in UTF-16 code units.
struct FormulaName {
    std::size_t offset = 0;
    std::size_t length = 0;
    FieldName name;
};

// Finds the field names in a formula, in order. A field name is written "[field]" or "[data source].[field]"; a "]"
// inside a part is doubled. These are skipped:
//  - texts between apostrophes or quotes. The delimiter inside a text is doubled, a backslash has no meaning.
//  - comments: from "//" to the end of the line, and from "/*" to "*/".
//  - chains of more than two parts, such as "[a].[b].[c]", and the empty name "[]".
// A text, comment or part without an end extends to the end of the formula.
//
// Threads: any. Linear.
//
//     FindFormulaNames("SUM([Sales]) + '[Sales]'");  // one name, at offset 4
VANCOREXML_API std::vector<FormulaName> FindFormulaNames(const VString& formula);
