#include "vancorexml/main/parser/ForeignFormat.h"

#include <algorithm>
#include <cstddef>

#include "vancorexml/main/parser/XMLUtils.h"

namespace {

struct Signature {
    std::string_view bytes;
    const char* format;
};

using namespace std::string_view_literals;

constexpr Signature signatures[] = {
    {"PK\x03\x04"sv, "a ZIP archive"},
    {"PK\x05\x06"sv, "a ZIP archive"},
    {"\x1F\x8B"sv, "a gzip archive"},
    {"BZh"sv, "a bzip2 archive"},
    {"\xFD\x37zXZ"sv, "an xz archive"},
    {"\x28\xB5\x2F\xFD"sv, "a Zstandard archive"},
    {"7z\xBC\xAF\x27\x1C"sv, "a 7z archive"},
    {"Rar!\x1A"sv, "a RAR archive"},
    {"%PDF-"sv, "a PDF document"},
    {"%!PS"sv, "a PostScript document"},
    {"{\\rtf"sv, "an RTF document"},
    {"\xD0\xCF\x11\xE0"sv, "an Office document in the binary format"},
    {"\x89PNG"sv, "a PNG image"},
    {"\xFF\xD8\xFF"sv, "a JPEG image"},
    {"GIF8"sv, "a GIF image"},
    {"\x7F"
     "ELF"sv,
        "a program"},
    {"MZ\x90"sv, "a program"},
    {"SQLite format 3"sv, "an SQLite database"},
};

bool IsBlankOrEnd(std::string_view text, std::size_t at)
{
    return at >= text.size() || XmlUtils::IsWhitespace(text[at]);
}

std::string_view FirstLine(std::string_view text)
{
    return text.substr(0, text.find_first_of("\r\n"));
}

// Returns the line behind the first one.
std::string_view SecondLine(std::string_view text)
{
    text.remove_prefix(std::min(text.find('\n'), text.size()));
    if (!text.empty())
        text.remove_prefix(1);
    return FirstLine(text);
}

// True if the text contains a control character near its start.
bool IsBinary(std::string_view text)
{
    text = text.substr(0, 1000);
    return std::any_of(text.begin(), text.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 && !XmlUtils::IsWhitespace(byte) && byte != '\f' && byte != '\v';
    });
}

// True if the first line is a section of an INI file, such as "[general]".
bool IsIni(std::string_view text)
{
    std::string_view line = FirstLine(text);
    while (!line.empty() && XmlUtils::IsWhitespace(line.back()))
        line.remove_suffix(1);
    const bool isSection = line.size() > 2 && line.front() == '[' && line.back() == ']';
    const bool isList =
        line.find_first_of("\"{,") != std::string_view::npos || (isSection && line[1] >= '0' && line[1] <= '9');
    return isSection && !isList && line != "[true]" && line != "[false]" && line != "[null]";
}

bool IsJson(std::string_view text)
{
    const std::size_t next = text.find_first_not_of(" \t\r\n", 1);
    if (next == std::string_view::npos)
        return true;
    const std::string_view first = text.front() == '{' ? "\"}"sv : "\"]{[-0123456789tfn"sv;
    return (text.front() == '{' || text.front() == '[') && first.find(text[next]) != std::string_view::npos;
}

// True if the text begins with a key of YAML, such as "name: value", or with the line "---".
bool IsYaml(std::string_view text)
{
    const std::string_view line = FirstLine(text);
    const std::size_t keyEnd =
        line.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-");
    const bool isKey =
        keyEnd != 0 && keyEnd != std::string_view::npos && line[keyEnd] == ':' && IsBlankOrEnd(line, keyEnd + 1);
    const bool isMark = line.starts_with("---") && IsBlankOrEnd(line, 3);
    return isKey || isMark || line.starts_with("%YAML");
}

// True if the first two lines have the same number of separators.
bool IsTable(std::string_view text)
{
    const std::string_view first = FirstLine(text);
    const std::string_view second = SecondLine(text);
    return std::any_of(std::begin(",;\t"), std::end(",;\t") - 1, [&](char separator) {
        const auto count = std::count(first.begin(), first.end(), separator);
        return count > 0 && count == std::count(second.begin(), second.end(), separator);
    });
}

// True if the text contains something that looks like XML.
bool HasMarkup(std::string_view text)
{
    return text.find("<?xml") != std::string_view::npos || text.find("</") != std::string_view::npos ||
        text.find("/>") != std::string_view::npos;
}

}  // namespace

std::string RecognizeForeignFormat(std::string_view text)
{
    for (const Signature& signature : signatures) {
        if (text.starts_with(signature.bytes))
            return signature.format;
    }
    while (!text.empty() && XmlUtils::IsWhitespace(text.front()))
        text.remove_prefix(1);
    if (text.empty() || text.front() == '<')
        return std::string();
    if (IsBinary(text))
        return "binary data";
    if (IsIni(text))
        return "an INI file";
    if ((text.front() == '{' || text.front() == '[') && IsJson(text))
        return "JSON";
    if (HasMarkup(text))
        return std::string();
    if (IsYaml(text))
        return "YAML";
    if (IsTable(text))
        return "a table of values (CSV)";
    return "plain text";
}
