// The interfaces between a parser and a builder.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

// Receives the elements and texts of a document in document order. An exception thrown from
// a callback ends the parse and is recorded as an error: with its own message if it is an
// XMLParseException or a Xerces exception, otherwise as "Unexpected exception".
//
// Ownership: shared between the parser and the code that reads the result.
//
// Threads: called on the thread that parses.
//
//     struct Counter : SAXInterface {
//         void StartElement(const VString&, const AttributeMap&) override { ++count; }
//         void EndElement() override {}
//         void Characters(const VString&) override {}
//         int count = 0;
//     };
struct VANCOREXML_API SAXInterface {
    virtual ~SAXInterface();
    // Names are those written in the document. Both arguments are valid during the call only.
    virtual void StartElement(const VString& name, const AttributeMap& attributes) = 0;
    // The innermost open element closes.
    virtual void EndElement() = 0;
    // All the text between two tags at once, white space included, just before the second.
    virtual void Characters(const VString& text) = 0;
    // Asked after each start and each end of an element: true stops the parse, without error.
    virtual bool IsDone();
};

// A builder that also finds the schemas which a schema imports or includes.
struct VANCOREXML_API SAXInterfaceExtension : SAXInterface {
    // Sets `pathOut` to the file to load; leaving it empty leaves the schema out. Both texts
    // are empty where the parser knows none.
    virtual void ResolveSchemaPath(VString& pathOut, const VString& baseUri, const VString& systemId) = 0;
    // The text to use in place of `text`, which was loaded from `path`.
    virtual VString PreprocessSchemaText(const VString& systemId, const VString& text, const VString& path) = 0;
};

// The position of a parser in its input.
class VANCOREXML_API SAXFileLocation {
public:
    virtual ~SAXFileLocation();
    // Lines and columns count from 1, columns in UTF-16 code units of the text that is
    // parsed. Both are left as they are where the position is not known.
    virtual void GetCurrentLocation(int& line, int& column) = 0;
};
