// The byte edits for changes of elements.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLCharacters.h"
#include "vancorexml/main/parser/XMLElementFinder.h"
#include "vancorexml/main/parser/XMLFragment.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vancorexml/main/parser/XMLTokenReader.h"

// All changes of one element, combined.
struct CombinedChange {
    // An attribute that is set to a value, or removed.
    struct Attribute {
        std::string name;
        std::optional<VString> value;
    };

    std::vector<Attribute> attributes;
    std::optional<VString> text;
    std::optional<std::string> name;
    bool isDeleted = false;
    std::vector<const XMLFragment*> before;
    std::vector<const XMLFragment*> prepended;
    std::vector<const XMLFragment*> appended;
    std::vector<const XMLFragment*> after;
    std::vector<VString> contradictions;  // messages
};

// An error in the changes of an element.
struct ElementError {
    std::size_t offset;  // of the element
    VString message;
};

// Writes the changes of the elements that were found in a text as edits of its bytes.
//
// Ownership: refers to all arguments.
//
// Threads: one at a time.
//
// Cost: linear in the elements that were found, their tags and texts, the white space around them, and the result.
class XMLEditWriter {
public:
    // `changes[i]` combines the changes that findings.changeLists[i] lists.
    XMLEditWriter(std::string_view text,
        const ElementFindings& findings,
        const std::vector<CombinedChange>& changes,
        const XMLCharacters& characters);
    ~XMLEditWriter();

    // Returns the edits, sorted by offset.
    std::vector<TextEdit> Run();
    // Returns the errors of the elements, in document order.
    const std::vector<ElementError>& Errors() const noexcept { return m_errors; }

private:
    using Fragments = std::vector<const XMLFragment*>;

    // Reports the errors in the changes of the element. Returns false if there are any.
    bool IsAllowed(const FoundElement& element, const CombinedChange& change);
    void Start(const FoundElement& element, const CombinedChange& change);
    void End(const FoundElement& element, const CombinedChange& change);

    void Delete(const FoundElement& element, const CombinedChange& change);
    void ChangeAttributes(const FoundElement& element, const CombinedChange& change);
    void ChangeText(const FoundElement& element, const VString& value);
    std::string WriteText(const VString& value, XMLToken::Kind kind) const;
    void FillEmptyTag(const FoundElement& element, const CombinedChange& change);
    void FillBlank(const FoundElement& element, const CombinedChange& change);
    void Prepend(const FoundElement& element, const Fragments& fragments);
    void Append(const FoundElement& element, const Fragments& fragments);

    // True if white space must not be added to the content of the element.
    bool IsInline(const FoundElement& element, const CombinedChange& change) const;
    // True if the element is the first of its line, and white space may be added beside it.
    bool HasOwnLine(const FoundElement& element) const;
    // Returns the white space between the start of the line and `offset`; empty if there is something else in between.
    std::string_view IndentationAt(std::size_t offset) const;
    // Returns the indentation for the content of an element that has no nodes yet.
    std::string ChildIndentation(const FoundElement& element) const;
    // Returns the first line end of the text, or a line feed if it has none. For places without a line end beside them.
    std::string_view DefaultLineEnd() const { return m_firstLineEnd.empty() ? "\n" : m_firstLineEnd; }
    // Returns the line end in front of the line that starts at `lineStart`. For the first line of the text, returns the
    // first line end.
    std::string_view LineEndBefore(std::size_t lineStart) const;
    // Returns the end of the line if it has only white space and comments from `offset` on: comments belong to the
    // node in front of them.
    std::optional<std::size_t> SkipRestOfLine(std::size_t offset) const;

    // Returns all nodes, each between `prefix` and `suffix`.
    static std::string Write(const Fragments& fragments,
        std::string_view prefix,
        std::string_view suffix,
        std::string_view lineEnd,
        std::string_view indentation);
    // Returns all nodes, without white space between them.
    std::string WriteInline(const Fragments& fragments) const;
    void Add(std::size_t offset, std::size_t length, std::string&& replacement);

    std::string_view m_text;
    const ElementFindings& m_findings;
    const std::vector<CombinedChange>& m_changes;
    const XMLCharacters& m_characters;
    std::string_view m_firstLineEnd;  // of the text; empty if it has only one line
    // The last deletion of elements that begin a line.
    struct {
        std::size_t start = 0;
        std::size_t lineStart = 0;
        std::size_t end = 0;  // behind the white space that follows
    } m_deletion;
    std::vector<TextEdit> m_edits;
    std::vector<ElementError> m_errors;
};
