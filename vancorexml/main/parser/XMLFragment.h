// Pieces of XML to insert.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/XMLCharacters.h"

// Thrown for a text that is not a fragment. The message is the reason.
class XMLFragmentError : public std::runtime_error {
public:
    explicit XMLFragmentError(const VString& message) : std::runtime_error(message.toStdString()), m_message(message) {}
    const VString& Message() const noexcept { return m_message; }

private:
    VString m_message;
};

// Elements, comments and processing instructions to insert into a document.
//
// Ownership: owns its tree and texts.
//
// Threads: one at a time.
class XMLFragment {
public:
    // `documentType` is the document type of the document, which declares entities and default attributes; it may be
    // empty. Throws XMLFragmentError if `xml` is not well-formed, contains text outside of its elements, or contains a
    // character that cannot be written.
    XMLFragment(const VString& xml, std::string_view documentType, const XMLCharacters& characters);

    // Returns the number of elements, comments and processing instructions.
    std::size_t NodeCount() const noexcept { return m_nodes.size(); }
    // Appends a node in UTF-8. Its further lines begin with `indentation`, unless that would change a text.
    void AppendNode(std::string& out, std::size_t node, std::string_view lineEnd, std::string_view indentation) const;
    // Returns the parent of the elements.
    const DOMElement& Elements() const noexcept { return *m_tree->GetDocumentRoot(); }

private:
    struct Node {
        std::string text;                      // with line feeds as line ends
        std::vector<std::size_t> lineOffsets;  // of the lines that may be indented, sorted
    };

    void Parse(std::string_view xml, std::string_view documentType, bool isVersion11);
    void ReadNodes(const std::string& xml, const XMLCharacters& characters);

    std::unique_ptr<DOM> m_tree;
    std::vector<Node> m_nodes;
};
