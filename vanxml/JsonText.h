// Writes JSON.
#pragma once

#include <string>
#include <string_view>

// Appends the text (UTF-8) as a JSON string, between quotes. Linear.
void AppendJsonString(std::string& json, std::string_view text);
