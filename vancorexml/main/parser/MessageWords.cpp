#include "vancorexml/main/parser/MessageWords.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "vancorexml/main/parser/ColonRewriting.h"

namespace {

constexpr std::size_t QuotedLength = 60;

}  // namespace

VString MessageWords::Clip(const VString& text, std::size_t longest)
{
    const std::u16string_view whole = text.View();
    if (whole.size() <= longest)
        return text;
    const char16_t last = whole[longest - 1];
    std::size_t end = last >= 0xD800 && last < 0xDC00 ? longest - 1 : longest;
    // The diagnostic pass replaces the prefix of the sanitizer by a colon, and would not find a part of it.
    constexpr std::u16string_view Prefix = ColonRewriting::ReadPrefix;
    const std::size_t prefix =
        whole.substr(0, longest + Prefix.size()).find(Prefix, longest - std::min(longest, Prefix.size() - 1));
    if (prefix < longest)
        end = prefix + Prefix.size();
    if (end == whole.size())
        return text;
    return VString(whole.data(), end) + u"\u2026";
}

VString MessageWords::Quote(const VString& text)
{
    return "'" + Clip(text, QuotedLength) + "'";
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
