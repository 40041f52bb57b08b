// A second reading of documents, through Qt. It shares no code with the library.
#pragma once

#include <optional>
#include <string>

struct IndependentReading {
    // All content in one fixed form, without ignorable white space: two documents with the same content have the same
    // form. Entities are replaced. Empty for a document with errors.
    std::string content;
    // True if the document has only elements, attributes and unmixed texts of other characters than white space,
    // and does not declare itself standalone.
    bool isPlain = true;
    std::string error;  // empty if there is none
};

// Reads a UTF-8 document of XML 1.0. The call stack does not grow with the depth of the document.
IndependentReading ReadIndependently(const std::string& text);
