// The interface of the compared libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A summary of a tree: the numbers of elements and attributes, and a hash of the element names in document order.
// Before the peers are timed, the tasks compare the digests of their trees.
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

// Returns whether two digests of the document `bytes` agree. Ignores attributes if the document declares attributes,
// because not every peer adds the defaults of a document type declaration.
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
    // Writes the document as UTF-8; empty if the peer cannot write.
    virtual std::string Write() const { return {}; }
    // Writes the document as UTF-16, and converts it to UTF-8 if `utf8` is not null. Returns the number of code units;
    // 0 if the peer has no such operation.
    virtual std::size_t WriteUtf16(std::string*) const { return 0; }
    // Writes the text of Write() into a file. Returns false if the peer has no such operation.
    virtual bool Save(const std::string&) const { return false; }
    // Returns how many elements a path selects; npos if the peer has no paths. The path has the form "//name",
    // "/a/b/c" or "/a/*/c".
    virtual std::size_t CountPath(const std::string&) const { return std::string::npos; }
    // Returns a deep copy, or null if the peer cannot copy.
    virtual std::unique_ptr<PeerDocument> Copy() const { return nullptr; }
    // True if the peer can compare trees. Call Equals only then.
    virtual bool CanCompare() const { return false; }
    virtual bool Equals(const PeerDocument&) const { return false; }
};

// A compared library. It keeps its parser between documents, if the library allows that.
class Peer {
public:
    virtual ~Peer() = default;

    virtual std::string Name() const = 0;
    // False for the bare pass, which builds no tree.
    virtual bool BuildsTree() const { return true; }
    virtual std::unique_ptr<PeerDocument> Parse(const std::string& bytes) = 0;
    virtual std::unique_ptr<PeerDocument> ParseFile(const std::string& path) = 0;
};

// Each function makes the peer of one library. MakeXercesSaxPeer makes the bare Xerces-C pass.
std::unique_ptr<Peer> MakeVancoreXmlPeer();
std::unique_ptr<Peer> MakeXercesSaxPeer();
std::unique_ptr<Peer> MakeXercesDomPeer();
std::unique_ptr<Peer> MakeQtPeer();
std::unique_ptr<Peer> MakeLibxmlPeer();
std::unique_ptr<Peer> MakeTinyxmlPeer();
std::unique_ptr<Peer> MakePugixmlPeer();

// Makes all peers, this library and the bare pass first. If `name` is not empty, makes only the peer of that name.
std::vector<std::unique_ptr<Peer>> MakePeers(const std::string& name);
