// A document read from its file piece by piece.
#pragma once

#include <string>
#include <vector>

#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// The bytes of a file, read in chunks. The file must be UTF-8: the first read looks at the
// first chunk, and it and every later one throws VantoraException
// (VantoraException_InvalidEncoding) when that is anything else. Reads throw VIO::Exception
// when the file fails.
//
// Ownership: keeps the file open while it lives.
//
// Threads: one at a time.
class VANCOREXML_API FileInputSource : public InputSource, public IXercesInputSourceProvider {
public:
    // Throws VIO::Exception when the file cannot be opened, and logs that.
    explicit FileInputSource(const VString& fileName);
    ~FileInputSource() override;

    // How many bytes a chunk has, from the next one on. Raises a LogicException (code 0x2BE7C041)
    // for 0, with which every file would read as empty.
    unsigned long long GetReadSize() const noexcept { return m_readSize; }
    void SetReadSize(unsigned long long size);

    // Line endings in the line are one line feed each.
    bool GetNextLine(std::string& line) override;
    bool GetBytes(std::string& bytes, unsigned int count) override;
    void ResetToStart() override;
    unsigned long long Size() const override;

    // Reads the rest of the file, from where this source stands, into memory.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

private:
    // False at the end of the file.
    bool ReadChunk();
    bool HasBytes() { return m_position < m_chunk.size() || ReadChunk(); }
    void RequireUtf8();

    VFile m_file;
    unsigned long long m_readSize = 2048;
    std::vector<char> m_chunk;
    unsigned long long m_position = 0;
    bool m_encodingChecked = false;
    bool m_encodingAcceptable = false;
};
