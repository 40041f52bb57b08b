// The interface of the compared libraries: the tasks that each of them can do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A summary of a tree: the numbers of elements and attributes, and the names of the elements in
// document order. The trees of one document must have equal digests before they are timed.
struct Digest {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::uint64_t names = 1469598103934665603u;

    void Element(std::string_view name, std::size_t attributeCount)
    {
        ++elements;
        attributes += attributeCount;
        for (const char c : name)
            names = (names ^ static_cast<unsigned char>(c)) * 1099511628211u;
        names = (names ^ 0xFF) * 1099511628211u;
    }
    friend bool operator==(const Digest&, const Digest&) = default;
};

// The same tree of the document `bytes`. Attributes count only where the document declares
// none of its own: not every peer adds the defaults of a document type declaration.
inline bool IsSameTree(const Digest& a, const Digest& b, std::string_view bytes)
{
    return a.elements == b.elements && a.names == b.names &&
        (a.attributes == b.attributes || bytes.find("<!ATTLIST") != std::string_view::npos);
}

// A parsed document of a peer.
class PeerDocument {
public:
    virtual ~PeerDocument() = default;

    virtual Digest GetDigest() const = 0;
    // The document as UTF-8; empty when the peer does not write.
    virtual std::string Write() const { return {}; }
    // How many elements a path selects; npos when the peer has no paths. The path is one of
    // "//name", "/a/b/c" and "/a/*/c".
    virtual std::size_t CountPath(const std::string&) const { return std::string::npos; }
    // A deep copy, and whether two trees are equal, where the peer has them.
    virtual std::unique_ptr<PeerDocument> Copy() const { return nullptr; }
    virtual bool CanCompare() const { return false; }
    virtual bool Equals(const PeerDocument&) const { return false; }
};

// A library. A peer keeps its parser between documents where the library lets it.
class Peer {
public:
    virtual ~Peer() = default;

    virtual std::string Name() const = 0;
    // False for a pass that builds nothing.
    virtual bool BuildsTree() const { return true; }
    virtual std::unique_ptr<PeerDocument> Parse(const std::string& bytes) = 0;
    virtual std::unique_ptr<PeerDocument> ParseFile(const std::string& path) = 0;
};

// This library and the bare pass of the parser beneath it come first.
std::unique_ptr<Peer> MakeVancoreXmlPeer();
std::unique_ptr<Peer> MakeXercesSaxPeer();
std::unique_ptr<Peer> MakeXercesDomPeer();
std::unique_ptr<Peer> MakeQtPeer();
std::unique_ptr<Peer> MakeLibxmlPeer();
std::unique_ptr<Peer> MakeTinyxmlPeer();
std::unique_ptr<Peer> MakePugixmlPeer();

// All, or only the one of that name.
std::vector<std::unique_ptr<Peer>> MakePeers(const std::string& name);
