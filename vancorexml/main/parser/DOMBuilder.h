// From the events of a parse to a document.
#pragma once

#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/ElementPages.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/TreeBuilder.h"

// Builds the elements that a parser reports below the root of a document.
//
// Ownership: refers to the document, which must outlive every callback, and to the provider
// of positions.
//
// Threads: one at a time.
class DOMBuilder final : public TreeBuilder {
public:
    // Text that is white space only is dropped unless `keepBlankText`.
    DOMBuilder(DOM& document, bool keepBlankText);
    ~DOMBuilder() override;

    // Elements get the position of the provider at their start and at their end.
    void SetLocationProvider(SAXFileLocation& provider) noexcept { m_locationProvider = &provider; }

    void StartElement(const VString& name, const TagAttributes& attributes) override;
    void EndElement() override;
    void Characters(VString&& text) override;

private:
    // The root and the open elements below it, the innermost last.
    std::vector<DOMElement*> m_stack;
    ElementPages m_pages;
    SAXFileLocation* m_locationProvider = nullptr;
};
