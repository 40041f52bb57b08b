#include "vancoreplatform/VFormatString.h"

VFormatString& VFormatString::arg(const VString& value)
{
    m_arguments.push_back(value);
    return *this;
}

VFormatString& VFormatString::arg(std::int32_t value)
{
    return arg(VString::number(value));
}

VFormatString& VFormatString::arg(std::uint32_t value)
{
    return arg(VString::number(value));
}

VFormatString& VFormatString::arg(std::int64_t value)
{
    return arg(VString::number(value));
}

VFormatString& VFormatString::arg(std::uint64_t value)
{
    return arg(VString::number(value));
}

VString VFormatString::ToString() const
{
    const std::u16string_view format = m_format.View();
    VString result;
    std::size_t copied = 0;
    for (std::size_t i = 0; i + 1 < format.size(); ++i) {
        if (format[i] != u'%' || format[i + 1] < u'1' || format[i + 1] > u'9')
            continue;
        const std::size_t argument = static_cast<std::size_t>(format[i + 1] - u'1');
        if (argument >= m_arguments.size())
            continue;
        result.append(format.data() + copied, i - copied).append(m_arguments[argument]);
        copied = i + 2;
        ++i;
    }
    return result.append(format.data() + copied, format.size() - copied);
}
