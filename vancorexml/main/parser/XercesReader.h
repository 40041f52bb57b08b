// The base class of the library's readers of Xerces.
#pragma once

#include <cstddef>
#include <memory>

#include <xercesc/framework/XMLGrammarPool.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>

#include "vancorexml/main/parser/XercesMemory.h"

// Presents another source to a reader. If memory runs out, Xerces loses the stream that it has got from a source. So
// `stream` owns the stream of the other source, and Xerces gets a small one, from the memory of the reader, which
// refers to it.
//
// Ownership: refers to the other source, and to `stream`, which must outlive the reader. Xerces needs the source only
// at the start of a parse.
//
// Threads: one at a time.
class XercesReaderSource final : public xercesc::InputSource {
public:
    XercesReaderSource(const xercesc::InputSource& source,
        std::unique_ptr<xercesc::BinInputStream>& stream,
        xercesc::MemoryManager& memory);

    xercesc::BinInputStream* makeStream() const override;

private:
    const xercesc::InputSource& m_source;
    std::unique_ptr<xercesc::BinInputStream>& m_stream;
};

// The part of a reader that must outlive the rest of it.
class XercesReaderMemory {
protected:
    // `schemas` may be null.
    explicit XercesReaderMemory(xercesc::XMLGrammarPool* schemas);
    ~XercesReaderMemory();

    XercesMemory m_memory;
    // The schemas, and what documents add to them.
    std::unique_ptr<xercesc::XMLGrammarPool> m_grammars;
    std::unique_ptr<xercesc::BinInputStream> m_stream;  // of the source that was read last
};

// A SAX2 reader of Xerces that owns its memory. Xerces loses some memory when it refuses a document. The destructor
// frees all memory that the reader allocated, so nothing stays lost.
//
// The reader validates against `schemas`, but allocates nothing from their memory: the document type declaration and
// the names of namespaces of a document are stored in the reader. So a pool of schemas does not grow with the documents
// that are validated against it.
//
// Ownership: `schemas` must outlive the reader. Nobody may add a schema to the pool during the life of the reader.
//
// Threads: one at a time.
class XercesReader : private XercesReaderMemory, public xercesc::SAX2XMLReaderImpl {
public:
    // `schemas` may be null.
    explicit XercesReader(xercesc::XMLGrammarPool* schemas = nullptr);
    ~XercesReader() override;

    using SAX2XMLReaderImpl::parse;
    void parse(const xercesc::InputSource& source) override;
    using SAX2XMLReaderImpl::parseFirst;
    bool parseFirst(const xercesc::InputSource& source, xercesc::XMLPScanToken& token) override;

    // An override must call this: the document type may declare content models.
    void doctypeDecl(const xercesc::DTDElementDecl& element,
        const XMLCh* publicId,
        const XMLCh* systemId,
        bool hasInternalSubset,
        bool hasExternalSubset) override;

    // Returns the memory of the reader, which must not outlive it.
    XercesMemory& GetMemory() noexcept { return m_memory; }

protected:
    // Returns the schemas, and what documents add to them.
    xercesc::XMLGrammarPool& GetGrammars() const noexcept { return *m_grammars; }
};
