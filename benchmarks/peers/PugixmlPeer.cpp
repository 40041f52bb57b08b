// The peer pugixml: its document tree.
#include <pugixml.hpp>

#include <iterator>

#include "benchmarks/peers/Peer.h"

namespace {

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
};

class Document : public PeerDocument {
public:
    pugi::xml_document document;

    Digest GetDigest() const override
    {
        Digest digest;
        const pugi::xml_node root = document.document_element();
        for (pugi::xml_node at = root; at;) {
            if (at.type() == pugi::node_element) {
                const auto attributes = at.attributes();
                digest.Element(
                    at.name(), static_cast<std::size_t>(std::distance(attributes.begin(), attributes.end())));
            }
            pugi::xml_node next = at.first_child();
            while (!next && at && at != root) {
                next = at.next_sibling();
                if (!next)
                    at = at.parent();
            }
            at = next;
        }
        return digest;
    }
    std::string Write() const override
    {
        StringWriter writer;
        document.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
        return std::move(writer.text);
    }
    bool Save(const std::string& path) const override
    {
        return document.save_file(path.c_str(), "  ", pugi::format_default, pugi::encoding_utf8);
    }
    std::size_t CountPath(const std::string& path) const override
    {
        return document.document_element().select_nodes(path.c_str()).size();
    }
    std::unique_ptr<PeerDocument> Copy() const override
    {
        auto copy = std::make_unique<Document>();
        copy->document.reset(document);
        return copy;
    }
};

class PugixmlPeer : public Peer {
public:
    std::string Name() const override { return "pugixml"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        auto document = std::make_unique<Document>();
        document->document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8);
        return document;
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        auto document = std::make_unique<Document>();
        document->document.load_file(path.c_str(), pugi::parse_default, pugi::encoding_utf8);
        return document;
    }
};

}  // namespace

std::unique_ptr<Peer> MakePugixmlPeer()
{
    return std::make_unique<PugixmlPeer>();
}
