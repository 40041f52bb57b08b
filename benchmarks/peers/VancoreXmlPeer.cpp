// The peer vancorexml: this library.
#include <memory>

#include "benchmarks/peers/Peer.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

class Document : public PeerDocument {
public:
    explicit Document(std::unique_ptr<DOM> dom) : m_dom(std::move(dom)) {}

    Digest GetDigest() const override
    {
        Digest digest;
        const DOMElement* root = m_dom->GetDocumentRoot();
        if (!root)
            return digest;
        for (const DOMElement& element : DOMElementTraversal::PreorderTraversalTemplate<DOMElement const>(*root))
            digest.Element(element.GetName().toStdString(), element.GetAttributes().size());
        return digest;
    }
    std::string Write() const override { return XMLDomFormatter::RenderAsXMLBytes(*m_dom, nullptr, true); }
    std::size_t WriteUtf16(std::string* utf8) const override
    {
        const VString text = XMLDomFormatter::RenderAsXMLString(*m_dom, nullptr, true);
        if (utf8 != nullptr)
            *utf8 = text.toStdString();
        return text.View().size();
    }
    bool Save(const std::string& path) const override
    {
        XMLDomFormatter::SaveAsXMLFile(*m_dom, VPath(VString::fromStdString(path)), nullptr, true);
        return true;
    }
    std::size_t CountPath(const std::string& path) const override
    {
        const VString text = VString::fromStdString(path);
        const DOMElement& root = *m_dom->GetDocumentRoot();
        std::size_t count = 0;
        for (auto it = DOMPath::Walk(root, text).begin(), end = DOMPath::Walk(root, text).end(); it != end; ++it)
            ++count;
        return count;
    }
    std::unique_ptr<PeerDocument> Copy() const override
    {
        auto copy = std::make_unique<DOM>();
        copy->DeepCopy(*m_dom);
        return std::make_unique<Document>(std::move(copy));
    }
    bool CanCompare() const override { return true; }
    bool Equals(const PeerDocument& other) const override
    {
        return *m_dom == *static_cast<const Document&>(other).m_dom;
    }

private:
    std::unique_ptr<DOM> m_dom;
};

class VancoreXmlPeer : public Peer {
public:
    std::string Name() const override { return "vancorexml"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        return std::make_unique<Document>(m_parser.ParseXmlString(bytes, VString("memory")));
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        return std::make_unique<Document>(m_parser.ParseXmlFile(VString::fromStdString(path)));
    }

private:
    DOMParser m_parser;
};

}  // namespace

std::unique_ptr<Peer> MakeVancoreXmlPeer()
{
    return std::make_unique<VancoreXmlPeer>();
}
