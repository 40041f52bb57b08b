#include "vancorexml/main/parser/XercesReader.h"

#include <cstring>
#include <string_view>
#include <utility>

#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/util/StringPool.hpp>

#include "vancorexml/main/parser/DeclarationBlank.h"

namespace {

// The names of namespaces in some schemas, and the names that documents add. Xerces refers to a name by its number. The
// numbers of the documents' names follow those of the schemas' names.
class ReaderNamespaces final : public xercesc::XMLStringPool {
public:
    ReaderNamespaces(const XMLStringPool& schemas, xercesc::MemoryManager* memory)
        : XMLStringPool(109, memory),
          m_schemas(schemas),
          m_count(schemas.getStringCount())
    {}

    unsigned int addOrFind(const XMLCh* name) override
    {
        const unsigned int number = m_schemas.getId(name);
        return number != 0 ? number : m_count + XMLStringPool::addOrFind(name);
    }

    bool exists(const XMLCh* name) const override { return m_schemas.exists(name) || XMLStringPool::exists(name); }
    bool exists(unsigned int number) const override { return number != 0 && number <= getStringCount(); }

    // Returns 0 for an unknown name.
    unsigned int getId(const XMLCh* name) const override
    {
        if (const unsigned int number = m_schemas.getId(name))
            return number;
        const unsigned int own = XMLStringPool::getId(name);
        return own != 0 ? m_count + own : 0;
    }

    const XMLCh* getValueForId(unsigned int number) const override
    {
        return number <= m_count ? m_schemas.getValueForId(number) : XMLStringPool::getValueForId(number - m_count);
    }

    unsigned int getStringCount() const override { return m_count + XMLStringPool::getStringCount(); }

private:
    const XMLStringPool& m_schemas;
    unsigned int m_count;  // of the names of m_schemas
};

// Finds the grammars of a pool of schemas and accepts no others, so a reader keeps the others itself.
class ReaderGrammars final : public xercesc::XMLGrammarPoolImpl {
public:
    ReaderGrammars(xercesc::XMLGrammarPool& schemas, xercesc::MemoryManager* memory)
        : XMLGrammarPoolImpl(memory),
          m_schemas(schemas),
          m_namespaces(*schemas.getURIStringPool(), memory)
    {}

    bool cacheGrammar(xercesc::Grammar*) override { return false; }
    xercesc::Grammar* retrieveGrammar(xercesc::XMLGrammarDescription* description) override
    {
        return m_schemas.retrieveGrammar(description);
    }
    xercesc::RefHashTableOfEnumerator<xercesc::Grammar> getGrammarEnumerator() const override
    {
        return m_schemas.getGrammarEnumerator();
    }
    xercesc::XMLStringPool* getURIStringPool() override { return &m_namespaces; }

private:
    xercesc::XMLGrammarPool& m_schemas;
    ReaderNamespaces m_namespaces;
};

// Reads from another stream. Adds the blank that Xerces expects in an XML declaration.
class ReaderStream final : public xercesc::BinInputStream {
public:
    explicit ReaderStream(xercesc::BinInputStream& stream) noexcept : m_stream(stream) {}

    XMLFilePos curPos() const override { return m_stream.curPos(); }
    XMLSize_t readBytes(XMLByte* bytes, XMLSize_t most) override
    {
        if (std::exchange(m_isAtStart, false) && most > DeclarationBlank::LongestBlank + DeclarationBlank::StartLength)
            return ReadStart(bytes, most);
        return m_stream.readBytes(bytes, most);
    }
    const XMLCh* getContentType() const override { return m_stream.getContentType(); }
    const XMLCh* getEncoding() const override { return m_stream.getEncoding(); }

private:
    XMLSize_t ReadStart(XMLByte* bytes, XMLSize_t most)
    {
        const XMLSize_t room = most - DeclarationBlank::LongestBlank;
        XMLSize_t count = 0;
        // A read may return fewer bytes than the declaration has.
        while (count < DeclarationBlank::StartLength) {
            const XMLSize_t added = m_stream.readBytes(bytes + count, room - count);
            if (added == 0)
                break;
            count += added;
        }
        const DeclarationBlank missing(std::string_view(reinterpret_cast<const char*>(bytes), count));
        if (!missing.IsMissing())
            return count;
        const XMLSize_t inserted = missing.Blank().size() - missing.ReplacedLength();
        XMLByte* const place = bytes + missing.Offset();
        std::memmove(place + inserted, place, count - missing.Offset());
        std::memcpy(place, missing.Blank().data(), missing.Blank().size());
        return count + inserted;
    }

    xercesc::BinInputStream& m_stream;
    bool m_isAtStart = true;
};

}  // namespace

XercesReaderSource::XercesReaderSource(const xercesc::InputSource& source,
    std::unique_ptr<xercesc::BinInputStream>& stream,
    xercesc::MemoryManager& memory)
    : InputSource(source.getSystemId(), source.getPublicId(), &memory),
      m_source(source),
      m_stream(stream)
{
    if (source.getEncoding())
        setEncoding(source.getEncoding());
    setIssueFatalErrorIfNotFound(source.getIssueFatalErrorIfNotFound());
}

xercesc::BinInputStream* XercesReaderSource::makeStream() const
{
    m_stream.reset(m_source.makeStream());
    return m_stream ? new (getMemoryManager()) ReaderStream(*m_stream) : nullptr;
}

XercesReaderMemory::XercesReaderMemory(xercesc::XMLGrammarPool* schemas)
{
    if (schemas)
        m_grammars = std::make_unique<ReaderGrammars>(*schemas, &m_memory);
    else
        m_grammars = std::make_unique<xercesc::XMLGrammarPoolImpl>(&m_memory);
}

XercesReaderMemory::~XercesReaderMemory() = default;

XercesReader::XercesReader(xercesc::XMLGrammarPool* schemas)
    : XercesReaderMemory(schemas),
      SAX2XMLReaderImpl(&m_memory, m_grammars.get())
{}

XercesReader::~XercesReader()
{
    m_memory.BeginDestruction();
}

void XercesReader::parse(const xercesc::InputSource& source)
{
    SAX2XMLReaderImpl::parse(XercesReaderSource(source, m_stream, m_memory));
}

bool XercesReader::parseFirst(const xercesc::InputSource& source, xercesc::XMLPScanToken& token)
{
    return SAX2XMLReaderImpl::parseFirst(XercesReaderSource(source, m_stream, m_memory), token);
}

void XercesReader::doctypeDecl(const xercesc::DTDElementDecl& element,
    const XMLCh* publicId,
    const XMLCh* systemId,
    bool hasInternalSubset,
    bool hasExternalSubset)
{
    m_memory.KeepReserve();
    SAX2XMLReaderImpl::doctypeDecl(element, publicId, systemId, hasInternalSubset, hasExternalSubset);
}
