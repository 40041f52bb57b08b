// Creates the input source for a file.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace InputSourceUtils {

// Returns a source for the file. Its id is the file name. Reads and decodes a file of less than 1 GiB
// here. A larger file is only opened here and read when a parse begins; it must be UTF-8 and keeps its
// leading white space. Throws VIO::Exception if the file cannot be opened, or if this function cannot
// read or decode it.
VANCOREXML_API std::unique_ptr<::InputSource> InputSourceFromFileName(
    const VString& fileName, bool skipLeadingWhitespace);

}  // namespace InputSourceUtils
