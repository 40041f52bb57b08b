#include "vancorexml/main/parser/DeclarationBlank.h"

#include <algorithm>
#include <cstddef>

namespace {

using namespace std::string_view_literals;

// How an encoding writes ASCII characters.
struct Form {
    std::string_view mark;   // the byte order mark
    std::string_view blank;  // a blank
    std::size_t position;    // the position of the ASCII byte in a character
};

constexpr Form Forms[] = {
    {"\xFF\xFE\0\0"sv, " \0\0\0"sv, 0},  // must precede the mark FF FE
    {"\0\0\xFE\xFF"sv, "\0\0\0 "sv, 3},
    {"\xEF\xBB\xBF"sv, " "sv, 0},
    {"\xFF\xFE"sv, " \0"sv, 0},
    {"\xFE\xFF"sv, "\0 "sv, 1},
    {""sv, " "sv, 0},
    {""sv, " \0"sv, 0},
    {""sv, "\0 "sv, 1},
};

// Removes one ASCII character from the text and returns it. Returns 0 for another character and at the end.
char TakeAscii(std::string_view& text, const Form& form) noexcept
{
    const std::string_view unit = text.substr(0, form.blank.size());
    text.remove_prefix(unit.size());
    if (unit.size() < form.blank.size())
        return 0;
    const auto zeros = std::count(unit.begin(), unit.end(), '\0');
    return zeros + 1 == static_cast<std::ptrdiff_t>(unit.size()) ? unit[form.position] : '\0';
}

}  // namespace

DeclarationBlank::DeclarationBlank(std::string_view start) noexcept
{
    start = start.substr(0, StartLength);
    for (const Form& form : Forms) {
        if (!start.starts_with(form.mark))
            continue;
        std::string_view rest = start.substr(form.mark.size());
        const auto isNext = [&](char c) { return TakeAscii(rest, form) == c; };
        constexpr std::string_view Name = "<?xml";
        if (!std::all_of(Name.begin(), Name.end(), isNext))
            continue;
        const std::size_t offset = start.size() - rest.size();
        const char next = TakeAscii(rest, form);
        if (next == '\n' || next == '\r' || next == '\t') {
            m_offset = offset;
            m_replacedLength = next == '\t' ? form.blank.size() : 0;
            m_blank = form.blank;
        }
        return;
    }
}
