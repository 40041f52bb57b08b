// The interface through which the parser builds a tree.
#pragma once

#include <optional>
#include <string_view>

#include "vancoreplatform/VScanString.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// A schema that another schema imports or includes.
struct FoundSchema {
    VString path;  // of the schema file
    VString text;
};

// The attributes of a start tag, not yet in a map.
class TagAttributes {
public:
    // Adds the attributes to `map`, which must be empty. If that fails, the map keeps those added so far. Linear.
    virtual void AddTo(AttributeMap& map) const = 0;

protected:
    ~TagAttributes() = default;
};

// Receives the elements and texts of a document in document order. Unlike SAXInterface, the interface for
// callers, it lets the builder choose the map that receives the attributes. So they are written straight
// into the tree.
//
// An exception from an operation ends the parse, or the loading of the schema.
//
// Ownership: shared by the parser and the code that reads the result.
//
// Threads: called on the thread that parses.
class TreeBuilder {
public:
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;
    virtual ~TreeBuilder() = default;

    // Called for each start tag. Must call attributes.AddTo once, which invalidates `name`.
    virtual void StartElement(const VString& name, const TagAttributes& attributes) = 0;
    // Called when the innermost open element ends.
    virtual void EndElement() = 0;
    // Called once for the whole text between two tags, before the call for the second tag. Not called for text
    // that WantsText rejects.
    virtual void Characters(VString&& text) = 0;
    // Called when the schema `baseUri` imports or includes the schema `systemId`; either is empty if the parser
    // does not know it. Returns that schema, or nothing to omit it.
    virtual std::optional<FoundSchema> FindSchema(const VString& /*baseUri*/, const VString& /*systemId*/)
    {
        return std::nullopt;
    }

    // If true, the parser ends the parse without an error.
    bool IsDone() const noexcept { return m_isDone; }
    // Returns false for text that consists of white space only, unless the builder keeps such text. Linear in
    // the leading white space.
    bool WantsText(std::u16string_view text) const noexcept
    {
        if (m_keepsBlankText)
            return true;
        VScanString scan(text);
        scan.skipWhitespace();
        return !scan.IsAtEnd();
    }

protected:
    explicit TreeBuilder(bool keepsBlankText) noexcept : m_keepsBlankText(keepsBlankText) {}

    // Makes IsDone return true from now on.
    void SetDone() noexcept { m_isDone = true; }

private:
    bool m_keepsBlankText;
    bool m_isDone = false;
};
