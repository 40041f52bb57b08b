#include "vanxml/DocumentText.h"

#include <QByteArray>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VFormatString.h"
#include "vanxml/ToolError.h"

namespace {

constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";

// Compares names of encodings, which ignore case.
bool IsSameName(std::string_view a, std::string_view b)
{
    return qstrnicmp(a.data(), static_cast<qsizetype>(a.size()), b.data(), static_cast<qsizetype>(b.size())) == 0;
}

// True if the bytes are the text: UTF-8 without a mark and without the declaration of another encoding.
bool IsPlainUtf8(const std::string& bytes)
{
    if (bytes.starts_with(Utf8Mark) || FindUnmarkedUtf16(bytes) ||
        FindInvalidUtf8(bytes.data(), bytes.size()) != bytes.size())
        return false;
    const std::optional<std::string_view> declared = FindDeclaredEncoding(bytes);
    return !declared || IsSameName(*declared, "UTF-8");
}

// Returns "UTF-16" or "UTF-32" for an encoding of this family, and otherwise null.
const char* FamilyOf(const FileEncoding& encoding)
{
    for (const char* family : {"UTF-16", "UTF-32"}) {
        if (encoding.name.startsWith(family))
            return family;
    }
    return nullptr;
}

}  // namespace

DocumentText::DocumentText(const VString& name, const std::string& bytes)
    : m_bytes(bytes),
      m_isCopy(!IsPlainUtf8(bytes))
{
    if (m_isCopy)
        m_decoded = DecodeToUtf8(std::string(bytes), name, true);
}

std::string DocumentText::DeclaredEncoding() const
{
    if (IsUtf8(Encoding()))
        return "utf-8";
    const std::optional<std::string_view> declared = FindDeclaredEncoding(Text());
    const std::string name = Encoding().name.toStdString();
    if (const char* family = FamilyOf(Encoding())) {
        // The document may declare the other byte order, which is wrong.
        const bool isTrue = declared && (IsSameName(*declared, family) || IsSameName(*declared, name));
        return std::string(isTrue ? *declared : family);
    }
    return declared ? std::string(*declared) : name;
}

bool HasAllCharacters(const FileEncoding& encoding) noexcept
{
    return IsUtf8(encoding) || FamilyOf(encoding) != nullptr;
}

std::string EncodeDocument(std::string&& text, const FileEncoding& encoding)
{
    if (IsUtf8(encoding))
        return encoding.hasMark ? std::string(Utf8Mark) + text : std::move(text);
    return EncodeFromUtf8(text, encoding, [&](char32_t character) -> std::string {
        const VString message =
            VFormatString("the encoding %1 cannot be kept: it has no bytes of its own for the character "
                          "with the number %2; use --encoding utf-8")
                .arg(encoding.name)
                .arg(static_cast<std::uint64_t>(character));
        throw ToolError(message.toStdString());
    });
}

bool IsReadAs(const std::string& bytes, const std::string& text)
{
    try {
        return DecodeToUtf8(std::string(bytes), VString(), true).text == text;
    } catch (const VIO::DecodingException&) {
        return false;
    }
}
