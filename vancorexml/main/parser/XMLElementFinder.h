// The elements of a text that are to be changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMPathSteps.h"
#include "vancorexml/main/parser/XMLTokenReader.h"

// An element to be changed. All offsets are in bytes of the text.
struct FoundElement {
    static constexpr std::size_t None = std::string_view::npos;

    std::size_t number = 0;       // of its start tag
    std::size_t parent = None;    // the number of its parent
    std::size_t parentStart = 0;  // the offset of its parent
    std::size_t changes = 0;      // the index of its changes in ElementFindings::changeLists
    std::size_t start = 0;        // of the start tag
    std::size_t tagEnd = 0;       // behind the start tag
    std::size_t endTag = 0;       // of the end tag; equal to tagEnd for an empty tag
    std::size_t end = 0;          // behind the element
    // A node is an element, a comment or a processing instruction directly in the element.
    bool hasNodes = false;
    bool hasElements = false;
    bool isEmptyTag = false;
    std::size_t lastLineNode = None;  // the offset of the last node that is the first of its line
};

// A reference to an entity in the content of the document.
struct EntityReferencePlace {
    std::size_t offset;
    std::size_t elements;  // the number of start tags in front of it
};

struct ElementFindings {
    std::vector<FoundElement> elements;  // in document order
    std::vector<std::vector<std::size_t>> changeLists;
    // For each element of the document, in document order: true if it contains text that is not only white space, or if
    // its xml:space is "preserve". White space must not be added to such an element.
    std::vector<bool> isInline;
    std::vector<EntityReferencePlace> entityReferences;
    std::vector<std::size_t> matches;  // for each path, the number of elements that match it
    std::size_t elementCount = 0;      // of the document
    std::string_view documentType;     // empty if there is none
    bool isVersion11 = false;
};

// Returns the start of the line if there is only white space in front of `offset`. The start of the text starts a line.
// Linear in the white space.
std::optional<std::size_t> FindLineStart(std::string_view text, std::size_t offset) noexcept;

// Finds the elements that match paths or have given numbers, in one pass over the tokens of a text.
//
// Threads: one at a time.
//
// Cost: linear in the text, plus the cost of DOMPathSteps for each path and element.
class XMLElementFinder {
public:
    // The change of `paths[i]` has the number i. Each of `numbers` is a pair of the number of an element and the number
    // of a change; the pairs must be sorted. `preserved` are the names of the elements whose xml:space is "preserve" by
    // default.
    XMLElementFinder(std::string_view text,
        const std::vector<VString>& paths,
        const std::vector<std::pair<std::size_t, std::size_t>>& numbers,
        const std::set<std::u16string>& preserved);
    ~XMLElementFinder();
    XMLElementFinder(const XMLElementFinder&) = delete;
    XMLElementFinder& operator=(const XMLElementFinder&) = delete;

    // Finds the elements and reserves memory for `expected` of them. Call it once.
    ElementFindings Run(std::size_t expected);

private:
    struct Matcher;
    struct OpenElement;

    void StartElement(const XMLToken& token);
    void EndElement(std::size_t endTag, std::size_t end);
    void AddNode(std::size_t offset);
    void ReadText(const XMLToken& token);
    // Returns the changes of the element; empty if there are none.
    const std::vector<std::size_t>& Match(const XMLToken& token);
    std::size_t IndexOf(const std::vector<std::size_t>& changes);
    bool IsPreserved(const XMLToken& token) const;

    std::string_view m_text;
    XMLTokenReader m_reader;
    std::vector<Matcher> m_matchers;
    const std::vector<std::pair<std::size_t, std::size_t>>& m_numbers;
    std::set<std::string> m_preserved;
    std::size_t m_nextNumber = 0;
    std::vector<OpenElement> m_open;
    std::vector<std::size_t> m_changes;  // of the current element
    std::map<std::vector<std::size_t>, std::size_t> m_changeLists;
    ElementFindings m_findings;
};
