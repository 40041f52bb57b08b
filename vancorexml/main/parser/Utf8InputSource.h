// Input sources in memory.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Bytes in memory. Their byte order mark or XML declaration determines their encoding, and for UTF-16 without both
// their first characters.
//
// Ownership: shares the bytes with every view that a parser gets, without a copy.
//
// Threads: one at a time.
class VANCOREXML_API Utf8InputSource : public ::InputSource, public IXercesInputSourceProvider {
public:
    // If `skipLeadingWhitespace`, the source begins at the first byte that is not white space. In UTF-16, white space
    // is not skipped.
    Utf8InputSource(std::string&& bytes, const VString& id, bool skipLeadingWhitespace);
    Utf8InputSource(const std::string& bytes, const VString& id, bool skipLeadingWhitespace);
    ~Utf8InputSource() override;

    bool GetNextLine(std::string& line) override;
    bool GetBytes(std::string& bytes, unsigned int count) override;
    void ResetToStart() override;
    // Includes skipped white space.
    unsigned long long Size() const override;

    // Returns a view that begins at the start of the source, not at the current position.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

protected:
    // If `isDecoded`, the bytes are UTF-8 and the encoding in their XML declaration is ignored.
    Utf8InputSource(std::shared_ptr<std::string> bytes, const VString& id, bool skipLeadingWhitespace, bool isDecoded);

private:
    std::shared_ptr<std::string> m_bytes;
    unsigned long long m_position = 0;
    unsigned long long m_start = 0;
    bool m_isDecoded;
};

// A decoded text: the encoding in its XML declaration is ignored.
class VANCOREXML_API StringInputSource : public Utf8InputSource {
public:
    StringInputSource(const VString& text, const VString& id, bool skipLeadingWhitespace);
    // Makes a source from the UTF-8 bytes of a decoded text, without a copy.
    static std::unique_ptr<StringInputSource> FromUtf8(
        std::string&& utf8, const VString& id, bool skipLeadingWhitespace);
    ~StringInputSource() override;

private:
    StringInputSource(std::shared_ptr<std::string> utf8, const VString& id, bool skipLeadingWhitespace);
};

// A copy of a byte buffer.
class VANCOREXML_API BinaryInputSource : public Utf8InputSource {
public:
    BinaryInputSource(const std::vector<unsigned char>& bytes, const VString& id, bool skipLeadingWhitespace);
    ~BinaryInputSource() override;
};
