#include "vancoredata/DataValue.h"

namespace DataValueFormatter {

namespace {

VString Quote(const VString& text)
{
    VString result = u"\"";
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\')
            result += u'\\';
        result += unit;
    }
    result += u'"';
    return result;
}

struct Formatter {
    const FormatOptions& options;

    VString operator()(std::monostate) const { return options.null; }
    VString operator()(bool value) const { return value ? "true" : "false"; }
    VString operator()(std::int64_t value) const { return VString::number(value); }
    VString operator()(double value) const { return VString::number(value, 17); }
    VString operator()(const VString& value) const { return Quote(value); }
};

}  // namespace

VString Format(const DataValue& value, const FormatOptions& options)
{
    return std::visit(Formatter{options}, value.GetContent());
}

}  // namespace DataValueFormatter
