// The interfaces between a parser and a caller's handler.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

// Receives the elements and texts of a document in document order. An exception thrown from a callback
// ends the parse and is recorded as an error. The error has the message of the exception if it is an
// XMLParseException or a xercesc::XMLException, "OutOfMemoryException" for a
// xercesc::OutOfMemoryException, and otherwise "Unexpected exception".
//
// Ownership: shared by the parser and the code that reads the result.
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
    // Called for each start tag. Names are those written in the document. The arguments are valid only
    // during the call.
    virtual void StartElement(const VString& name, const AttributeMap& attributes) = 0;
    // Called when the innermost open element ends.
    virtual void EndElement() = 0;
    // Called once for the whole text between two tags, including white space, before the call for the
    // second tag.
    virtual void Characters(const VString& text) = 0;
    // Called after each StartElement and EndElement. If it returns true, the parse ends without an error.
    // Returns false unless overridden.
    virtual bool IsDone();
};

// A handler that also finds the schemas that another schema imports or includes.
struct VANCOREXML_API SAXInterfaceExtension : SAXInterface {
    // Called when the schema `baseUri` imports or includes the schema `systemId`; either is empty if the
    // parser does not know it. Sets `pathOut` to the path of the schema file, or leaves it empty to omit
    // the schema.
    virtual void ResolveSchemaPath(VString& pathOut, const VString& baseUri, const VString& systemId) = 0;
    // Returns the schema text to use. `text` is the content of the file `path`.
    virtual VString PreprocessSchemaText(const VString& systemId, const VString& text, const VString& path) = 0;
};

// The position of a parser in its input.
class VANCOREXML_API SAXFileLocation {
public:
    virtual ~SAXFileLocation();
    // Sets the arguments to the current position. Lines and columns count from 1, columns in UTF-16 code
    // units of the text that is parsed. Leaves both arguments unchanged if the position is unknown.
    virtual void GetCurrentLocation(int& line, int& column) = 0;
};
