#include "vanxml/TreeCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "vanxml/ErrorLines.h"
#include "vanxml/EventParse.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/JsonText.h"
#include "vanxml/OptionChecks.h"
#include "vanxml/Outline.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/TextStyle.h"

namespace {

// A deeper line shows its level as a number. So the outline of 100,000 nested elements has 20 MB and not 15 GB.
constexpr std::size_t deepestGuide = 40;
// A line of text names at most so many attributes. JSON has all.
constexpr std::size_t mostAttributes = 12;

std::string OutlineToJson(const OutlineLine& line)
{
    std::string json = "{\"level\":" + std::to_string(line.level) + ",\"name\":";
    AppendJsonString(json, line.name.toStdString());
    json += ",\"count\":" + std::to_string(line.count) + ",\"size\":" + std::to_string(line.size) +
        ",\"text\":" + std::to_string(line.text) + ",\"hidden\":" + std::to_string(line.hidden) + ",\"attributes\":{";
    bool isFirst = true;
    for (const auto& [name, count] : line.attributes) {
        if (!isFirst)
            json += ',';
        isFirst = false;
        AppendJsonString(json, name.toStdString());
        json += ':' + std::to_string(count);
    }
    return json + "}}\n";
}

std::string ListAttributes(const OutlineLine& line)
{
    std::string text;
    for (std::size_t i = 0; i < std::min(mostAttributes, line.attributes.size()); ++i) {
        const auto& [name, count] = line.attributes[i];
        text += " @" + EscapeControlCharacters(name.toStdString()) + (count < line.count ? "?" : "");
    }
    if (line.attributes.size() > mostAttributes)
        text += " and " + std::to_string(line.attributes.size() - mostAttributes) + " more attributes";
    return text;
}

// Formats the lines of an outline, one after the other.
class OutlineFormatter {
public:
    OutlineFormatter(const std::vector<OutlineLine>& lines, std::size_t depth, const TextStyle& style)
        : m_depth(depth),
          m_style(style)
    {
        for (const OutlineLine& line : lines) {
            m_countWidth = std::max(m_countWidth, std::to_string(line.count).size());
            m_sizeWidth = std::max(m_sizeWidth, std::to_string(line.size).size());
        }
    }

    std::string Titles() const { return AtRight("count", m_countWidth) + AtRight("size", m_sizeWidth) + "element\n"; }

    std::string Format(const OutlineLine& line)
    {
        std::string text =
            AtRight(std::to_string(line.count), m_countWidth) + AtRight(std::to_string(line.size), m_sizeWidth);
        if (const std::string guide = NextGuide(line); !guide.empty())
            text += m_style.Paint(TextStyle::Part::Gutter, guide);
        text += m_style.Paint(TextStyle::Part::Place, EscapeControlCharacters(line.name.toStdString()));
        text += ListAttributes(line);
        if (line.hidden > 0 && line.level == m_depth)
            text += " … " + std::to_string(line.hidden) + (line.hidden == 1 ? " element" : " elements") + " inside";
        return text + "\n";
    }

private:
    static std::string AtRight(std::string_view text, std::size_t width)
    {
        return std::string(width - text.size(), ' ').append(text) + "  ";
    }

    std::string NextGuide(const OutlineLine& line)
    {
        if (line.level < 2)
            return std::string();
        if (line.level > deepestGuide)
            return m_above + "[level " + std::to_string(line.level) + "] ";
        // The guides of the levels above: each took one piece of this vector.
        m_pieces.resize(line.level - 1);
        m_pieces.back() = line.isLast ? "   " : "│  ";
        std::string guide;
        for (std::size_t i = 0; i + 1 < m_pieces.size(); ++i)
            guide += m_pieces[i];
        m_above = guide;
        m_above += m_pieces.back();
        return guide + (line.isLast ? "└─ " : "├─ ");
    }

    const std::size_t m_depth;
    const TextStyle& m_style;
    std::size_t m_countWidth = std::string_view("count").size();
    std::size_t m_sizeWidth = std::string_view("size").size();
    std::vector<std::string_view> m_pieces;  // for each level but the first: the guide through the lines inside
    std::string m_above;                     // the guides through the lines inside the last line that had guides
};

}  // namespace

void TreeCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("tree", "Print the outline of a document, with counts and sizes");
    command->add_option("FILE", m_file, "The document; - is standard input")->required();
    command->add_option("--depth", m_depth, "Print only the N upper levels; the sizes include all levels")
        ->check(IsWholeNumber(1, 1'000'000'000))
        ->type_name("N");
    command->add_flag("--json", m_isJson, "Print one JSON object for each line");
    AddColorOption(*command, m_colors);
    m_command = command;
}

bool TreeCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus TreeCommand::Run()
{
    const VString name = VString::fromStdString(m_file);
    const auto builder = std::make_shared<OutlineBuilder>(m_depth);
    try {
        SourceDocument source = SourceDocument::Read(name);
        const std::string errors = ParseEvents(source, builder);
        StandardStreams::WriteError(errors);
        if (!errors.empty())
            return ExitStatus::Faulty;
    } catch (...) {
        const FailureReport report = ReportException(name);
        StandardStreams::WriteError(report.lines);
        return report.status;
    }
    const std::vector<OutlineLine> lines = builder->ReleaseLines();
    if (m_isJson) {
        for (const OutlineLine& line : lines)
            StandardStreams::Write(OutlineToJson(line));
        return ExitStatus::Good;
    }
    const TextStyle style = TextStyle::ForStandardOutput(m_colors);
    OutlineFormatter formatter(lines, m_depth, style);
    StandardStreams::Write(formatter.Titles());
    for (const OutlineLine& line : lines)
        StandardStreams::Write(formatter.Format(line));
    return ExitStatus::Good;
}
