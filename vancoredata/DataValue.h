// Typed values.
#pragma once

#include <cstdint>
#include <variant>

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// The value of a data field: null, a bool, an integer, a floating-point number or a text.
class VANCOREDATA_API DataValue {
public:
    using Content = std::variant<std::monostate, bool, std::int64_t, double, VString>;

    DataValue() = default;
    DataValue(bool value) : m_content(value) {}
    DataValue(int value) : m_content(static_cast<std::int64_t>(value)) {}
    DataValue(std::int64_t value) : m_content(value) {}
    DataValue(double value) : m_content(value) {}
    DataValue(const VString& value) : m_content(value) {}
    DataValue(const char* utf8) : m_content(VString(utf8)) {}
    DataValue(const char16_t* text) : m_content(VString(text)) {}

    const Content& GetContent() const noexcept { return m_content; }
    bool IsNull() const noexcept { return m_content.index() == 0; }

    friend bool operator==(const DataValue& a, const DataValue& b) { return a.m_content == b.m_content; }
    friend bool operator!=(const DataValue& a, const DataValue& b) { return !(a == b); }

private:
    Content m_content;
};

namespace DataValueFormatter {

struct FormatOptions {
    // The text that represents a null value.
    VString null = "%null%";
};

// Formats a value as text. A bool is "true" or "false". A number is written like printf's 'g' with 17 digits in the
// C locale. A text is put between double quotes, with a backslash before each quote and backslash in it.
VANCOREDATA_API VString Format(const DataValue& value, const FormatOptions& options);

}  // namespace DataValueFormatter
