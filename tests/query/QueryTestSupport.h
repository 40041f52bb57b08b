// Helpers of the query tests: trees and matches written as text.
#pragma once

#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace querytest {

// A document that is made from a text with one-letter names. "a(b(c)d)" is an element a with the children b and d, and
// b has the child c. The elements are numbered in document order from 1. The number of an element is also its start
// line.
class Tree {
public:
    explicit Tree(const std::string& text)
    {
        DOMElement* parent = &document.GetRoot();
        for (const char unit : text) {
            if (unit == '(') {
                parent = elements.back();
            } else if (unit == ')') {
                parent = parent->GetParent();
            } else {
                DOMElement& element = parent->AddNewChild(VString::fromUtf8(&unit, 1), nullptr);
                elements.push_back(&element);
                element.SetElementStartLocation(static_cast<int>(elements.size()), 0);
            }
        }
    }

    DOMElement& operator[](std::size_t number) const { return *elements.at(number - 1); }

    DOM document;
    std::vector<DOMElement*> elements;
};

// Returns the name and number of the element, such as "b2".
inline std::string Describe(const DOMElement& element)
{
    return element.GetName().toStdString() + std::to_string(element.GetStartLine());
}

// Returns the descriptions of the elements, separated by blanks.
template <typename Elements>
std::string Describe(const Elements& elements)
{
    std::string text;
    for (const DOMElement* element : elements)
        text += (text.empty() ? "" : " ") + Describe(*element);
    return text;
}

// Returns `text` repeated `count` times.
inline VString Repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return VString::fromStdString(all);
}

// Adds `levels` nested elements of this name below `top` and returns the lowest.
inline DOMElement& AddChain(DOMElement& top, const VString& name, int levels)
{
    DOMElement* low = &top;
    for (int i = 0; i < levels; ++i)
        low = &low->AddNewChild(name, nullptr);
    return *low;
}

}  // namespace querytest
