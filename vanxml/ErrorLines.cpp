#include "vanxml/ErrorLines.h"

#include "vancoreplatform/Encoding.h"

namespace {

bool IsTerminalControl(char16_t unit)
{
    const bool isControl = unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
    const bool isSeparator = unit == 0x2028 || unit == 0x2029;
    const bool isDirectionMark = unit == 0x061C || unit == 0x200E || unit == 0x200F;
    const bool isEmbedding = (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
    return isControl || isSeparator || isDirectionMark || isEmbedding;
}

// Returns the number as `digits` lower-case hexadecimal digits.
VString Hexadecimal(unsigned number, int digits)
{
    VString text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += u"0123456789abcdef"[number >> shift & 0xF];
    return text;
}

VString Escape(char16_t unit)
{
    switch (unit) {
    case u'\n': return "\\n";
    case u'\r': return "\\r";
    case u'\t': return "\\t";
    default: return unit < 0x80 ? "\\x" + Hexadecimal(unit, 2) : "\\u" + Hexadecimal(unit, 4);
    }
}

}  // namespace

std::string EscapeControlCharacters(std::string_view text)
{
    VString escaped;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t valid = FindInvalidUtf8(text.data() + position, text.size() - position);
        const VString run = VString::fromUtf8(text.data() + position, valid);
        for (const char16_t unit : run.View()) {
            if (IsTerminalControl(unit))
                escaped += Escape(unit);
            else
                escaped += unit;
        }
        position += valid;
        if (position < text.size())
            escaped += "\\x" + Hexadecimal(static_cast<unsigned char>(text[position++]), 2);
    }
    return escaped.toStdString();
}

VString ClipText(const VString& text)
{
    std::u16string_view shown = text.View();
    if (shown.size() <= longestUnclipped)
        return text;
    const char16_t last = shown[longestUnclipped - 1];
    const bool isSplit = last >= 0xD800 && last < 0xDC00;
    shown = shown.substr(0, longestUnclipped - (isSplit ? 1 : 0));
    return VString(shown.data(), shown.size()) + u"\u2026";
}

bool IsError(const ParseDiagnostic& diagnostic) noexcept
{
    return diagnostic.severity != ParseDiagnostic::Severity::Warning;
}

std::string FormatDocumentLine(const VString& place, const VString& message)
{
    return EscapeControlCharacters((place + ": " + message).toStdString()) + "\n";
}

std::string FormatErrorLine(const VString& name, const VString& message)
{
    return FormatDocumentLine(name, "error: " + message);
}

std::string FormatErrorLine(std::string_view message)
{
    return "vanxml: " + EscapeControlCharacters(message) + "\n";
}
