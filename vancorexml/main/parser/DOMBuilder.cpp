#include "vancorexml/main/parser/DOMBuilder.h"

#include <utility>

#include "vancorexml/main/parser/DOMElement.h"

DOMBuilder::DOMBuilder(DOM& document, bool keepBlankText) : TreeBuilder(keepBlankText), m_stack{&document.GetRoot()} {}

DOMBuilder::~DOMBuilder() = default;

void DOMBuilder::StartElement(const VString& name, const TagAttributes& attributes)
{
    DOMElement& element = m_stack.back()->AddNewChild(name, m_pages);
    m_stack.push_back(&element);
    if (m_locationProvider) {
        int line = 0;
        int column = 0;
        m_locationProvider->GetCurrentLocation(line, column);
        element.SetElementStartLocation(line, column);
    }
    attributes.AddTo(element.GetAttributes());
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
    if (m_stack.size() == 1)
        m_pages.Release();
}

void DOMBuilder::Characters(VString&& text)
{
    DOMElement& element = *m_stack.back();
    if (element.HasText())
        element.AppendText(text);
    else
        element.SetText(std::move(text));
}
