// The interface through which the driver builds a tree.
#pragma once

#include <optional>
#include <string_view>

#include "vancoreplatform/VScanString.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// A schema that another schema imports or includes.
struct FoundSchema {
    VString path;  // of the file that it was loaded from
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

// Receives the elements and texts of a document in document order. It differs from SAXInterface, the interface for
// callers, in that a builder says where the attributes go: they are written straight into the tree.
//
// An exception from an operation ends the parse, or the loading of the schema.
//
// Ownership: the parser shares its builder with the code that reads the result.
//
// Threads: called on the thread that parses.
class TreeBuilder {
public:
    virtual ~TreeBuilder() = default;

    // An element starts. The builder calls AddTo of its attributes once, during the call. AddTo invalidates `name`.
    virtual void StartElement(const VString& name, const TagAttributes& attributes) = 0;
    // The innermost open element closes.
    virtual void EndElement() = 0;
    // All the text between two tags at once, just before the second. Only for text that WantsText accepts.
    virtual void Characters(VString&& text) = 0;
    // The schema that the schema `baseUri` imports or includes as `systemId`. Without a result the driver leaves that
    // schema out. Both texts are empty when the driver does not know them.
    virtual std::optional<FoundSchema> FindSchema(const VString& /*baseUri*/, const VString& /*systemId*/)
    {
        return std::nullopt;
    }

    // True stops the parse, without error.
    bool IsDone() const noexcept { return m_isDone; }
    // False for text that the builder drops: white space only, unless the builder keeps it. Linear in the leading
    // white space.
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
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    // Makes IsDone true for good.
    void SetDone() noexcept { m_isDone = true; }

private:
    bool m_keepsBlankText;
    bool m_isDone = false;
};
