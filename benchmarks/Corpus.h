// The documents that the tasks use.
#pragma once

#include <string>
#include <vector>

struct CorpusFile {
    std::string name;
    std::string path;
    std::string bytes;
};

// The three large documents: ssg-debian11-ds.xml, freedesktop.org.xml, vk.xml. If one is missing, ends the program
// with a message, because a table with gaps is useless.
const std::vector<CorpusFile>& LargeDocuments();

// Two thousand small documents of unicode-cldr-core, in the order of their paths.
const std::vector<CorpusFile>& SmallDocuments();

// Generates a document of about `bytes` bytes: records with attributes and texts.
std::string MakeDocument(std::size_t bytes);
