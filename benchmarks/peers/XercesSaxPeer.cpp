// The bare Xerces-C pass: its SAX2 reader with an empty handler. It is the lower bound of the library's time.
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>

#include "benchmarks/peers/Peer.h"
#include "benchmarks/peers/XercesSession.h"

namespace {

class EmptyDocument : public PeerDocument {
public:
    explicit EmptyDocument(const std::string& bytes) : m_bytes(&bytes) {}

    // Parses again with a handler that counts, because the timed pass stores nothing.
    Digest GetDigest() const override
    {
        struct Counter : xercesc::DefaultHandler {
            Digest digest;
            void startElement(
                const XMLCh*, const XMLCh*, const XMLCh* name, const xercesc::Attributes& attributes) override
            {
                digest.Element(xercessession::ToUtf8(name), attributes.getLength());
            }
        } counter;
        auto reader = xercessession::MakeReader();
        reader->setContentHandler(&counter);
        xercessession::ParseProgressively(*reader, *m_bytes);
        return counter.digest;
    }

private:
    const std::string* m_bytes;
};

class XercesSaxPeer : public Peer {
public:
    XercesSaxPeer() : m_reader(xercessession::MakeReader())
    {
        m_reader->setContentHandler(&m_handler);
        m_reader->setErrorHandler(&m_handler);
        m_reader->setDeclarationHandler(&m_handler);
    }

    std::string Name() const override { return "xerces-sax"; }
    bool BuildsTree() const override { return false; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        xercessession::ParseProgressively(*m_reader, bytes);
        return std::make_unique<EmptyDocument>(bytes);
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        m_fileBytes = xercessession::ReadFile(path);
        return Parse(m_fileBytes);
    }

private:
    std::unique_ptr<xercesc::SAX2XMLReader> m_reader;
    xercesc::DefaultHandler m_handler;
    std::string m_fileBytes;
};

}  // namespace

std::unique_ptr<Peer> MakeXercesSaxPeer()
{
    return std::make_unique<XercesSaxPeer>();
}
