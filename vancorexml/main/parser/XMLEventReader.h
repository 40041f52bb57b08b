// The content of a document as a sequence of events.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "vancorexml/main/parser/InputSource.h"

// A part of the content of a document.
struct XMLEvent {
    enum class Kind : std::uint8_t {
        Declaration,  // the version and "standalone" of the XML declaration
        DocumentType,
        StartElement,
        EndElement,
        Text,
        Comment,
        ProcessingInstruction,
        StartEntity,  // the content of an entity follows
        EndEntity,
        EndOfDocument,
        Fault,  // the document is not well-formed
    };

    Kind kind = Kind::EndOfDocument;
    bool isBlank = false;    // of a text: white space only, and no part of it is a CDATA section
    bool preserves = false;  // of an element: xml:space is "preserve", in the tag or by default
    // All parts of the event. Two events of the same kind have equal texts if and only if they have the same content. A
    // part of more than 65,536 UTF-16 code units is replaced by its SHA-1 digest.
    std::u16string text;
};

// Reads a document through Xerces and does not use XMLTokenReader. So it can check the results of code that uses
// XMLTokenReader. Attributes are sorted by name. Adjacent texts and CDATA sections are one text. Line ends, attribute
// values and references to characters are as a parser reports them. White space outside of the document element is
// not reported.
//
// A document with a document type must be one that the library's parser accepts: this class does not limit the
// expansion of entities.
//
// Ownership: shares the bytes of the source, which need not outlive it.
//
// Threads: one at a time.
//
// Cost: all calls together are linear in the document and in the expansion of its entities. Xerces holds each
// comment, processing instruction, CDATA section and attribute value in memory as a whole, but a text only in pieces.
class XMLEventReader {
public:
    // Throws std::bad_cast if `source` is not an IXercesInputSourceProvider.
    explicit XMLEventReader(InputSource& source);
    ~XMLEventReader();
    XMLEventReader(const XMLEventReader&) = delete;
    XMLEventReader& operator=(const XMLEventReader&) = delete;

    // Returns the next event. After EndOfDocument or Fault, returns the same event again. The reference is valid
    // until the next call.
    const XMLEvent& Next();

    // Returns the names of the elements whose xml:space is "preserve" by a default of the document type. Complete
    // when the first StartElement was returned.
    const std::set<std::u16string>& PreservedElements() const noexcept;

private:
    class Reader;
    struct State;

    std::unique_ptr<State> m_state;
};
