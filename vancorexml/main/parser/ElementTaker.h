// Elements that change hands without a copy.
#pragma once

#include <string_view>

#include "vancoreplatform/VScanString.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// What the builders of our own trees are besides a SAXInterface: the handler puts attributes
// and text where they are to stay. Such a builder gets them here and not from StartElement and
// Characters, and takes a document to its end: it is not asked whether it is done.
class ElementTaker {
public:
    // False for text that the builder would drop, which is then not handed to it: white space
    // only, unless that is kept. Linear in the white space before the text.
    bool WantsText(std::u16string_view text) const noexcept
    {
        VScanString scan(text);
        scan.skipWhitespace();
        return m_keepsBlankText || !scan.IsAtEnd();
    }
    // The attributes of the new element, none yet, for the handler to fill at once. When that
    // fails the element keeps those that it has by then.
    virtual AttributeMap& TakeElement(const VString& name) = 0;
    virtual void TakeText(VString&& text) = 0;

protected:
    explicit ElementTaker(bool keepsBlankText) noexcept : m_keepsBlankText(keepsBlankText) {}
    ~ElementTaker() = default;

private:
    bool m_keepsBlankText;
};
