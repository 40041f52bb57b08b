// An input source that reads a file in chunks.
#pragma once

#include <string>
#include <vector>

#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// The bytes of a file, read in chunks. The file must be UTF-8: the first read checks the first
// chunk. If that chunk is not UTF-8, the first and every later read throw VantoraException
// (VantoraException_InvalidEncoding). Reads throw VIO::Exception if the file cannot be read.
//
// Ownership: keeps the file open while it lives.
//
// Threads: one at a time.
class VANCOREXML_API FileInputSource : public ::InputSource, public IXercesInputSourceProvider {
public:
    // Logs a warning and throws VIO::Exception if the file cannot be opened.
    explicit FileInputSource(const VString& fileName);
    ~FileInputSource() override;

    // The size of a chunk in bytes; a new size applies from the next chunk on. Raises a LogicException
    // (code 0x2BE7C041) for 0, because every file would then read as empty.
    unsigned long long GetReadSize() const noexcept { return m_readSize; }
    void SetReadSize(unsigned long long size);

    // Reads up to the next line feed, or to the end of the file. Then replaces each CR LF and each lone carriage
    // return by one line feed, so the returned line may contain several line feeds.
    bool GetNextLine(std::string& line) override;
    bool GetBytes(std::string& bytes, unsigned int count) override;
    void ResetToStart() override;
    unsigned long long Size() const override;

    // Reads the rest of the file, from the current position, into memory.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

private:
    // Reads the next chunk. Returns false at the end of the file.
    bool ReadChunk();
    bool HasBytes() { return m_position < m_chunk.size() || ReadChunk(); }
    // Throws the VantoraException if the first chunk is not UTF-8.
    void RequireUtf8();

    VFile m_file;
    unsigned long long m_readSize = 2048;
    std::vector<char> m_chunk;
    unsigned long long m_position = 0;
    bool m_encodingChecked = false;
    bool m_encodingAcceptable = false;
};
