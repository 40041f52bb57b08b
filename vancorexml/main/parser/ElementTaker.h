// Elements that change hands without a copy.
#pragma once

#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// What the builders of our own trees are besides a SAXInterface: the handler puts attributes
// and text where they are to stay. Such a builder gets them here and not from StartElement and
// Characters.
class ElementTaker {
public:
    // False for text that the builder would drop, which is then not handed to it.
    virtual bool WantsText(std::u16string_view text) const noexcept = 0;
    // The attributes of the new element, none yet, for the handler to fill at once. When that
    // fails the element keeps those that it has by then.
    virtual AttributeMap& TakeElement(const VString& name) = 0;
    virtual void TakeText(VString&& text) = 0;

protected:
    ~ElementTaker() = default;
};
