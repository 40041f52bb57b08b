// The start of a document, read as far as needed.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"
#include "vanxml/SourceDocument.h"

class VFile;

// Reads a file, or standard input, in growing pieces. A caller that searches the bytes so far after each piece, and
// finds something at the start, takes the same time for a file of any size. If there is nothing to find, it takes at
// most a sixth more time than for a single search of a file, and a third more for standard input.
//
//     InputPieces pieces(name);
//     while (!found && pieces.ReadMore()) {
//         if (std::optional<SourceDocument> document = pieces.GetDocument())
//             found = Search(*document);
//     }
//
// Threads: one at a time.
class InputPieces {
public:
    // Opens the file `name`; "-" is standard input. Throws VIO::Exception if that fails.
    explicit InputPieces(const VString& name);
    ~InputPieces();
    InputPieces(const InputPieces&) = delete;
    InputPieces& operator=(const InputPieces&) = delete;

    // Returns false if the document is complete. Otherwise reads the next piece. Throws VIO::Exception or ToolError.
    bool ReadMore();
    // True if all bytes were read.
    bool IsComplete() const noexcept { return m_isComplete; }

    // Returns the document that the bytes so far begin. Returns nothing if its encoding depends on bytes that were not
    // read, or if the bytes are not valid in it, unless the document is complete: then it throws like
    // SourceDocument::Read.
    std::optional<SourceDocument> GetDocument() const;

private:
    bool IsEncodingKnown() const;

    const VString m_name;
    std::unique_ptr<VFile> m_file;  // null for standard input
    std::string m_bytes;
    bool m_isComplete = false;
    bool m_isReadAtOnce = false;  // GetDocument reads the file, and m_bytes is empty
};
