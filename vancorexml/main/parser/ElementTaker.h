// Elements that change hands without a copy.
#pragma once

#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// What the builders of our own trees are besides a SAXInterface: the attributes and
// the text that the handler gathers become the element's own. Such a builder gets them here
// and not from StartElement and Characters.
class ElementTaker {
public:
    // False for text that the builder would drop, which is then not handed to it.
    virtual bool WantsText(std::u16string_view text) const noexcept = 0;
    virtual void TakeElement(const VString& name, AttributeMap&& attributes) = 0;
    virtual void TakeText(VString&& text) = 0;

protected:
    ~ElementTaker() = default;
};
