#include "vanxml/DisplayText.h"

#include <QChar>

#include <algorithm>
#include <iterator>

#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/VString.h"
#include "vanxml/ErrorLines.h"

namespace {

constexpr int tabWidth = 4;

struct CharacterRange {
    char32_t first;
    char32_t last;
};

// The characters whose property East_Asian_Width is W or F in Unicode 15.0. Unassigned characters between two ranges
// count as wide. Sorted.
// clang-format off
constexpr CharacterRange wideRanges[] = {
    {0x1100, 0x115F}, {0x231A, 0x231B}, {0x2329, 0x232A}, {0x23E9, 0x23EC}, {0x23F0, 0x23F0}, {0x23F3, 0x23F3},
    {0x25FD, 0x25FE}, {0x2614, 0x2615}, {0x2648, 0x2653}, {0x267F, 0x267F}, {0x2693, 0x2693}, {0x26A1, 0x26A1},
    {0x26AA, 0x26AB}, {0x26BD, 0x26BE}, {0x26C4, 0x26C5}, {0x26CE, 0x26CE}, {0x26D4, 0x26D4}, {0x26EA, 0x26EA},
    {0x26F2, 0x26F3}, {0x26F5, 0x26F5}, {0x26FA, 0x26FA}, {0x26FD, 0x26FD}, {0x2705, 0x2705}, {0x270A, 0x270B},
    {0x2728, 0x2728}, {0x274C, 0x274C}, {0x274E, 0x274E}, {0x2753, 0x2755}, {0x2757, 0x2757}, {0x2795, 0x2797},
    {0x27B0, 0x27B0}, {0x27BF, 0x27BF}, {0x2B1B, 0x2B1C}, {0x2B50, 0x2B50}, {0x2B55, 0x2B55}, {0x2E80, 0x303E},
    {0x3041, 0x3247}, {0x3250, 0x4DBF}, {0x4E00, 0xA4C6}, {0xA960, 0xA97C}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},
    {0xFE10, 0xFE19}, {0xFE30, 0xFE6B}, {0xFF01, 0xFF60}, {0xFFE0, 0xFFE6}, {0x16FE0, 0x1B2FB}, {0x1F004, 0x1F004},
    {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F335},
    {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393}, {0x1F3A0, 0x1F3CA}, {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0},
    {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E}, {0x1F440, 0x1F440}, {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D},
    {0x1F54B, 0x1F54E}, {0x1F550, 0x1F567}, {0x1F57A, 0x1F57A}, {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A4},
    {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CC, 0x1F6CC}, {0x1F6D0, 0x1F6D2}, {0x1F6D5, 0x1F6DF},
    {0x1F6EB, 0x1F6EC}, {0x1F6F4, 0x1F6FC}, {0x1F7E0, 0x1F7F0}, {0x1F90C, 0x1F93A}, {0x1F93C, 0x1F945},
    {0x1F947, 0x1F9FF}, {0x1FA70, 0x1FAF8}, {0x20000, 0x3FFFD},
};
// clang-format on

bool IsWide(char32_t character) noexcept
{
    const auto range = std::lower_bound(
        std::begin(wideRanges), std::end(wideRanges), character, [](const CharacterRange& each, char32_t value) {
            return each.last < value;
        });
    return range != std::end(wideRanges) && character >= range->first;
}

bool IsInvisible(char32_t character) noexcept
{
    const bool isSoftHyphen = character == 0xAD;
    const bool isConjoiningJamo = character >= 0x1160 && character <= 0x11FF;
    if (isSoftHyphen || isConjoiningJamo)
        return isConjoiningJamo;
    switch (QChar::category(static_cast<uint>(character))) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format: return true;
    default: return false;
    }
}

std::size_t CharacterLength(std::string_view text)
{
    const auto byte = static_cast<unsigned char>(text.front());
    const std::size_t length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    const bool isValid = length <= text.size() && FindInvalidUtf8(text.data(), length) == length;
    return isValid ? length : 1;
}

DisplayCell MakeCell(std::string_view bytes)
{
    DisplayCell cell;
    const bool isPrintableAscii = bytes.front() >= ' ' && bytes.front() < 0x7F;
    if (isPrintableAscii) {
        cell.text = bytes;
        return cell;
    }
    cell.text = EscapeControlCharacters(bytes);
    if (cell.text != bytes) {
        cell.width = static_cast<int>(cell.text.size());
    } else {
        const VString text = VString::fromUtf8(bytes.data(), bytes.size());
        cell.width = CountColumns(text.length() == 2 ? QChar::surrogateToUcs4(text[0], text[1]) : text[0]);
    }
    return cell;
}

}  // namespace

int CountColumns(char32_t character) noexcept
{
    if (IsInvisible(character))
        return 0;
    return IsWide(character) ? 2 : 1;
}

std::vector<DisplayCell> SplitIntoCells(std::string_view text, std::uint64_t firstColumn)
{
    std::vector<DisplayCell> cells;
    int position = 0;
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        DisplayCell cell;
        if (text.front() == '\t') {
            cell.width = tabWidth - position % tabWidth;
            cell.text.assign(static_cast<std::size_t>(cell.width), ' ');
        } else {
            cell = MakeCell(text.substr(0, length));
        }
        cell.column = firstColumn;
        position += cell.width;
        cell.units = length == 4 ? 2 : 1;
        firstColumn += cell.units;
        text.remove_prefix(length);
        cells.push_back(std::move(cell));
    }
    return cells;
}
