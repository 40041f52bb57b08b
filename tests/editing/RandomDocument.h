// Random documents for property tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct RandomDocument {
    std::string text;
    // Comments, processing instructions, the document type, and contents that a formatter must not change, in the order
    // of the document. Parts within such a content are not listed.
    std::vector<std::string> kept;
};

enum class RandomDocumentKind {
    Plain,      // elements, attributes and unmixed texts that are not blank, with any white space between
    Full,       // also everything else that XML 1.0 has
    Version11,  // like Full, but of XML 1.1, with its line ends and control characters
};

// Makes a well-formed document in UTF-8. The same seed makes the same document on every machine.
RandomDocument MakeRandomDocument(RandomDocumentKind kind, std::uint32_t seed);
