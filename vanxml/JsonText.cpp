#include "vanxml/JsonText.h"

void AppendJsonString(std::string& json, std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    json += '"';
    for (const char unit : text) {
        const auto byte = static_cast<unsigned char>(unit);
        if (unit == '"' || unit == '\\') {
            json += '\\';
            json += unit;
        } else if (byte < 0x20) {
            json += "\\u00";
            json += digits[byte >> 4];
            json += digits[byte & 0xF];
        } else {
            json += unit;
        }
    }
    json += '"';
}
