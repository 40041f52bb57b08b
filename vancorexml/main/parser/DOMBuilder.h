// Builds a document from the events of a parse.
#pragma once

#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/ElementPages.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/TreeBuilder.h"

// Adds the elements that a parser reports to a document, below its topmost element.
//
// Ownership: refers to the document and to the location provider. Both must outlive the parse.
//
// Threads: one at a time.
class DOMBuilder final : public TreeBuilder {
public:
    // Drops text that is white space only, unless `keepBlankText`.
    DOMBuilder(DOM& document, bool keepBlankText);
    ~DOMBuilder() override;

    // Makes each element record the provider's position at the start and at the end of the element.
    void SetLocationProvider(SAXFileLocation& provider) noexcept { m_locationProvider = &provider; }

    void StartElement(const VString& name, const TagAttributes& attributes) override;
    void EndElement() override;
    void Characters(VString&& text) override;

private:
    // The root and the open elements below it, the innermost last.
    std::vector<DOMElement*> m_stack;
    ElementPages m_pages{sizeof(DOMElement)};
    SAXFileLocation* m_locationProvider = nullptr;
};
