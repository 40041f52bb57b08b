#include "vanxml/OptionChecks.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VString.h"

CLI::Validator IsWholeNumber(std::uint64_t least, std::uint64_t most)
{
    const auto check = [least, most](const std::string& text) {
        std::uint64_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc() && stop == end && number >= least && number <= most)
            return std::string();
        return "'" + text + "' is not a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    };
    return CLI::Validator(check, "");
}

CLI::Validator IsOneOf(const std::vector<std::string>& values)
{
    std::string list;
    std::vector<VString> names;
    for (const std::string& value : values) {
        list += (list.empty() ? "" : ", ") + value;
        names.push_back(VString::fromStdString(value));
    }
    const auto check = [values, list, names](const std::string& text) {
        if (std::find(values.begin(), values.end(), text) != values.end())
            return std::string();
        const VString nearest = FindNearestName(VString::fromStdString(text), names);
        return "'" + text + "' is not one of " + list +
            (nearest.IsEmpty() ? "" : "; did you mean '" + nearest.toStdString() + "'?");
    };
    return CLI::Validator(check, "");
}
