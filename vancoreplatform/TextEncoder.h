// Encoding of text files: the reverse of DecodeToUtf8.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/FileEncoding.h"

class TextCodec;

// Returns the replacement of a character that an encoding cannot represent, such as "&#8364;", or throws.
using CharacterReplacement = std::function<std::string(char32_t)>;

// Encodes text in the encoding of a file. It writes a character only if the bytes are read as exactly this character at
// every place in a file. It replaces all other characters (see CharacterReplacement), which include:
//   - characters for which a codec writes a similar character or a question mark,
//   - all characters but ASCII in encodings with shift states (ISO-2022, HZ, UTF-7), because the meaning of their
//     bytes depends on the bytes before. So text can be inserted anywhere where the state is ASCII.
//   - U+FFFD in every encoding of a codec, because the reader takes it for an error.
//
// Owns a table of the characters encoded so far, so use one encoder for many texts.
// Threads: one at a time. Errors: VIO::Exception.
class VANCOREPLATFORM_API TextEncoder {
public:
    // Throws if Qt does not know the encoding, or if it does not write "<?xml" in ASCII and is not UTF-16 or UTF-32.
    explicit TextEncoder(const FileEncoding& encoding);
    ~TextEncoder();
    TextEncoder(const TextEncoder&) = delete;
    TextEncoder& operator=(const TextEncoder&) = delete;

    // The bytes of the byte order mark; empty if the encoding has none.
    std::string_view Mark() const noexcept { return m_mark; }

    // Encodes UTF-8 for a place inside a file, without a mark. Throws if the text is not valid UTF-8, if a
    // replacement is not ASCII or cannot be encoded, or if the codec reads the characters differently when they follow
    // one another. Passes on the exceptions of `replace`. Linear.
    std::string Encode(std::string_view utf8, const CharacterReplacement& replace);

    // Returns the bytes of a Unicode scalar value, or nothing if the encoding cannot represent it. The bytes are valid
    // until the next call.
    std::string_view EncodeCharacter(char32_t character);

    // True if all bytes are ASCII and the encoding writes each of them for the ASCII character. Linear.
    bool ReadsAsAscii(std::string_view bytes);

private:
    struct Bytes;
    struct Page;
    enum class Form { Utf8, Utf16, Utf32, Codec };

    void WriteUnit(char32_t unit, std::size_t size);
    Bytes EncodeWithCodec(char32_t character) const;
    void Verify(std::u16string_view text, std::string_view bytes) const;

    const FileEncoding m_encoding;
    Form m_form = Form::Codec;
    bool m_bigEndian = false;
    std::string m_mark;
    std::unique_ptr<const TextCodec> m_codec;
    std::vector<std::unique_ptr<Page>> m_pages;  // of 256 characters each; null until one of them is encoded
    std::array<char, 4> m_buffer{};              // the last character of a Unicode encoding
    std::size_t m_used = 0;
};

// Encodes the UTF-8 text of a whole file, with the byte order mark if the encoding has one. Errors and cost are those
// of TextEncoder::Encode. Also throws VIO::Exception if the result is in another encoding but happens to be valid
// UTF-8, because DecodeToUtf8 would read it as UTF-8. This is rare. Copies a text in UTF-8, so a caller with a large
// one should write it without this function.
VANCOREPLATFORM_API std::string EncodeFromUtf8(
    std::string_view utf8, const FileEncoding& encoding, const CharacterReplacement& replace);

// Returns the byte offset in the file of each offset in the text. `bytes` are those of the file, `utf8` and `encoding`
// come from DecodeToUtf8. The offsets in the text count UTF-8 bytes from 0. They must be at the starts of characters or
// at the end of the text, and must not decrease.
//
// For UTF-8 the function adds the length of the mark and reads neither the text nor the bytes. In every other encoding
// each character is encoded again and compared with the file. Bytes between two of the returned offsets can therefore
// be replaced by the result of TextEncoder::Encode without a change to the other characters. Throws VIO::Exception,
// with `name` as the file, if a character has other bytes than TextEncoder writes: an encoding may have two codes for
// the same character, or shift sequences. Linear.
VANCOREPLATFORM_API std::vector<std::size_t> FindEncodedOffsets(const std::vector<std::size_t>& offsets,
    std::string_view utf8,
    std::string_view bytes,
    const FileEncoding& encoding,
    const VString& name);
