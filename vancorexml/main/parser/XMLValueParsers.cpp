#include "vancorexml/main/parser/XMLValueParsers.h"

bool XMLValueParsers::ParseBool(const VString& text)
{
    return text.View() == u"true";
}

bool XMLValueParsers::ParseBool(const VString& text, bool defaultValue)
{
    return text.IsEmpty() ? defaultValue : ParseBool(text);
}

double XMLValueParsers::ParseFloat(const VString& text)
{
    return text.toDouble();
}

std::int32_t XMLValueParsers::ParseInt(const VString& text)
{
    return text.toInt();
}
