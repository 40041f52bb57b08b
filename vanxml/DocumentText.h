// The text of a document and the encoding of its file.
#pragma once

#include <string>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VString.h"

// The UTF-8 text of a document, decoded from the bytes of its file by the rules of DecodeToUtf8.
//
// Ownership: refers to the bytes, which must outlive it. Copies them only if they are not UTF-8, begin with a byte
// order mark, or have an XML declaration that names another encoding.
//
// Threads: any number of readers.
class DocumentText {
public:
    // Throws VIO::DecodingException, with `name` as the file, if the bytes cannot be decoded. Linear.
    DocumentText(const VString& name, const std::string& bytes);
    DocumentText(const DocumentText&) = delete;
    DocumentText& operator=(const DocumentText&) = delete;

    const std::string& Text() const noexcept { return m_isCopy ? m_decoded.text : m_bytes; }
    const FileEncoding& Encoding() const noexcept { return m_decoded.encoding; }
    // Returns the name of the encoding to write into an XML declaration: "utf-8" for UTF-8. For other encodings,
    // returns the name that the document declares if it is correct, and otherwise the correct name.
    std::string DeclaredEncoding() const;

private:
    const std::string& m_bytes;
    bool m_isCopy;
    DecodedText m_decoded;  // the text is empty unless m_isCopy
};

// True if the encoding has all characters of Unicode.
bool HasAllCharacters(const FileEncoding& encoding) noexcept;

// Returns the bytes of a file with this text and encoding. Throws ToolError if the encoding lacks a character of the
// text. Linear.
std::string EncodeDocument(std::string&& text, const FileEncoding& encoding);

// True if the bytes of a file are read as the text. Linear.
bool IsReadAs(const std::string& bytes, const std::string& text);
