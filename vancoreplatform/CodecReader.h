// Decoding with Qt's codecs; internal to the module.
#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCodec>

#include <cstddef>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"

// A codec of Qt, or US-ASCII. Qt has a codec for US-ASCII only if it was built with ICU, and on Windows it is not.
class TextCodec {
public:
    // Returns nothing if the encoding is unknown.
    static std::optional<TextCodec> Find(const QByteArray& name);

    VString Name() const;
    QString ToUnicode(const char* bytes, std::size_t length, QTextCodec::ConverterState& state) const;
    // The bytes of a character that the encoding lacks are those of another one.
    QByteArray FromUnicode(const QString& text) const;

    // True if the codec is that of GB18030 and reads characters above U+FFFF as others. Qt's own one does so, while the
    // one that Qt takes from ICU is right.
    bool MisreadsHighCharacters() const noexcept { return m_misreadsHighCharacters; }

private:
    TextCodec(const QTextCodec& qt, bool isAscii);

    const QTextCodec* m_qt;
    bool m_isAscii;  // m_qt is that of ISO-8859-1
    bool m_misreadsHighCharacters;
};

// Decodes bytes piece by piece and detects bytes that are invalid in the encoding.
// Threads: one at a time.
class CodecReader {
public:
    explicit CodecReader(const TextCodec& codec);

    // Returns false if the piece contains invalid bytes. U+FFFD counts as invalid, because some codecs report
    // invalid bytes only by this character.
    bool Read(const char* bytes, std::size_t length);
    // Returns false if the bytes so far end inside a character. Reads a line feed as a probe: an incomplete
    // character swallows or garbles it.
    bool IsComplete();
    // The text of the last piece.
    const QString& Piece() const noexcept { return m_piece; }

private:
    void ReadGb18030(const char* bytes, std::size_t length);

    TextCodec m_codec;
    std::string m_character;  // the first bytes of a character of GB18030
    QTextCodec::ConverterState m_state;
    QString m_piece;
};

// Returns the codec named `name`; nothing if the name is unknown, or if the encoding does not write "<?xml" in ASCII.
std::optional<TextCodec> FindAsciiCodec(const QByteArray& name);
