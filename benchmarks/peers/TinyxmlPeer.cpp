// The peer tinyxml2: its document tree.
#include <tinyxml2.h>

#include "benchmarks/peers/Peer.h"

namespace {

class Document : public PeerDocument {
public:
    tinyxml2::XMLDocument document;

    Digest GetDigest() const override
    {
        Digest digest;
        const tinyxml2::XMLElement* root = document.RootElement();
        for (const tinyxml2::XMLElement* at = root; at;) {
            std::size_t attributes = 0;
            for (const tinyxml2::XMLAttribute* a = at->FirstAttribute(); a; a = a->Next())
                ++attributes;
            digest.Element(at->Name(), attributes);
            const tinyxml2::XMLElement* next = at->FirstChildElement();
            while (!next && at && at != root) {
                next = at->NextSiblingElement();
                if (!next)
                    at = at->Parent()->ToElement();
            }
            at = next;
        }
        return digest;
    }
    std::string Write() const override
    {
        tinyxml2::XMLPrinter printer;
        document.Print(&printer);
        return std::string(printer.CStr(), static_cast<std::size_t>(printer.CStrSize() - 1));
    }
};

class TinyxmlPeer : public Peer {
public:
    std::string Name() const override { return "tinyxml2"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        auto document = std::make_unique<Document>();
        document->document.Parse(bytes.data(), bytes.size());
        return document;
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        auto document = std::make_unique<Document>();
        document->document.LoadFile(path.c_str());
        return document;
    }
};

}  // namespace

std::unique_ptr<Peer> MakeTinyxmlPeer()
{
    return std::make_unique<TinyxmlPeer>();
}
