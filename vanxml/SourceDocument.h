// A document that the tool reads.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/SourceMap.h"

// A file or standard input, read and decoded. Maps the positions of elements back to positions in the file.
//
// Ownership: owns the text and the source. References to them die with this object. Movable.
//
// Threads: one at a time.
class SourceDocument {
public:
    // Reads the file `name`, or standard input if `name` is "-". Throws VIO::Exception or ToolError if the
    // document cannot be read or decoded, and std::length_error if it is longer than a string can be.
    static SourceDocument Read(const VString& name);

    const VString& Name() const noexcept { return m_source->Id(); }
    InputSource& Source() noexcept { return *m_source; }

    // Returns the position in the file. `scanned` is a position from the last parse of the source. Cost: see
    // SourceMap::Map.
    SourceMap::Position MapPosition(SourceMap::Position scanned);

private:
    // `map` is a member of `source`, which sets it in each call of GetXercesInputSource.
    SourceDocument(std::unique_ptr<InputSource> source, const std::shared_ptr<SourceMap>& map);

    std::unique_ptr<InputSource> m_source;
    // Points to a member of m_source: the SourceMap of the last parse. The SourceMap is null if the positions from
    // that parse are already positions in the file.
    const std::shared_ptr<SourceMap>* m_map;
};
