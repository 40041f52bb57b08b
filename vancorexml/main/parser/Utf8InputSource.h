// Documents in memory.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Bytes in memory. Their byte order mark or XML declaration determines their encoding.
//
// Ownership: owns the bytes and shares them with every view given to the parser, without
// a copy.
//
// Threads: one at a time.
class VANCOREXML_API Utf8InputSource : public InputSource, public IXercesInputSourceProvider {
public:
    // With `skipLeadingWhitespace` the source begins at the first byte that is no white space.
    Utf8InputSource(std::string&& bytes, const VString& id, bool skipLeadingWhitespace);
    Utf8InputSource(const std::string& bytes, const VString& id, bool skipLeadingWhitespace);
    ~Utf8InputSource() override;

    bool GetNextLine(std::string& line) override;
    bool GetBytes(std::string& bytes, unsigned int count) override;
    void ResetToStart() override;
    // Skipped white space counts.
    unsigned long long Size() const override;

    // A view of all bytes, whatever the current position of this source.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

protected:
    // With `isDecoded` the bytes are UTF-8 whatever their XML declaration says.
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
    // For a decoded text that is already UTF-8.
    static std::unique_ptr<StringInputSource> FromUtf8(
        std::string&& utf8, const VString& id, bool skipLeadingWhitespace);
    ~StringInputSource() override;

private:
    StringInputSource(std::shared_ptr<std::string> utf8, const VString& id, bool skipLeadingWhitespace);
};

// Borrows the caller's bytes without a copy. They must stay unchanged and outlive the source and
// every view given to the parser.
class VANCOREXML_API BorrowedInputSource : public Utf8InputSource {
public:
    BorrowedInputSource(const std::string& bytes, const VString& id, bool skipLeadingWhitespace);
    ~BorrowedInputSource() override;
};

// A copy of a byte buffer.
class VANCOREXML_API BinaryInputSource : public Utf8InputSource {
public:
    BinaryInputSource(const std::vector<unsigned char>& bytes, const VString& id, bool skipLeadingWhitespace);
    ~BinaryInputSource() override;
};
