// A document that the tool was given.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/SourceMap.h"

// A file or standard input, read and decoded. Maps the positions of elements back to positions in the file.
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

    // The position in the file of a position that the last parse of the source has reported. Cost: see
    // SourceMap::Map.
    SourceMap::Position MapPosition(SourceMap::Position scanned);

private:
    // `map` is part of `source`, which updates it.
    SourceDocument(std::unique_ptr<InputSource> source, const std::shared_ptr<SourceMap>& map);

    std::unique_ptr<InputSource> m_source;
    // The map of the last view that the source gave to a parser; null when positions stay.
    const std::shared_ptr<SourceMap>* m_map;
};
