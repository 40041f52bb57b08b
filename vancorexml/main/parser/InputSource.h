// The interface of sources that supply the bytes of a document.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

class XercesInputSource;

// Determines whether the bytes are rewritten before the parser reads them.
enum ColonProcessingMode {
    ColonProcessingNone = 0,      // no change, for schemas
    ColonProcessingSanitize = 1,  // rewrites attribute names that begin with a colon, for documents
};

// The bytes of one document or schema, with an id that names it in messages. The id of a file is its
// name. For text in memory the caller chooses the id, which may be empty.
//
// Ownership: the caller owns a source that it parses. A DOMParser or a StandaloneDOMParser refers to the
// source only during the parse, and owns the schema sources that are added to it. An AbstractXMLParser
// refers to the source until it is destroyed or Reload replaces the source.
//
// Threads: one at a time.
class VANCOREXML_API InputSource {
public:
    virtual ~InputSource();

    // Reads the next line, including its line feed; the last line may have none. Returns false at the
    // end, without changing `line`. Linear in the line.
    virtual bool GetNextLine(std::string& line) = 0;
    // Reads the next `count` bytes, or fewer if the source ends. Returns false at the end, without
    // changing `bytes`.
    virtual bool GetBytes(std::string& bytes, unsigned int count) = 0;
    virtual void ResetToStart() = 0;
    // The size in bytes.
    virtual unsigned long long Size() const = 0;

    const VString& Id() const noexcept { return m_id; }

protected:
    explicit InputSource(const VString& id) : m_id(id) {}
    InputSource(const InputSource&) = default;
    InputSource& operator=(const InputSource&) = default;

private:
    VString m_id;
};

// The interface through which a parser reads an input source. Every source of the library implements it
// in addition to InputSource. The returned view shares the bytes, so it may outlive the source.
class VANCOREXML_API IXercesInputSourceProvider {
public:
    virtual XercesInputSource GetXercesInputSource(ColonProcessingMode mode) = 0;
    virtual ~IXercesInputSourceProvider();
};
