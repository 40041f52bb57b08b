// The start tag of a document's first element.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/SourcePosition.h"

// The name, the attributes and the place of a start tag, read without a parse. All texts are UTF-8.
struct FirstTag {
    struct Attribute {
        std::string name;
        SourcePosition nameStart;
        std::string value;     // as it is written, with references
        SourcePosition start;  // of the value, behind its opening quote
        SourcePosition end;
    };

    // Returns null if the tag has no such attribute.
    const Attribute* Find(std::string_view attribute) const;

    std::string name;  // empty if the document has no complete start tag
    std::vector<Attribute> attributes;
    SourcePosition start;
    SourcePosition end;
};

// Reads the document up to the end of the first tag, and resets it to its start. `documentStart` is the position of the
// source's first byte in the file. Exceptions of the source propagate. Linear in the bytes read.
FirstTag ReadFirstTag(InputSource& document, SourcePosition documentStart);

// Returns the position behind a text in UTF-8 that begins at `start`. Linear.
SourcePosition FindEnd(SourcePosition start, std::string_view text);
