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
    std::uint32_t top = 0;       // the node that begins the last part of a long path; see PathOf
    std::uint32_t depth = 0;     // 0 for the document element
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

    // Throws like SourceDocument::Read, and std::length_error for a document with 4,294,967,295 nodes or more.
    ComparedTree(const VString& name, ContentTable& table);

    // The lines that describe the errors of the document. If there are any, the tree has no nodes.
    const std::string& Errors() const noexcept { return m_errors; }
    const VString& Name() const noexcept { return m_source.Name(); }

    std::size_t Size() const noexcept { return m_nodes.size(); }
    const ComparedNode& Node(std::uint32_t node) const { return m_nodes[node]; }
    // Sorted by the numbers of the names.
    std::vector<Attribute> AttributesOf(std::uint32_t node) const;
    // Returns the number of the attribute's value, or None.
    std::uint32_t FindAttribute(std::uint32_t node, std::uint32_t name) const;
    std::vector<std::uint32_t> ChildrenOf(std::uint32_t node) const;

    // Returns a path such as /a/b[2]/text(). A path of more than 64 steps shows the first 32 and the last 32, because
    // the paths of deep documents would otherwise be longer than the documents. Linear in the result.
    std::string PathOf(std::uint32_t node) const;
    // Returns the position in the file: the end of the start tag, or the start of a text. Cost: see SourceMap::Map.
    SourcePosition PlaceOf(std::uint32_t node) const;

private:
    class Builder;

    void DropIgnorableSpace();
    void IdentifyContents();
    void NumberSiblings();
    std::string StepsOf(std::uint32_t node, std::uint32_t count) const;

    ContentTable& m_table;
    mutable SourceDocument m_source;  // mapping a position is not const
    std::string m_errors;
    std::vector<ComparedNode> m_nodes;
    std::vector<Attribute> m_attributes;
};
