// Helpers of the fuzzers: the check of a property, the input in parts, and checks of trees and diagnostics.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

// Each fuzzer defines this function. It runs one input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Aborts if the property does not hold. The fuzzing engine reports an abort as a finding.
inline void Require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken property: %s\n", property);
    std::abort();
}

// Separates the parts of an input. No XML document may contain a form feed.
constexpr char PartSeparator = '\f';

// An input that consists of parts, so that a document can be a whole input.
class InputParts {
public:
    InputParts(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    bool IsAtEnd() const noexcept { return m_rest.empty(); }
    // Returns the next part; empty at the end.
    std::string Next()
    {
        const std::string_view part = m_rest.substr(0, m_rest.find(PartSeparator));
        m_rest.remove_prefix(std::min(part.size() + 1, m_rest.size()));
        return std::string(part);
    }

private:
    std::string_view m_rest;
};

// An input that is a sequence of choices.
class InputChoices {
public:
    InputChoices(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool IsAtEnd() const noexcept { return m_next == m_end; }
    // Returns a number below `bound`, which is at most 256. Returns 0 at the end.
    std::size_t Below(std::size_t bound) { return IsAtEnd() ? 0 : *m_next++ % bound; }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

inline bool IsBefore(const SourcePosition& a, const SourcePosition& b)
{
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
}

// Requires that all elements link to their parents and to the document.
inline void RequireLinks(const DOM& document)
{
    const DOMElement& root = document.GetRoot();
    Require(root.IsRootNode(), "the topmost element has no parent");
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(root)) {
        Require(element.GetDOMManager() == &document, "each element links to its document");
        for (const DOMElement* child : element.GetChildren())
            Require(child->GetParent() == &element, "each element links to its parent");
    }
}

// Requires that the positions of the elements increase in the order of their tags. An element that the parse did not
// finish has no end.
inline void RequirePositionsInOrder(const DOM& document)
{
    struct Position {
        int line;
        int column;
        auto operator<=>(const Position&) const = default;
    };
    const auto start = [](const DOMElement& e) { return Position{e.GetStartLine(), e.GetStartColumn()}; };
    const auto end = [](const DOMElement& e) { return Position{e.GetEndLine(), e.GetEndColumn()}; };
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(document.GetRoot())) {
        Position last = start(element);
        const bool isDocument = element.IsRootNode();
        Require(isDocument || last.line > 0, "each element has a start");
        for (const DOMElement* child : element.GetChildren()) {
            Require(start(*child) >= last, "an element begins behind the tag before it");
            last = std::max(start(*child), end(*child));
        }
        Require(isDocument || element.GetEndLine() == 0 || end(element) >= last, "an element ends behind its content");
    }
}

// The lengths of the lines of a document in UTF-16 code units.
class LineLengths {
public:
    explicit LineLengths(std::u16string_view text)
    {
        std::size_t begin = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != u'\n' && (text[i] != u'\r' || text.substr(i + 1, 1) == u"\n"))
                continue;
            m_lengths.push_back(i - begin);
            begin = i + 1;
        }
        m_lengths.push_back(text.size() - begin);
    }

    bool Contains(const SourcePosition& position) const
    {
        return position.line == 0 ||
            (position.line <= m_lengths.size() && position.column > 0 &&
                position.column <= m_lengths[position.line - 1] + 1);
    }

private:
    std::vector<std::size_t> m_lengths;
};

// Requires that the positions of the diagnostics lie in the document.
inline void RequirePositionsIn(const LineLengths& lines, const std::vector<ParseDiagnostic>& diagnostics)
{
    for (const ParseDiagnostic& diagnostic : diagnostics) {
        Require(lines.Contains(diagnostic.start), "the start lies in the document");
        Require(lines.Contains(diagnostic.end), "the end lies in the document");
        Require(
            !diagnostic.related || lines.Contains(diagnostic.related->start), "the other place lies in the document");
    }
}
