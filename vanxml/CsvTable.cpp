#include "vanxml/CsvTable.h"

#include <algorithm>
#include <cstddef>

#include "vanxml/ToolError.h"

namespace {

class CsvParser {
public:
    CsvParser(std::string_view text, const std::string& name) : m_text(text), m_name(name) {}

    std::vector<CsvRecord> Parse()
    {
        std::vector<CsvRecord> records;
        while (!m_text.empty()) {
            if (!ConsumeLineEnd())
                records.push_back(ParseRecord());
        }
        return records;
    }

private:
    CsvRecord ParseRecord()
    {
        CsvRecord record{m_line, {}};
        do {
            record.fields.push_back(m_text.starts_with('"') ? ParseQuotedField() : ParsePlainField());
        } while (Consume(","));
        if (!m_text.empty() && !ConsumeLineEnd())
            Fail("text follows the closing quote of a field");
        return record;
    }

    std::string ParsePlainField()
    {
        std::size_t length = std::min(m_text.find_first_of(",\n"), m_text.size());
        if (length < m_text.size() && m_text[length] == '\n' && length > 0 && m_text[length - 1] == '\r')
            --length;
        std::string field(m_text.substr(0, length));
        if (field.find('"') != std::string::npos)
            Fail("a quote is inside a field that does not begin with one");
        m_text.remove_prefix(length);
        return field;
    }

    std::string ParseQuotedField()
    {
        const std::size_t start = m_line;
        std::string field;
        Consume("\"");
        for (;;) {
            const std::size_t end = m_text.find('"');
            if (end == std::string_view::npos) {
                m_line = start;
                Fail("a quoted field has no end");
            }
            field += m_text.substr(0, end);
            m_line += static_cast<std::size_t>(
                std::count(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
            m_text.remove_prefix(end + 1);
            if (!Consume("\""))
                return field;
            field += '"';
        }
    }

    bool Consume(std::string_view text)
    {
        const bool isNext = m_text.starts_with(text);
        if (isNext)
            m_text.remove_prefix(text.size());
        return isNext;
    }

    bool ConsumeLineEnd()
    {
        const bool isNext = Consume("\r\n") || Consume("\n");
        m_line += isNext ? 1 : 0;
        return isNext;
    }

    [[noreturn]] void Fail(const char* reason) const
    {
        throw ToolError(m_name + ":" + std::to_string(m_line) + ": " + reason);
    }

    std::string_view m_text;  // the rest
    const std::string& m_name;
    std::size_t m_line = 1;
};

}  // namespace

std::vector<CsvRecord> ParseCsv(std::string_view text, const std::string& name)
{
    return CsvParser(text, name).Parse();
}
