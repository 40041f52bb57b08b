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
//  2. Bytes that are valid UTF-8 are UTF-8.
//  3. With `useXmlDeclaration`, an XML declaration at the start that names an encoding which Qt knows and which
//     writes "<?xml" in ASCII.
// One exception keeps the name of the declared encoding: bytes that are all ASCII get the encoding of rule 3 instead
// of UTF-8 if each of them means the same character there. So characters that are added to such a document can be
// encoded as its declaration says. The text is the same by both rules.
//
// Throws VIO::Exception if the bytes are invalid in that encoding or no rule applies; the message shows `name` as the
// file and contains the byte offset of the first bad byte. Bytes are never replaced. Throws VIO::Exception if the
// text is not UTF-8 and is longer than VString::MaxLength. A NUL is an ordinary character.
//
// Linear. UTF-8 is moved and not copied; UTF-8 that follows a byte order mark is moved within its buffer.
// Thread-safe.
VANCOREPLATFORM_API DecodedText DecodeToUtf8(std::string&& bytes, const VString& name, bool useXmlDeclaration);

// Like DecodeToUtf8, but returns UTF-16 and limits all texts to VString::MaxLength code units.
VANCOREPLATFORM_API VString DecodeToUtf16(
    const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration);

// Returns the name of the encoding in the XML declaration at the start of the text, without its quotes; nothing if
// there is none. The name may be unknown or wrong. It is a part of `utf8`, so its address is the place to change.
// The rest of the declaration is not checked. Linear in the length of the declaration.
VANCOREPLATFORM_API std::optional<std::string_view> FindDeclaredEncoding(std::string_view utf8) noexcept;
