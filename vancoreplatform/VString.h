// The product's string.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/Export.h"

// A string of UTF-16 code units. The length is stored, so a NUL is an ordinary unit.
//
// Ownership: a value. Copies share one buffer until one of them changes, so a copy costs one reference count.
//
// Limits: at most `MaxLength` code units. An operation that would exceed this throws std::length_error and leaves
// the string unchanged.
//
// Threads: different threads may use different objects, even if these share a buffer. An object has no lock.
//
// All positions and lengths are in UTF-16 code units unless a name says UTF-8.
//
//     VString name = "caf\u00E9";              // a literal is UTF-8
//     if (name.startsWith("caf")) name += u"!";
class VANCOREPLATFORM_API VString {
public:
    using value_type = char16_t;
    using const_iterator = const char16_t*;

    // The largest number of code units a string can hold (2^30 - 32).
    static constexpr int MaxLength = 0x3FFFFFE0;

    VString() noexcept = default;
    // Converts NUL-terminated UTF-8. Ill-formed sequences become U+FFFD. Null becomes the empty string.
    VString(const char* utf8);
    // Copies NUL-terminated UTF-16. Null becomes the empty string.
    VString(const char16_t* text);
    VString(const char16_t* text, std::size_t length);
    VString(const QString& text) : m_text(text) {}
    VString(QString&& text) noexcept : m_text(std::move(text)) {}

    // Converts `length` bytes of UTF-8. A NUL is an ordinary byte. Ill-formed sequences become U+FFFD.
    static VString fromUtf8(const char* utf8, std::size_t length);
    static VString fromStdString(const std::string& utf8);
    static VString number(std::int32_t value);
    static VString number(std::uint32_t value);
    static VString number(std::int64_t value);
    static VString number(std::uint64_t value);
    // Formats like printf's 'g' with `precision` significant digits, always in the C locale. Infinities are "inf"
    // and "-inf".
    static VString number(double value, int precision);
    // Returns the concatenated parts, with `separator` between them.
    static VString join(const std::vector<VString>& parts, const VString& separator);

    // Returns UTF-8. An unpaired surrogate becomes U+FFFD.
    std::string toStdString() const;
    // Appends what toStdString returns. Linear.
    void AppendTo(std::string& utf8) const;
    const QString& ToQString() const noexcept { return m_text; }
    // Returns the code units, followed by a NUL. The pointer is valid until the string is changed or destroyed.
    const char16_t* utf16() const noexcept { return reinterpret_cast<const char16_t*>(m_text.constData()); }
    std::u16string_view View() const noexcept { return {utf16(), static_cast<std::size_t>(m_text.size())}; }

    int length() const noexcept { return m_text.size(); }
    bool IsEmpty() const noexcept { return m_text.isEmpty(); }
    // Precondition, not checked: 0 <= position < length().
    char16_t operator[](int position) const noexcept { return utf16()[position]; }
    const_iterator begin() const noexcept { return utf16(); }
    const_iterator end() const noexcept { return utf16() + m_text.size(); }
    // True if both strings share one buffer and are therefore equal. Constant time.
    bool IsSharedWith(const VString& other) const noexcept
    {
        return m_text.constData() == other.m_text.constData() && length() == other.length();
    }

    VString& operator+=(const VString& other) { return append(other); }
    VString& operator+=(char16_t unit);
    // Amortised constant per code unit.
    VString& append(const VString& other);
    VString& append(const char16_t* text, std::size_t length);
    void reserve(int length) { m_text.reserve(length); }
    void clear() { m_text.clear(); }
    void swap(VString& other) noexcept { m_text.swap(other.m_text); }

    bool startsWith(const VString& prefix) const noexcept { return View().starts_with(prefix.View()); }
    bool endsWith(const VString& suffix) const noexcept { return View().ends_with(suffix.View()); }
    bool contains(const VString& part) const { return m_text.contains(part.m_text); }
    bool contains(char16_t unit) const { return m_text.contains(QChar(unit)); }
    // Returns the first position at or after `from`, or -1 if there is none.
    int indexOf(const VString& part, int from = 0) const { return m_text.indexOf(part.m_text, from); }
    int indexOf(char16_t unit, int from = 0) const { return m_text.indexOf(QChar(unit), from); }

    VString left(int length) const { return m_text.left(length); }
    // Returns `length` code units from `position` on, or all up to the end if `length` is negative.
    VString mid(int position, int length = -1) const { return m_text.mid(position, length); }
    // Returns a copy in which `after` replaces every `before`. The text is scanned once, from the left. An empty
    // `before` changes nothing.
    VString replace(const VString& before, const VString& after) const;
    // Returns the parts between the separators, including empty parts: n separators give n + 1 parts.
    std::vector<VString> split(char16_t separator) const;

    // These return a copy without leading (trimLeft) or surrounding (trimmed) white space, as VCType::isSpace
    // defines it.
    VString trimLeft() const;
    VString trimmed() const;

    // Reads a number in the C locale. If the text is not a number, returns 0 and sets `*ok` to false.
    double toDouble(bool* ok = nullptr) const;
    int toInt(bool* ok = nullptr, int base = 10) const;

    friend bool operator==(const VString& a, const VString& b) noexcept
    {
        return a.IsSharedWith(b) || a.View() == b.View();
    }
    friend bool operator!=(const VString& a, const VString& b) noexcept { return !(a == b); }
    // Order by code units, not by code points or language.
    friend bool operator<(const VString& a, const VString& b) noexcept { return a.View() < b.View(); }
    friend bool operator>(const VString& a, const VString& b) noexcept { return b < a; }
    friend bool operator<=(const VString& a, const VString& b) noexcept { return !(b < a); }
    friend bool operator>=(const VString& a, const VString& b) noexcept { return !(a < b); }

private:
    QString m_text;
};

VANCOREPLATFORM_API VString operator+(const VString& a, const VString& b);
VANCOREPLATFORM_API VString operator+(VString&& a, const VString& b);
// Writes UTF-8.
VANCOREPLATFORM_API std::ostream& operator<<(std::ostream& out, const VString& text);
