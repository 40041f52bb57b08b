#include "vanxml/CheckSummary.h"

#include <cmath>

namespace {

std::string Count(std::size_t count, const char* name)
{
    return CheckSummary::FormatNumber(count) + " " + name + (count == 1 ? "" : "s");
}

}  // namespace

void CheckSummary::Add(const CheckedDocument& document)
{
    errors += document.errors;
    warnings += document.warnings;
    if (document.wasChecked) {
        ++documents;
        bytes += document.bytes;
    } else {
        ++unchecked;
    }
}

std::string CheckSummary::Format() const
{
    return Count(documents, "document") + ", " + Count(errors, "error") +
        (warnings > 0 ? ", " + Count(warnings, "warning") : "") +
        (unchecked > 0 ? ", " + FormatNumber(unchecked) + " not checked" : "");
}

std::string CheckSummary::FormatSpeed(double seconds) const
{
    const auto tenths = std::llround(seconds * 10);
    if (tenths == 0)
        return std::string();
    const auto speed = std::llround(static_cast<double>(bytes) / 1e6 / seconds);
    return "; " + FormatNumber(static_cast<unsigned long long>(tenths / 10)) + "." + std::to_string(tenths % 10) +
        " s, " + FormatNumber(static_cast<unsigned long long>(speed)) + " MB/s";
}

std::string CheckSummary::FormatOmitted(std::size_t messages)
{
    return FormatNumber(messages) + (messages == 1 ? " more message is" : " more messages are") + " not shown";
}

std::string CheckSummary::FormatNumber(unsigned long long number)
{
    std::string text = std::to_string(number);
    for (std::size_t behind = 3; behind < text.size(); behind += 4)
        text.insert(text.size() - behind, 1, ',');
    return text;
}
