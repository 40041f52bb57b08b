// Decoding of text files, and the encoding that was found.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// The encoding of a text file.
struct FileEncoding {
    // "UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE", or the name of one of Qt's codecs such as "ISO-8859-1".
    VString name = "UTF-8";
    // The file begins with a byte order mark.
    bool hasMark = false;

    friend bool operator==(const FileEncoding& a, const FileEncoding& b) noexcept
    {
        return a.hasMark == b.hasMark && a.name == b.name;
    }
};

VANCOREPLATFORM_API bool IsUtf8(const FileEncoding& encoding) noexcept;

// The text of a file in UTF-8, without the byte order mark, and the encoding of the file.
struct DecodedText {
    std::string text;
    FileEncoding encoding;
};

// Decodes the bytes of a text file. The first of these rules that applies determines the encoding:
//  1. A byte order mark (UTF-8, UTF-16 or UTF-32).
//  2. With `useXmlDeclaration`, bytes that begin like a document in UTF-16 (see FindUnmarkedUtf16).
//  3. Bytes that are valid UTF-8 are UTF-8.
//  4. With `useXmlDeclaration`, an XML declaration at the start that names an encoding which Qt knows and which
//     writes "<?xml" in ASCII.
// There is one exception. If all bytes are ASCII, and the encoding of rule 4 reads each of them as its ASCII character,
// the result names the encoding of rule 4 instead of UTF-8. The text is the same in both encodings, but characters that
// a program adds to the document can then be encoded as the declaration says.
//
// Throws VIO::DecodingException if the bytes are invalid in that encoding or no rule applies; the message shows `name`
// as the file and contains the line, the column (in UTF-16 code units) and the byte offset of the first bad byte. Bytes
// are never replaced. Throws VIO::Exception if the bytes are not UTF-8 and their text is longer than VString::MaxLength
// UTF-16 code units. A NUL is an ordinary character.
//
// Linear. For UTF-8, `bytes` itself becomes the text without a copy; a byte order mark is erased from it.
// Thread-safe.
VANCOREPLATFORM_API DecodedText DecodeToUtf8(std::string&& bytes, const VString& name, bool useXmlDeclaration);

// Like DecodeToUtf8, but returns UTF-16 and limits all texts to VString::MaxLength code units.
VANCOREPLATFORM_API VString DecodeToUtf16(
    const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration);

// Returns the name of the encoding in the XML declaration at the start of the text, without its quotes; nothing if
// there is none. The name may be unknown or wrong. The result points into `utf8`, so a caller can replace the name
// there. The rest of the declaration is not checked. Linear in the length of the declaration.
VANCOREPLATFORM_API std::optional<std::string_view> FindDeclaredEncoding(std::string_view utf8) noexcept;

// Returns "UTF-16LE" or "UTF-16BE" if the bytes begin with "<" and an ASCII character in that encoding, or with white
// space and "<" or more white space. Otherwise returns null. A byte order mark is not looked for. Such bytes cannot be
// XML in UTF-8, because they contain NULs.
VANCOREPLATFORM_API const char* FindUnmarkedUtf16(std::string_view bytes) noexcept;

// How the name of the encoding in an XML declaration relates to the encoding of the file.
enum class EncodingDeclaration {
    Right,    // it names the encoding of the file, or there is no name
    Unknown,  // there is no such encoding
    Wrong,    // it names another encoding
};

// `utf8` and `encoding` come from DecodeToUtf8 with an XML declaration. The name of an encoding that has the same ASCII
// characters is right for a text that consists of them. Thread-safe. Linear in the length of the declaration.
VANCOREPLATFORM_API EncodingDeclaration CheckEncodingDeclaration(std::string_view utf8, const FileEncoding& encoding);
