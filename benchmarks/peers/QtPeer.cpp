// The peer Qt: its document tree.
#include <QDomDocument>
#include <QFile>

#include "benchmarks/peers/Peer.h"

namespace {

class Document : public PeerDocument {
public:
    explicit Document(QDomDocument document) : m_document(std::move(document)) {}
    // The nodes hold references in both directions; clear() breaks the cycles, so that the tree is freed.
    ~Document() override { m_document.clear(); }

    Digest GetDigest() const override
    {
        Digest digest;
        const QDomElement root = m_document.documentElement();
        for (QDomElement at = root; !at.isNull();) {
            digest.Element(at.tagName().toStdString(), static_cast<std::size_t>(at.attributes().size()));
            QDomElement next = at.firstChildElement();
            while (next.isNull() && !at.isNull() && at != root) {
                next = at.nextSiblingElement();
                if (next.isNull())
                    at = at.parentNode().toElement();
            }
            at = next;
        }
        return digest;
    }
    std::string Write() const override { return m_document.toByteArray(2).toStdString(); }

private:
    QDomDocument m_document;
};

class QtPeer : public Peer {
public:
    std::string Name() const override { return "qt-dom"; }
    std::unique_ptr<PeerDocument> Parse(const std::string& bytes) override
    {
        QDomDocument document;
        document.setContent(QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size())), false);
        return std::make_unique<Document>(std::move(document));
    }
    std::unique_ptr<PeerDocument> ParseFile(const std::string& path) override
    {
        QDomDocument document;
        QFile file(QString::fromStdString(path));
        document.setContent(&file, false);
        return std::make_unique<Document>(std::move(document));
    }
};

}  // namespace

std::unique_ptr<Peer> MakeQtPeer()
{
    return std::make_unique<QtPeer>();
}
