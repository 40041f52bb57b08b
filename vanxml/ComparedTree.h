// The tree of a document for a comparison.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/SourcePosition.h"
#include "vanxml/ContentTable.h"
#include "vanxml/SourceDocument.h"

// An element or a text of a document.
struct ComparedNode {
    std::uint32_t parent = 0;
    std::uint32_t end = 0;         // the first node behind this one and everything in it
    std::uint32_t name = 0;        // the number of the name of an element; ContentTable::EmptyText for a text
    std::uint32_t value = 0;       // the number of the text
    std::uint32_t attributes = 0;  // the first of the attributes
    std::uint32_t attributeCount = 0;
    std::uint32_t tag = 0;       // the same number for equal names, attributes and texts, without what is inside
    std::uint32_t content = 0;   // the same number for nodes that are equal with everything in them
    std::uint32_t position = 0;  // among the siblings of the same name, from 1; 0 if it is the only one
    std::uint32_t child = 1;     // among all elements and texts of the parent, from 1
    std::uint32_t elements = 0;  // the number of elements up to this node
    std::uint32_t line = 0;      // the end of the start tag or of the tag in front of a text, as it was parsed
    std::uint32_t column = 0;

    bool IsText() const noexcept { return name == ContentTable::EmptyText; }
};

// The elements and texts of a document in document order; the first node is the document element.
//
// Texts of only white space belong to the tree as in XMLComparison: they do not if they stand directly in an element
// that has child elements and no other text, unless that is in an element with both child elements and other text, or
// its xml:space is "preserve". Comments, processing instructions and the document type do not belong to the tree.
//
// Ownership: owns the nodes and the document. Refers to the table, which must outlive it.
//
// Threads: one at a time.
//
// Memory: 52 bytes a node, 8 bytes an attribute, and the different texts once. The call stack does not grow with the
// depth.
class ComparedTree {
public:
    using Attribute = std::pair<std::uint32_t, std::uint32_t>;  // the numbers of name and value
    static constexpr std::uint32_t None = std::numeric_limits<std::uint32_t>::max();

    // Parses the document. Throws std::bad_alloc, and std::length_error for a document with 4,294,967,295 nodes or
    // more.
    ComparedTree(SourceDocument source, ContentTable& table);

    // The lines that describe the errors of the document. If there are any, the tree has no nodes.
    const std::string& Errors() const noexcept { return m_errors; }
    const VString& Name() const noexcept { return m_source.Name(); }

    std::size_t Size() const noexcept { return m_nodes.size(); }
    const ComparedNode& Node(std::uint32_t node) const { return m_nodes[node]; }
    // In the order of the start tag. Default attributes are at the end.
    std::vector<Attribute> AttributesOf(std::uint32_t node) const;
    // Returns the number of the attribute's value, or None. Linear in the number of attributes.
    std::uint32_t FindAttribute(std::uint32_t node, std::uint32_t name) const;
    std::vector<std::uint32_t> ChildrenOf(std::uint32_t node) const;

    // Returns the number of the node's element among all elements of the document, from 1. The element of a text is its
    // parent.
    std::uint32_t ElementNumberOf(std::uint32_t node) const;
    // Returns the number of elements inside the node.
    std::uint32_t CountElementsIn(std::uint32_t node) const;
    // Returns the path of the node, or of one of its attributes, such as /a/b[2]/text() or /a/b[2]/@c. ClipText clips
    // each name. A path of more than 64 steps or 1,000 UTF-16 code units begins with "…" in place of its first steps:
    // the whole paths of a deep document would together be far longer than the document.
    std::string PathOf(std::uint32_t node, std::uint32_t attribute = None) const;
    // Returns the position in the file: directly behind the start tag of an element, or behind the tag in front of a
    // text, with which the text begins unless a comment or a processing instruction stands there. Cost: see
    // SourceMap::Map.
    SourcePosition PlaceOf(std::uint32_t node) const;

private:
    class Builder;

    void DropIgnorableSpace();
    void IdentifyContents();
    void NumberSiblings();

    ContentTable& m_table;
    mutable SourceDocument m_source;  // mapping a position is not const
    std::string m_errors;
    std::vector<ComparedNode> m_nodes;
    std::vector<Attribute> m_attributes;
};
