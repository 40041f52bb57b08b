// Faults of the bytes of a document and of the encoding that it declares.
#pragma once

#include <optional>
#include <string_view>

#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/FileEncoding.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Threads: any number.
namespace EncodingFaults {

// Returns the fatal error of a document whose bytes cannot be decoded: BadBytes, or UnknownEncoding if the document
// declares an encoding that does not exist. Its positions are those in the file. Linear in the text.
VANCOREXML_API ParseDiagnostic Describe(const VIO::BadBytes& badBytes);

// Returns a diagnostic if the document declares another encoding than its own: WrongEncoding, or UnknownEncoding if
// there is no such encoding. `utf8` and `encoding` come from DecodeToUtf8. A wrong name of a document in UTF-8 is a
// warning, because many programs write UTF-8 and declare another encoding. Every other fault is an error, because other
// parsers refuse the document. Linear in the length of the XML declaration.
VANCOREXML_API std::optional<ParseDiagnostic> CheckDeclaration(std::string_view utf8, const FileEncoding& encoding);

// Returns the fault of a source that a parser could not read: that of Describe or CheckDeclaration, as a fatal error.
// Returns nothing if the source has another fault. Its positions are those in the source as given. Linear.
std::optional<ParseDiagnostic> Find(const XercesInputSource& source);

// True if a document ends inside a character. `bytes` are those of a document without another fault, in any encoding
// but UTF-8. Constant time, except for a document in an encoding of several bytes that has such an end: then linear.
bool EndsWithinCharacter(std::string_view bytes);

}  // namespace EncodingFaults
