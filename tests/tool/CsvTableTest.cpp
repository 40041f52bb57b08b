#include "vanxml/CsvTable.h"

#include "tests/common/TestSupport.h"
#include "vanxml/ToolError.h"

namespace {

// Returns "line:field|field" for each record, separated by blanks.
std::string Parse(const std::string& text)
{
    std::string records;
    for (const CsvRecord& record : ParseCsv(text, "t.csv")) {
        records += (records.empty() ? "" : " ") + std::to_string(record.line) + ":";
        for (const std::string& field : record.fields)
            records += (&field == &record.fields.front() ? "" : "|") + field;
    }
    return records;
}

struct CsvRow {
    const char* name;
    std::string text;
    std::string records;
};

void PrintTo(const CsvRow& row, std::ostream* out)
{
    *out << row.text;
}

class CsvTableTest : public testing::TestWithParam<CsvRow> {};

TEST_P(CsvTableTest, ParsesRecords)
{
    EXPECT_EQ(Parse(GetParam().text), GetParam().records);
}

const CsvRow CsvRows[] = {
    {"Empty", "", ""},
    {"OneRecord", "a,b,c", "1:a|b|c"},
    {"LineEnds", "a,b\nc,d\r\ne,f\r\n", "1:a|b 2:c|d 3:e|f"},
    {"EmptyLines", "\n\r\na\n\nb\n", "3:a 5:b"},
    {"EmptyFields", ",\n\"\",x\na,\n", "1:| 2:|x 3:a|"},
    {"QuotedFields", "\"a\",\"b,c\"\n", "1:a|b,c"},
    {"DoubledQuotes", "\"a\"\"b\"\"\"\n", "1:a\"b\""},
    {"LineEndsInsideQuotes", "\"a\nb\r\nc\",d\ne\n", "1:a\nb\r\nc|d 4:e"},
    {"CarriageReturnInsideAField", "a\rb,c\r\n", "1:a\rb|c"},
    {"BlanksStay", " a , b\n", "1: a | b"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, CsvTableTest, testing::ValuesIn(CsvRows), [](const auto& row) { return std::string(row.param.name); });

struct CsvErrorRow {
    const char* name;
    std::string text;
    std::string message;
};

void PrintTo(const CsvErrorRow& row, std::ostream* out)
{
    *out << row.text;
}

class CsvTableErrorTest : public testing::TestWithParam<CsvErrorRow> {};

TEST_P(CsvTableErrorTest, Throws)
{
    try {
        Parse(GetParam().text);
        ADD_FAILURE() << "no exception";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.what(), GetParam().message);
    }
}

const CsvErrorRow CsvErrorRows[] = {
    {"QuoteWithoutEnd", "a\n\"b\nc", "t.csv:2: a quoted field has no end"},
    {"TextBehindQuotes", "a\n\"b\"c\n", "t.csv:2: text follows the closing quote of a field"},
    {"TextBehindQuotesOverTwoLines", "\"b\n\"c\n", "t.csv:2: text follows the closing quote of a field"},
    {"QuoteInsideAField", "a\nb\"c\"\n", "t.csv:2: a quote is inside a field that does not begin with one"},
};

INSTANTIATE_TEST_SUITE_P(Rows, CsvTableErrorTest, testing::ValuesIn(CsvErrorRows), [](const auto& row) {
    return std::string(row.param.name);
});

}  // namespace
