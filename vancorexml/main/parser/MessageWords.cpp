#include "vancorexml/main/parser/MessageWords.h"

#include <algorithm>
#include <string>

namespace {

constexpr std::size_t QuotedLength = 60;

}  // namespace

VString MessageWords::Quote(const VString& text)
{
    if (text.View().size() <= QuotedLength)
        return "'" + text + "'";
    return "'" + VString(text.View().data(), QuotedLength) + u"\u2026'";
}

VString MessageWords::ListNames(const std::vector<VString>& names)
{
    constexpr std::size_t Shown = 10;
    VString list;
    for (std::size_t i = 0; i < std::min(names.size(), Shown); ++i)
        list += VString(i == 0 ? "'" : ", '") + names[i] + "'";
    if (names.size() > Shown)
        list += u", \u2026";
    return names.size() == 1 ? list : "one of " + list;
}

VString MessageWords::WithSuggestion(const VString& message, const VString& suggestion)
{
    return suggestion.IsEmpty() ? message : message + "; did you mean '" + suggestion + "'?";
}

VString MessageWords::Adapt(const VString& message)
{
    std::u16string text(message.View());
    const bool isWord = text.size() > 1 && text[1] >= u'a' && text[1] <= u'z';
    if (isWord && text[0] >= u'A' && text[0] <= u'Z')
        text[0] = static_cast<char16_t>(text[0] - u'A' + u'a');
    if (text.ends_with(u'.'))
        text.pop_back();
    return VString(text.data(), text.size());
}
