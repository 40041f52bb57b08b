// Reads tables of comma-separated values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A record and the line on which it begins, from 1.
struct CsvRecord {
    std::size_t line = 0;
    std::vector<std::string> fields;
};

// Parses a UTF-8 text by the rules of RFC 4180. A field between quotes may contain commas, line ends and doubled
// quotes. Lines end with "\r\n" or "\n". Skips empty lines. Throws ToolError, with `name` and the line, if a quoted
// field has no end or text follows its end, or if a quote is inside a field that does not begin with one. Linear.
std::vector<CsvRecord> ParseCsv(std::string_view text, const std::string& name);
