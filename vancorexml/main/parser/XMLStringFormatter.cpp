#include "vancorexml/main/parser/XMLStringFormatter.h"

XMLStringFormatter::XMLStringFormatter(const VString& indentUnit, bool singleLine) : XMLFormatter(indentUnit, singleLine) {}

XMLStringFormatter::~XMLStringFormatter() = default;

void XMLStringFormatter::OutputString(const VString& text)
{
    if (m_failure) std::rethrow_exception(m_failure);
    try {
        m_output.append(text);
    } catch (...) {
        m_failure = std::current_exception();
        throw;
    }
}

VString XMLStringFormatter::GetOutput() const
{
    if (m_failure) std::rethrow_exception(m_failure);
    return m_output;
}
