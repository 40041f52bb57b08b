#include "vancoredata/QualifiedName.h"

#include <optional>
#include <string_view>

namespace {

void AppendPart(VString& text, const VString& part)
{
    text += u'[';
    for (const char16_t unit : part) {
        text += unit;
        if (unit == u']')
            text += u']';
    }
    text += u']';
}

// Removes a bracketed part from the start of `text` and returns it without the brackets. Returns nothing if `text`
// does not start with a complete part.
std::optional<VString> ConsumePart(std::u16string_view& text)
{
    if (!text.starts_with(u'['))
        return std::nullopt;
    VString part;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == u']') {
            const bool doubled = i + 1 < text.size() && text[i + 1] == u']';
            if (!doubled) {
                text.remove_prefix(i + 1);
                return part;
            }
            ++i;
        }
        part += text[i];
    }
    return std::nullopt;
}

}  // namespace

QualifiedName QualifiedName::Parse(const VString& text)
{
    QualifiedName whole(VString(), text);
    std::u16string_view rest = text.View();
    const std::optional<VString> first = ConsumePart(rest);
    if (!first)
        return whole;
    if (rest.empty())
        return QualifiedName(VString(), *first);
    if (!rest.starts_with(u'.'))
        return whole;
    rest.remove_prefix(1);
    const std::optional<VString> second = ConsumePart(rest);
    return second && rest.empty() ? QualifiedName(*first, *second) : whole;
}

VString QualifiedName::GetFullValue() const
{
    VString text;
    if (IsEmpty())
        return text;
    if (!m_root.IsEmpty()) {
        AppendPart(text, m_root);
        text += u'.';
    }
    AppendPart(text, m_local);
    return text;
}
