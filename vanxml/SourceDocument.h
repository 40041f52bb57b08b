// A document that the tool was given.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vanxml/SourcePositions.h"

// A file or standard input, read and decoded. Maps the positions that the library reports back to
// positions in the file.
//
// Ownership: owns the text; its source must not outlive it. Movable.
//
// Threads: one at a time.
class SourceDocument {
public:
    // `name` is a file's, or "-" for standard input. Throws VIO::Exception or ToolError when
    // it cannot be read or decoded, std::length_error when it is longer than a string can be.
    static SourceDocument Read(const VString& name);

    const VString& Name() const noexcept { return m_source->Id(); }
    InputSource& Source() noexcept { return *m_source; }

    // The first call reads and sanitizes the text once more, so call it only when there is a
    // position to show.
    const SourcePositions& Positions();

    // The message of the library as a line for standard error, with positions of the file.
    std::string ErrorLine(const VString& message);

private:
    SourceDocument(std::unique_ptr<InputSource> source, std::string skipped);

    std::unique_ptr<InputSource> m_source;
    std::string m_skipped;  // the white space before what the source gives
    std::optional<SourcePositions> m_positions;
};
