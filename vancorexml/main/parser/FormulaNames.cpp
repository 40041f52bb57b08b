#include "vancorexml/main/parser/FormulaNames.h"

#include <string_view>
#include <utility>

namespace {

class FormulaScanner {
public:
    explicit FormulaScanner(const VString& formula) : m_formula(formula), m_text(formula.View()) {}

    std::vector<FormulaName> FindNames()
    {
        while (m_position < m_text.size()) {
            const char16_t unit = m_text[m_position];
            if (unit == u'[')
                ReadName();
            else if (unit == u'\'' || unit == u'"')
                SkipBehind(m_text.substr(m_position, 1), 1);  // a doubled delimiter starts another text at once
            else if (IsAt(u"//"))
                SkipBehind(u"\n", 2);
            else if (IsAt(u"/*"))
                SkipBehind(u"*/", 2);
            else
                ++m_position;
        }
        return std::move(m_names);
    }

private:
    bool IsAt(std::u16string_view text) const { return m_text.substr(m_position).starts_with(text); }

    // Skips `opening` code units and everything up to the end of the next `end`. Returns false, at the end of the
    // formula, if there is no `end`.
    bool SkipBehind(std::u16string_view end, std::size_t opening)
    {
        const std::size_t found = m_text.find(end, m_position + opening);
        const bool isFound = found != std::u16string_view::npos;
        m_position = isFound ? found + end.size() : m_text.size();
        return isFound;
    }

    // Skips a bracketed part. Returns false, at the end of the formula, if the part has no end.
    bool SkipPart()
    {
        bool isComplete = SkipBehind(u"]", 1);
        while (isComplete && IsAt(u"]"))
            isComplete = SkipBehind(u"]", 1);
        return isComplete;
    }

    void ReadName()
    {
        const std::size_t start = m_position;
        bool isComplete = SkipPart();
        std::size_t parts = 1;
        while (isComplete && IsAt(u".[")) {
            ++m_position;
            isComplete = SkipPart();
            ++parts;
        }
        if (!isComplete || parts > 2)
            return;
        const std::size_t length = m_position - start;
        const FieldName name = FieldName::ParseGlobal(m_formula.mid(static_cast<int>(start), static_cast<int>(length)));
        if (!name.IsEmpty())
            m_names.push_back({start, length, name});
    }

    const VString& m_formula;
    const std::u16string_view m_text;
    std::size_t m_position = 0;
    std::vector<FormulaName> m_names;
};

}  // namespace

std::vector<FormulaName> FindFormulaNames(const VString& formula)
{
    return FormulaScanner(formula).FindNames();
}
