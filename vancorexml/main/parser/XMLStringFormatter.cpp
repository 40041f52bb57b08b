#include "vancorexml/main/parser/XMLStringFormatter.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

XMLStringFormatter::XMLStringFormatter(const VString& indentUnit, bool singleLine) : XMLFormatter(indentUnit, singleLine) {}

XMLStringFormatter::~XMLStringFormatter() = default;

void XMLStringFormatter::OutputDOMElement(const DOMElement& element)
{
    if (typeid(*this) == typeid(XMLStringFormatter)) WriteTree(*this, element, *this);
    else XMLFormatter::OutputDOMElement(element);
}

void XMLStringFormatter::OutputString(const VString& text)
{
    if (m_failure) std::rethrow_exception(m_failure);
    try {
        if (text.length() > m_buffer.size() - m_length) MakeRoom(text.length());
        std::copy(text.begin(), text.end(), reinterpret_cast<char16_t*>(m_buffer.data()) + m_length);
        m_length += text.length();
    } catch (...) {
        m_failure = std::current_exception();
        throw;
    }
}

VString XMLStringFormatter::GetOutput() const
{
    if (m_failure) std::rethrow_exception(m_failure);
    m_buffer.resize(m_length);
    return VString(m_buffer);
}

void XMLStringFormatter::MakeRoom(int length)
{
    if (length > VString::MaxLength - m_length) throw std::length_error("XMLStringFormatter: the text is too long");
    m_buffer.resize(m_length + std::max(length, std::min(m_length, VString::MaxLength - m_length)));
}
