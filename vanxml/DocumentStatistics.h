// Counts what a document contains.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vansys/VHash32.h"
#include "vanxml/SourceDocument.h"

using NameCounts = std::unordered_map<VString, std::uint64_t, VStringHash>;

// The contents of one document or of several.
struct DocumentStatistics {
    std::uint64_t bytes = 0;  // of the documents in UTF-8
    std::uint64_t elements = 0;
    std::uint64_t attributes = 0;
    std::uint64_t depth = 0;  // the largest number of elements inside each other
    std::uint64_t text = 0;   // bytes in UTF-8 of all texts that are not only white space
    NameCounts elementNames;
    NameCounts attributeNames;

    // Adds the numbers of other documents. Linear in their names.
    void Add(const DocumentStatistics& other);
    // Returns the approximate number of bytes that the object owns. Linear in the names.
    std::size_t Size() const;
};

// Counts the contents of the document. Returns the lines that describe its errors; empty if it has none. Throws
// std::bad_alloc. Linear. Needs no tree: beside the document, memory for its names, longest text and largest tag.
std::string CountContents(SourceDocument& source, DocumentStatistics& statistics);

// Returns the names, the most frequent ones first, and names of the same frequency in the order of their UTF-16 code
// units.
std::vector<std::pair<VString, std::uint64_t>> SortByFrequency(const NameCounts& counts);
