// A document that the tool reads.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SourceMap.h"

// A file or standard input, read and decoded. Maps the positions of elements back to positions in the file.
//
// Ownership: owns the text and the source. References to them die with this object. Movable.
//
// Threads: one at a time.
class SourceDocument {
public:
    // Reads the file `name`, or standard input if `name` is "-". Throws VIO::Exception or ToolError if the
    // document cannot be read, VIO::DecodingException if it cannot be decoded, and std::length_error if it is longer
    // than a string can be.
    static SourceDocument Read(const VString& name);
    // Decodes the bytes of the file `name`. Throws like Read.
    static SourceDocument Decode(const char* bytes, std::size_t length, const VString& name);

    const VString& Name() const noexcept { return m_source->Id(); }
    InputSource& Source() noexcept { return *m_source; }
    // The position of the source's first byte in the file: the source begins behind white space.
    SourcePosition Start() const noexcept { return m_start; }

    // The error or warning about the encoding that the document declares, if there is one.
    const std::optional<ParseDiagnostic>& EncodingFault() const noexcept { return m_encodingFault; }

    // Returns the position in the file. `scanned` is a position from the last parse of the source. Cost: see
    // SourceMap::Map.
    SourceMap::Position MapPosition(SourceMap::Position scanned);

private:
    static SourceDocument FromText(DecodedText&& decoded, const VString& name);

    // `map` is a member of `source`, which sets it in each call of GetXercesInputSource.
    SourceDocument(std::unique_ptr<InputSource> source, const std::shared_ptr<SourceMap>& map, SourcePosition start);

    std::unique_ptr<InputSource> m_source;
    // Points to a member of m_source: the SourceMap of the last parse. The SourceMap is null if the positions from
    // that parse are already positions in the file.
    const std::shared_ptr<SourceMap>* m_map;
    SourcePosition m_start;
    std::optional<ParseDiagnostic> m_encodingFault;
};
