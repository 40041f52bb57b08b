// The peer Xerces-C: its own document tree.
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "benchmarks/peers/Peer.h"
#include "benchmarks/peers/XercesSession.h"

namespace {

xercesc::DOMImplementation& Implementation()
{
    static const XMLCh features[] = {'L', 'S', 0};
    return *xercesc::DOMImplementationRegistry::getDOMImplementation(features);
}

class Document : public PeerDocument {
public:
    explicit Document(xercesc::DOMDocument* document) : m_document(document) {}
    ~Document() override { m_document->release(); }

    Digest GetDigest() const override
    {
        Digest digest;
        const xercesc::DOMElement* root = m_document->getDocumentElement();
        for (const xercesc::DOMElement* at = root; at;) {
            digest.Element(xercessession::ToUtf8(at->getTagName()), at->getAttributes()->getLength());
            const xercesc::DOMElement* next = at->getFirstElementChild();
            while (!next && at && at != root) {
                next = at->getNextElementSibling();
                if (!next)
                    at = static_cast<const xercesc::DOMElement*>(at->getParentNode());
            }
            at = next;
        }
        return digest;
    }
    std::string Write() const override
    {
        xercesc::DOMLSSerializer* serializer =
            static_cast<xercesc::DOMImplementationLS&>(Implementation()).createLSSerializer();
        xercesc::DOMLSOutput* output = static_cast<xercesc::DOMImplementationLS&>(Implementation()).createLSOutput();
        static const XMLCh utf8[] = {'U', 'T', 'F', '-', '8', 0};
        output->setEncoding(utf8);
        xercesc::MemBufFormatTarget target;
        output->setByteStream(&target);
        serializer->write(m_document, output);
        std::string text(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
        output->release();
        serializer->release();
        return text;
    }
    std::unique_ptr<PeerDocument> Copy() const override
    {
        return std::make_unique<Document>(static_cast<xercesc::DOMDocument*>(m_document->cloneNode(true)));
    }
    bool CanCompare() const override { return true; }
    bool Equals(const PeerDocument& other) const override
    {
        return m_document->getDocumentElement()->isEqualNode(
            static_cast<const Document&>(other).m_document->getDocumentElement());
    }

private:
    xercesc::DOMDocument* m_document;
};

class XercesDomPeer : public Peer {
public:
    XercesDomPeer()
    {
        xercessession::Initialise();
        m_parser = std::make_unique<xercesc::XercesDOMParser>();
        m_parser->setLoadExternalDTD(false);
        m_parser->setIncludeIgnorableWhitespace(false);
    }

    std::string Name() const override { return "xerces-dom"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        xercesc::MemBufInputSource source(
            reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "memory", false);
        source.setCopyBufToStream(false);
        m_parser->parse(source);
        return std::make_unique<Document>(m_parser->adoptDocument());
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        m_parser->parse(path.c_str());
        return std::make_unique<Document>(m_parser->adoptDocument());
    }

private:
    std::unique_ptr<xercesc::XercesDOMParser> m_parser;
};

}  // namespace

std::unique_ptr<Peer> MakeXercesDomPeer()
{
    return std::make_unique<XercesDomPeer>();
}
