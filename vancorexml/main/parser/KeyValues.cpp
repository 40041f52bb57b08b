#include "vancorexml/main/parser/KeyValues.h"

#include <algorithm>
#include <utility>

#include <xercesc/util/XMLException.hpp>

#include "vancorexml/main/parser/XercesMemory.h"

using xercesc::DatatypeValidator;

namespace {

constexpr char16_t Separator = 0;

bool IsBlank(char16_t unit) noexcept
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

bool IsComparedByValue(const DatatypeValidator* type)
{
    if (!type)
        return false;
    switch (type->getType()) {
    case DatatypeValidator::Boolean:
    case DatatypeValidator::Decimal:
    case DatatypeValidator::Float:
    case DatatypeValidator::Double: return true;
    default: return false;
    }
}

}  // namespace

VString KeyValues::Display(std::u16string_view value)
{
    std::u16string text;
    for (const char16_t unit : value) {
        if (unit == Separator)
            text += u", ";
        else
            text += unit;
    }
    return VString(text.data(), text.size());
}

std::u16string KeyValues::CollapseWhiteSpace(std::u16string_view text)
{
    std::u16string collapsed;
    for (const char16_t unit : text) {
        if (!IsBlank(unit))
            collapsed += unit;
        else if (!collapsed.empty() && collapsed.back() != u' ')
            collapsed += u' ';
    }
    if (!collapsed.empty() && collapsed.back() == u' ')
        collapsed.pop_back();
    return collapsed;
}

std::u16string KeyValues::Normalise(std::u16string_view text, const DatatypeValidator* type)
{
    std::u16string normal(text);
    if (type && type->getWSFacet() == DatatypeValidator::COLLAPSE)
        normal = CollapseWhiteSpace(text);
    else if (type && type->getWSFacet() == DatatypeValidator::REPLACE)
        std::replace_if(normal.begin(), normal.end(), IsBlank, u' ');
    return normal;
}

std::u16string KeyValues::Canonicalise(const std::u16string& text, const DatatypeValidator* type)
{
    if (!IsComparedByValue(type))
        return text;
    XercesMemory memory;
    try {
        const XMLCh* const canonical = type->getCanonicalRepresentation(text.c_str(), &memory, true);
        return canonical ? std::u16string(canonical) : text;
    } catch (const xercesc::XMLException&) {
        return text;  // not a value of its type
    }
}

void KeyValues::AppendField(std::u16string& value, bool isFirst, std::u16string_view canonical)
{
    if (!isFirst)
        value += Separator;
    value += canonical;
}

std::vector<VString> KeyTable::GetAllValues() const
{
    std::vector<VString> values;
    values.reserve(m_starts.size());
    for (const auto& [value, start] : m_starts)
        values.push_back(KeyValues::Display(value));
    return values;
}

std::optional<SourcePosition> KeyTable::Add(const std::u16string& value, SourcePosition start)
{
    const auto [entry, isNew] = m_starts.try_emplace(value, start);
    if (!isNew)
        return entry->second;
    if (m_firstValues.size() < AllowedLimit)
        m_firstValues.push_back(KeyValues::Display(value));
    return std::nullopt;
}

void KeyTable::Merge(KeyTable&& other)
{
    for (VString& value : other.m_firstValues) {
        if (m_firstValues.size() < AllowedLimit)
            m_firstValues.push_back(std::move(value));
    }
    if (m_starts.size() < other.m_starts.size())
        m_starts.swap(other.m_starts);
    m_starts.merge(other.m_starts);
}
