// Formats documents and keeps all of their content.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"

// Formats the text of a document. Unlike a parse into a DOM and XMLDomFormatter::RenderAsXMLString, it keeps comments,
// processing instructions, the document type, references to entities, CDATA sections and mixed content. A document
// without these gets the text that RenderAsXMLString returns, with the line ends of the document. The formatter also
// keeps some content that RenderAsXMLString loses: "standalone", elements that contain only white space, carriage
// returns in long texts that contain "<", and texts such as " :x = y >", which a parse into a DOM changes. A document
// with such content gets another text.
//
// The style: two blanks for each level; attributes sorted by name, between apostrophes. Comments and processing
// instructions between elements have lines of their own.
//
// Bytes that never change:
//   - comments, processing instructions, the document type, CDATA sections, references to entities
//   - the content of an element that contains text beside other content (elements, comments, CDATA sections, and so on)
//   - the content of an element that contains white space, comments or processing instructions, but neither text nor
//     elements
//   - the content of an element whose xml:space is "preserve"
//   - the text of an element in a document of XML 1.1
//
// The result is verified before it is returned, see XMLComparison::AreEqual. Formatting the result again gives the
// same text.
//
// Ownership: owns the diagnostics of the last document.
//
// Threads: one at a time.
//
//     XMLSourceFormatter formatter;
//     if (const std::optional<std::string> formatted = formatter.Format(text, "orders.kxa"))
//         Save(*formatted);
//     else
//         Show(formatter.GetDiagnostics());
class VANCOREXML_API XMLSourceFormatter {
public:
    struct Options {
        // False leaves out the XML declaration and the empty line behind it. Format then
        // throws for a document of XML 1.1, which needs its declaration.
        bool writesHeader = true;
        // True escapes all texts like attribute values. Otherwise a text of at least 32 UTF-16 code units that
        // contains "<" becomes a CDATA section.
        bool isStrict = false;
        // The encoding that the XML declaration names.
        std::string encoding = "utf-8";
        // False if the caller converts the result to an encoding that lacks some characters. References to characters
        // beyond ASCII then stay references.
        bool hasAllCharacters = true;
    };

    XMLSourceFormatter();
    explicit XMLSourceFormatter(Options options);
    ~XMLSourceFormatter();

    // Returns the formatted text, in UTF-8. `text` is UTF-8 without a byte order mark; the encoding that it declares is
    // ignored. Returns no value if the document has errors: see GetDiagnostics, where `id` is their source.
    //
    // Throws std::invalid_argument if the document declares XML 1.1 and Options::writesHeader is false. Throws
    // std::length_error if the indentation would need more than 1 GiB, because the document is too deep. Throws
    // XMLVerificationError if the result has not the same content; this is a fault of the library.
    //
    // Linear in the text, in the result and in the expansion of entities. Reads both the text and the result once with
    // Xerces, and the text up to three more times if it has a document type or errors. Uses the memory of the result,
    // one byte for each element, and the memory of two Xerces parsers, which is small unless a comment, processing
    // instruction, CDATA section or attribute value is long. A text that becomes a CDATA section is copied several
    // times.
    std::optional<std::string> Format(const std::string& text, const VString& id);

    // Returns the errors and warnings of the last document. Valid until the next call of Format.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }

private:
    bool HasErrors(const std::string& text, const VString& id);

    Options m_options;
    std::vector<ParseDiagnostic> m_diagnostics;
};
