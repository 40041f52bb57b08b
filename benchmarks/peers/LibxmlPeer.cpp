// The peer libxml2: its document tree.
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include "benchmarks/peers/Peer.h"

namespace {

constexpr int Options = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOBLANKS;

class Document : public PeerDocument {
public:
    explicit Document(xmlDocPtr document) : m_document(document) {}
    ~Document() override { xmlFreeDoc(m_document); }

    Digest GetDigest() const override
    {
        Digest digest;
        xmlNodePtr root = xmlDocGetRootElement(m_document);
        for (xmlNodePtr at = root; at;) {
            digest.Element(QualifiedName(at), CountAttributes(at));
            xmlNodePtr next = xmlFirstElementChild(at);
            while (!next && at && at != root) {
                next = xmlNextElementSibling(at);
                if (!next)
                    at = at->parent;
            }
            at = next;
        }
        return digest;
    }
    std::string Write() const override
    {
        xmlChar* text = nullptr;
        int length = 0;
        xmlDocDumpFormatMemoryEnc(m_document, &text, &length, "UTF-8", 1);
        std::string result(reinterpret_cast<char*>(text), static_cast<std::size_t>(length));
        xmlFree(text);
        return result;
    }
    std::size_t CountPath(const std::string& path) const override
    {
        xmlXPathContextPtr context = xmlXPathNewContext(m_document);
        context->node = xmlDocGetRootElement(m_document);
        // XPath matches namespaces, not prefixes. Register the namespaces that the root declares; a name without a
        // prefix belongs to the default namespace.
        bool hasDefault = false;
        for (xmlNsPtr at = context->node->nsDef; at; at = at->next) {
            xmlXPathRegisterNs(
                context, at->prefix ? at->prefix : reinterpret_cast<const xmlChar*>("default"), at->href);
            hasDefault = hasDefault || !at->prefix;
        }
        const std::string expression = hasDefault ? WithDefaultPrefix(path) : path;
        xmlXPathObjectPtr result =
            xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context);
        const std::size_t count =
            result && result->nodesetval ? static_cast<std::size_t>(result->nodesetval->nodeNr) : 0;
        xmlXPathFreeObject(result);
        xmlXPathFreeContext(context);
        return count;
    }
    std::unique_ptr<PeerDocument> Copy() const override
    {
        return std::make_unique<Document>(xmlCopyDoc(m_document, 1));
    }

private:
    static std::string WithDefaultPrefix(const std::string& path)
    {
        std::string expression;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if ((i == 0 || path[i - 1] == '/') && path[i] != '/' && path[i] != '*')
                expression += "default:";
            expression += path[i];
        }
        return expression;
    }
    static std::string QualifiedName(xmlNodePtr node)
    {
        const std::string local = reinterpret_cast<const char*>(node->name);
        return node->ns && node->ns->prefix ? reinterpret_cast<const char*>(node->ns->prefix) + (":" + local) : local;
    }
    // Counts namespace declarations too, which libxml2 does not store as attributes.
    static std::size_t CountAttributes(xmlNodePtr node)
    {
        std::size_t count = 0;
        for (xmlAttrPtr at = node->properties; at; at = at->next)
            ++count;
        for (xmlNsPtr at = node->nsDef; at; at = at->next)
            ++count;
        return count;
    }

    xmlDocPtr m_document;
};

class LibxmlPeer : public Peer {
public:
    LibxmlPeer() : m_context(xmlNewParserCtxt()) {}
    ~LibxmlPeer() override { xmlFreeParserCtxt(m_context); }

    std::string Name() const override { return "libxml2"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        return std::make_unique<Document>(
            xmlCtxtReadMemory(m_context, bytes.data(), static_cast<int>(bytes.size()), "memory", nullptr, Options));
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        return std::make_unique<Document>(xmlCtxtReadFile(m_context, path.c_str(), nullptr, Options));
    }

private:
    xmlParserCtxtPtr m_context;
};

}  // namespace

std::unique_ptr<Peer> MakeLibxmlPeer()
{
    return std::make_unique<LibxmlPeer>();
}
