#include "vanxml/QueryPath.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>
#include <utility>

#include "vancorexml/main/parser/XMLUtils.h"
#include "vanxml/ToolError.h"

namespace {

using Step = QueryPath::Step;
using Predicate = QueryPath::Predicate;

// Reads a path. Throws UsageError with the whole path and a hint.
class PathReader {
public:
    explicit PathReader(const std::string& text) : m_text(text) {}

    void Read(std::vector<Step>& steps, VString& attribute)
    {
        if (m_text.empty())
            throw UsageError("the path is empty; write element names between slashes, such as a/b");
        for (bool hasMore = true; hasMore; hasMore = Skip('/')) {
            if (Skip('@'))
                attribute = ReadAttributeStep(steps);
            else
                steps.push_back(ReadStep());
        }
        if (!IsAtEnd())
            RefuseStep();
        if (steps.back().name.IsEmpty())
            Refuse("a path that ends with a slash selects nothing; write '" + m_text + "*' for the elements inside");
    }

private:
    [[noreturn]] void Refuse(const std::string& hint) const
    {
        throw UsageError("the path '" + m_text + "' cannot match: " + hint);
    }

    // Refuses the step at the current position, which is not at the end of a step.
    [[noreturn]] void RefuseStep() const
    {
        const std::size_t start = m_text.rfind('/', m_position) + 1;  // npos + 1 is 0
        const std::string step = m_text.substr(start, m_text.find('/', start) - start);
        const std::size_t axis = step.find("::");
        if (step.starts_with("child::"))
            Refuse("write '" + step.substr(axis + 2) + "' instead of '" + step + "'");
        if (step.starts_with("descendant::") || step.starts_with("descendant-or-self::"))
            Refuse("write '//" + step.substr(axis + 2) + "' instead of '/" + step + "'");
        if (step.starts_with("attribute::"))
            Refuse("write '@" + step.substr(axis + 2) + "' instead of '" + step + "'");
        if (axis != std::string::npos) {
            Refuse("the axis '" + step.substr(0, axis + 2) +
                "' is not supported; a path goes from elements to their children only");
        }
        if (step == "." || step == "..")
            Refuse("'" + step + "' is not supported; write the path from the document element down");
        if (step == "text()")
            Refuse("write the option --text instead of '/text()'");
        if (step == "node()")
            Refuse("write '*' instead of 'node()'");
        if (step.starts_with("count("))
            Refuse("write the option --count instead of 'count(...)'");
        if (step.find('(') != std::string::npos)
            Refuse("functions and groups are not supported; predicates are [n], [@name] and [@name='value']");
        if (step.find('[') == std::string::npos && step.find(']') != std::string::npos)
            Refuse("']' has no '['");
        if (step.find('@') != std::string::npos)
            Refuse("an attribute is a step of its own; write '/@name'");
        if (step.find('|') != std::string::npos)
            Refuse("'|' is not supported; run vanxml once for each path");
        if (step.ends_with(":*"))
            Refuse("'*' stands for a whole name, with its prefix");
        Refuse("'" + step + "' is not the name of an element");
    }

    [[noreturn]] void RefusePredicate(std::size_t start) const
    {
        const std::size_t end = m_text.find(']', start);
        const std::string predicate = m_text.substr(start, end == std::string::npos ? end : end + 1 - start);
        if (end == std::string::npos)
            Refuse("'" + predicate + "' has no ']'");
        if (predicate.find(" and ") != std::string::npos)
            Refuse("write several predicates behind each other instead of 'and', such as [@a='1'][@b='2']");
        if (predicate.find('@') != std::string::npos && predicate.find('=') != std::string::npos &&
            predicate.find_first_of("'\"") == std::string::npos) {
            Refuse("the value in '" + predicate +
                "' needs quotes, such as [@name='value']; the shell removes quotes that are not quoted themselves");
        }
        Refuse("the predicate '" + predicate + "' is not supported; predicates are [n], [@name] and [@name='value']");
    }

    VString ReadAttributeStep(std::vector<Step>& steps)
    {
        VString name = ReadName();
        if (name.IsEmpty())
            Refuse("the name of an attribute must follow '@'");
        const bool isAnywhere = steps.size() >= 2 &&
            std::all_of(steps.begin(), steps.end(), [](const Step& step) { return step.name.IsEmpty(); });
        if (isAnywhere)
            steps.push_back({"*", {}});
        if (!steps.empty() && steps.back().name.IsEmpty() && !steps.front().name.IsEmpty()) {
            const std::string attribute = "@" + name.toStdString();
            const std::string elements = m_text.substr(0, m_position - attribute.size());
            Refuse("'" + attribute + "' needs an element in front of it; write '" + elements + "*/" + attribute + "'");
        }
        if (steps.empty() || steps.back().name.IsEmpty()) {
            Refuse("'@" + name.toStdString() + "' needs an element in front of it; write 'a/@" + name.toStdString() +
                "', or '//*/@" + name.toStdString() + "' for all elements");
        }
        if (!IsAtEnd())
            Refuse("'/@" + name.toStdString() + "' must be the end of the path");
        return name;
    }

    Step ReadStep()
    {
        Step step;
        if (Skip('*'))
            step.name = "*";
        else
            step.name = ReadName();
        while (!step.name.IsEmpty() && Skip('['))
            step.predicates.push_back(ReadPredicate());
        const bool isWhole = IsAtEnd() || m_text[m_position] == '/';
        if (!isWhole)
            RefuseStep();
        return step;
    }

    // The current position is behind the opening bracket.
    Predicate ReadPredicate()
    {
        const std::size_t start = m_position - 1;
        Predicate predicate;
        SkipBlanks();
        if (Skip('@')) {
            predicate.kind = Predicate::Kind::HasAttribute;
            predicate.name = ReadName();
            SkipBlanks();
            if (predicate.name.IsEmpty())
                RefusePredicate(start);
            if (Skip('=')) {
                predicate.kind = Predicate::Kind::AttributeValue;
                SkipBlanks();
                predicate.value = ReadQuoted(start);
            }
        } else {
            const char* const text = m_text.data();
            const auto [end, error] = std::from_chars(text + m_position, text + m_text.size(), predicate.position);
            if (error == std::errc::invalid_argument)
                RefusePredicate(start);
            m_position = static_cast<std::size_t>(end - text);
            if (error == std::errc::result_out_of_range)
                Refuse("no element has the position " + m_text.substr(start + 1, m_position - start - 1));
            if (predicate.position == 0)
                Refuse("positions count from 1");
        }
        SkipBlanks();
        if (!Skip(']'))
            RefusePredicate(start);
        return predicate;
    }

    // Reads a value between quotes. `start` is that of the predicate.
    VString ReadQuoted(std::size_t start)
    {
        const char quote = IsAtEnd() ? '\0' : m_text[m_position];
        const bool isQuote = quote == '\'' || quote == '"';
        const std::size_t end = isQuote ? m_text.find(quote, m_position + 1) : std::string::npos;
        if (end == std::string::npos)
            RefusePredicate(start);
        VString value = VString::fromStdString(m_text.substr(m_position + 1, end - m_position - 1));
        m_position = end + 1;
        return value;
    }

    // Returns an empty text if there is no name here. "::" is part of an axis and not of a name.
    VString ReadName()
    {
        const std::size_t start = m_position;
        if (IsAtEnd() || !XmlUtils::IsFirstNameChar(m_text[m_position]))
            return VString();
        while (!IsAtEnd() && XmlUtils::IsNameChar(m_text[m_position])) {
            if (m_text.compare(m_position, 2, "::") == 0)
                break;
            ++m_position;
        }
        return VString::fromStdString(m_text.substr(start, m_position - start));
    }

    bool IsAtEnd() const noexcept { return m_position == m_text.size(); }

    bool Skip(char expected) noexcept
    {
        if (IsAtEnd() || m_text[m_position] != expected)
            return false;
        ++m_position;
        return true;
    }

    void SkipBlanks() noexcept
    {
        while (!IsAtEnd() && XmlUtils::IsWhitespace(m_text[m_position]))
            ++m_position;
    }

    const std::string& m_text;
    std::size_t m_position = 0;
};

}  // namespace

QueryPath::QueryPath(const std::string& text)
{
    PathReader(text).Read(m_steps, m_attribute);
}

bool QueryPath::HasPredicates() const
{
    return std::any_of(m_steps.begin(), m_steps.end(), [](const Step& step) { return !step.predicates.empty(); });
}

VString QueryPath::LibraryPath() const
{
    std::vector<VString> names;
    for (const Step& step : m_steps)
        names.push_back(step.name);
    return VString::join(names, "/");
}

QueryMatcher::QueryMatcher(const QueryPath& path) : m_steps(path.Steps())
{
    Level& first = m_levels.emplace_back();
    const bool startsWithSlash = m_steps.front().name.IsEmpty();
    Activate(first, startsWithSlash ? 1 : 0);
    ActivateSuccessors(first);
}

bool QueryMatcher::Enter(const VString& name, const AttributeMap& attributes)
{
    if (m_levels.size() == m_depth + 1)
        m_levels.emplace_back();
    Level& level = m_levels[m_depth];
    Level& inside = m_levels[++m_depth];
    inside.active.clear();
    bool isMatch = false;
    for (ActiveStep& active : level.active) {
        if (m_steps[active.index].name.IsEmpty())
            Activate(inside, active.index);
        else if (!Matches(active, name, attributes))
            continue;
        else if (active.index + 1 == m_steps.size())
            isMatch = true;
        else
            Activate(inside, active.index + 1);
    }
    ActivateSuccessors(inside);
    return isMatch;
}

void QueryMatcher::Leave() noexcept
{
    --m_depth;
}

bool QueryMatcher::Matches(ActiveStep& active, const VString& name, const AttributeMap& attributes) const
{
    const Step& step = m_steps[active.index];
    if (step.name.View() != u"*" && step.name != name)
        return false;
    std::size_t* count = active.counts.data();
    for (const Predicate& predicate : step.predicates) {
        if (predicate.kind == Predicate::Kind::Position) {
            if (++*count++ != predicate.position)
                return false;
            continue;
        }
        const auto attribute = attributes.find(predicate.name);
        if (attribute == attributes.end())
            return false;
        if (predicate.kind == Predicate::Kind::AttributeValue && attribute->second != predicate.value)
            return false;
    }
    return true;
}

// Adds a step to a level, unless it is there already. Steps are added in ascending order.
void QueryMatcher::Activate(Level& level, std::size_t step) const
{
    if (level.active.empty() || level.active.back().index != step)
        level.active.push_back(MakeActive(step));
}

// A step that stands for any number of levels may stand for none, so the step behind it is active too. This happens
// once for each level: each further empty step skips a level.
void QueryMatcher::ActivateSuccessors(Level& level) const
{
    std::vector<ActiveStep>& active = level.active;
    for (std::size_t i = 0; i < active.size(); ++i) {
        const std::size_t next = active[i].index + 1;
        const bool isActive = i + 1 < active.size() && active[i + 1].index == next;
        if (!m_steps[active[i].index].name.IsEmpty() || isActive)
            continue;
        ++i;
        active.insert(active.begin() + static_cast<std::ptrdiff_t>(i), MakeActive(next));
    }
}

QueryMatcher::ActiveStep QueryMatcher::MakeActive(std::size_t step) const
{
    const std::vector<Predicate>& predicates = m_steps[step].predicates;
    const auto isPosition = [](const Predicate& predicate) { return predicate.kind == Predicate::Kind::Position; };
    const auto positions = std::count_if(predicates.begin(), predicates.end(), isPosition);
    return {step, std::vector<std::size_t>(static_cast<std::size_t>(positions))};
}
