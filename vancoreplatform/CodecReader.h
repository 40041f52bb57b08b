// Decoding with Qt's codecs; internal to the module.
#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCodec>

#include <cstddef>

// Decodes bytes piece by piece and detects bytes that are invalid in the encoding.
// Threads: one at a time; different readers may share a codec.
class CodecReader {
public:
    // `codec` must outlive the reader.
    explicit CodecReader(const QTextCodec& codec);

    // Returns false if the piece contains invalid bytes. U+FFFD counts as invalid, because some codecs report
    // invalid bytes only by this character.
    bool Read(const char* bytes, std::size_t length);
    // Returns false if the bytes so far end inside a character. Reads a line feed as a probe: an incomplete
    // character swallows or garbles it.
    bool IsComplete();
    // The text of the last piece.
    const QString& Piece() const noexcept { return m_piece; }

private:
    const QTextCodec& m_codec;
    QTextCodec::ConverterState m_state;
    QString m_piece;
};

// Returns the codec named `name`; null if Qt does not know the name, or if the encoding does not write "<?xml" in
// ASCII.
const QTextCodec* FindAsciiCodec(const QByteArray& name);
