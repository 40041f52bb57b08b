// The real files that every task works on.
#pragma once

#include <string>
#include <vector>

struct CorpusFile {
    std::string name;
    std::string path;
    std::string bytes;
};

// The three large documents: ssg-debian11-ds.xml, freedesktop.org.xml, vk.xml. Ends the
// program with a message when one is missing, because a table with holes is no result.
const std::vector<CorpusFile>& LargeDocuments();

// Two thousand small documents of unicode-cldr-core, in the order of their paths.
const std::vector<CorpusFile>& SmallDocuments();

// A generated document of about that many bytes: records with attributes and texts.
std::string MakeDocument(std::size_t bytes);
