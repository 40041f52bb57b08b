#include "vancorexml/main/parser/DOMBuilder.h"

#include <memory>
#include <utility>

#include "vancoreplatform/VScanString.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace {

bool IsBlank(const VString& text)
{
    VScanString scan(text);
    scan.skipWhitespace();
    return scan.IsAtEnd();
}

}  // namespace

DOMBuilder::DOMBuilder(DOM& document, bool keepBlankText) : m_stack{&document.GetRoot()}, m_keepBlankText(keepBlankText) {}

DOMBuilder::~DOMBuilder() = default;

void DOMBuilder::StartElement(const VString& name, const AttributeMap& attributes)
{
    auto element = std::make_unique<DOMElement>(name);
    element->SetAttributes(attributes);
    if (m_locationProvider) {
        int line = 0;
        int column = 0;
        m_locationProvider->GetCurrentLocation(line, column);
        element->SetElementStartLocation(line, column);
    }
    m_stack.push_back(&m_stack.back()->AppendChild(std::move(element)));
}

void DOMBuilder::EndElement()
{
    if (m_locationProvider) {
        int line = 0;
        int column = 0;
        m_locationProvider->GetCurrentLocation(line, column);
        m_stack.back()->SetElementEndLocation(line, column);
    }
    m_stack.pop_back();
}

void DOMBuilder::Characters(const VString& text)
{
    if (m_keepBlankText || !IsBlank(text))
        m_stack.back()->AppendText(text);
}
