// The interface of sources that supply the bytes of a document.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

class XercesInputSource;

// The bytes of one document or schema, with an id that names it in messages: the name of a
// file, or for text in memory any text that the caller chooses, which may be empty.
//
// Ownership: held by the caller; a parser only refers to it while it parses.
//
// Threads: one at a time.
class VANCOREXML_API InputSource {
public:
    virtual ~InputSource();

    // The next line with its line feed, which the last line may lack. False at the end, and
    // `line` is left as it is. Linear in the line.
    virtual bool GetNextLine(std::string& line) = 0;
    // The next `count` bytes, fewer at the end. False at the end, and `bytes` is left as it is.
    virtual bool GetBytes(std::string& bytes, unsigned int count) = 0;
    virtual void ResetToStart() = 0;
    // In bytes.
    virtual unsigned long long Size() const = 0;

    const VString& Id() const noexcept { return m_id; }

protected:
    explicit InputSource(const VString& id) : m_id(id) {}
    InputSource(const InputSource&) = default;
    InputSource& operator=(const InputSource&) = default;

private:
    VString m_id;
};

// An input source that the parser can read. The view shares or owns the bytes, so it may
// outlive the source.
class VANCOREXML_API IXercesInputSourceProvider {
public:
    virtual XercesInputSource GetXercesInputSource(ColonProcessingMode mode) = 0;
    virtual ~IXercesInputSourceProvider();
};
