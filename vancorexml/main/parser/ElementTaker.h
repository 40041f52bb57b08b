// Handing elements to a builder without a copy.
#pragma once

#include <string_view>

#include "vancoreplatform/VScanString.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// A faster interface that the library's own builders implement beside SAXInterface. The handler
// calls TakeElement and TakeText instead of StartElement and Characters, so attributes and text
// are written straight into the tree. IsDone is never called.
class ElementTaker {
public:
    // False for text that the builder would drop: white space only, unless the builder keeps it.
    // The handler must not pass such text to TakeText. Linear in the leading white space.
    bool WantsText(std::u16string_view text) const noexcept
    {
        VScanString scan(text);
        scan.skipWhitespace();
        return m_keepsBlankText || !scan.IsAtEnd();
    }
    // Starts an element and returns its empty attributes, which the handler fills at once. If
    // that fails, the element keeps the attributes added so far.
    virtual AttributeMap& TakeElement(const VString& name) = 0;
    virtual void TakeText(VString&& text) = 0;

protected:
    explicit ElementTaker(bool keepsBlankText) noexcept : m_keepsBlankText(keepsBlankText) {}
    ~ElementTaker() = default;

private:
    bool m_keepsBlankText;
};
