#include "vancorexml/main/parser/XMLStringFormatter.h"

#include <algorithm>
#include <stdexcept>

XMLStringFormatter::XMLStringFormatter(const VString& indentUnit, bool singleLine)
    : XMLFormatter(indentUnit, singleLine)
{}

XMLStringFormatter::~XMLStringFormatter() = default;

// Without the indentation, ~Indenter would leave out the close tag.
void XMLStringFormatter::Undent()
{
    try {
        XMLFormatter::Undent();
    } catch (...) {
        m_failure = std::current_exception();
        throw;
    }
}

void XMLStringFormatter::OutputString(const VString& text)
{
    const int length = text.length();
    if (length == 0)
        return;
    if (length > m_buffer.size() - m_length || !m_buffer.isDetached())
        return GrowAndAppend(text);
    std::copy(text.begin(), text.end(), reinterpret_cast<char16_t*>(m_buffer.data()) + m_length);
    m_length += length;
}

VString XMLStringFormatter::GetOutput() const
{
    if (m_failure)
        std::rethrow_exception(m_failure);
    // Without spare room, resize() would only copy a buffer that an earlier result shares.
    if (m_buffer.size() > m_length)
        m_buffer.resize(m_length);
    return VString(m_buffer);
}

void XMLStringFormatter::GrowAndAppend(const VString& text)
{
    if (m_failure)
        std::rethrow_exception(m_failure);
    try {
        if (m_length == 0) {
            m_buffer = text.ToQString();
        } else {
            if (text.length() > VString::MaxLength - m_length)
                throw std::length_error("XMLStringFormatter: the text is too long");
            m_buffer.resize(m_length + std::max(text.length(), std::min(m_length, VString::MaxLength - m_length)));
            std::copy(text.begin(), text.end(), reinterpret_cast<char16_t*>(m_buffer.data()) + m_length);
        }
        m_length += text.length();
    } catch (...) {
        m_failure = std::current_exception();
        // Leaves no spare room, so every later write takes this slow path and rethrows.
        m_buffer.truncate(m_length);
        throw;
    }
}
