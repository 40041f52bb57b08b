// Choosing the input source of a file.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace InputSourceUtils {

// A source for the file, whose name becomes its id. Files under 1 GiB are read here and
// decoded; larger ones are read when they are parsed, must be UTF-8, and keep their leading
// white space. Throws VIO::Exception when the file cannot be read or decoded.
VANCOREXML_API std::unique_ptr<InputSource> InputSourceFromFileName(
    const VString& fileName, bool skipLeadingWhitespace);

}  // namespace InputSourceUtils
