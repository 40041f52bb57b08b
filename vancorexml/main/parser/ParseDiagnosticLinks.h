// Connects the diagnostics of a parse with the elements of its document.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "vancorexml/main/parser/DOMDiagnostic.h"

// The diagnostics of the parse that built a document. Each one links to the element that it is about.
//
// Invariants
// 1. Every link leads to a living element of the document.
// 2. m_positions contains exactly the elements with links. For each of them, it holds the positions of their
// diagnostics
//    in m_diagnostics.
//
// Ownership: part of its document. The document reports the elements that die or leave it.
//
// Threads: one writer or many readers. The class has no lock.
class ParseDiagnosticLinks {
public:
    const std::vector<DOMParseDiagnostic>& Get() const noexcept { return m_diagnostics; }
    bool HasLinks() const noexcept { return !m_positions.empty(); }
    bool HasLinkTo(const DOMElement& element) const { return m_positions.count(&element) != 0; }

    // Replaces the diagnostics. ParseDiagnostic::element numbers the elements below `top` from 1 in document order.
    // If an allocation fails, throws std::bad_alloc and changes nothing. Visits each element once, up to the last one
    // with a diagnostic.
    void Set(std::vector<ParseDiagnostic>&& diagnostics, const DOMElement& top);
    // Replaces the diagnostics by those of `other`, whose elements below `otherTop` equal the elements below `top`. A
    // link to an element that is not below `otherTop` becomes null. Otherwise like Set.
    void CopyFrom(const ParseDiagnosticLinks& other, const DOMElement& otherTop, const DOMElement& top);
    // Removes the diagnostics.
    void Clear() noexcept;

    // Makes the links to `element` null. Linear in their number.
    void Forget(const DOMElement& element) noexcept;
    // Makes all links null.
    void ForgetAll() noexcept;

private:
    void Link(std::size_t position, const DOMElement& element);

    std::vector<DOMParseDiagnostic> m_diagnostics;
    std::unordered_map<const DOMElement*, std::vector<std::size_t>> m_positions;
};
