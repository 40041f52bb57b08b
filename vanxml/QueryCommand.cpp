#include "vanxml/QueryCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <utility>

#include "art-cpp/Activity.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/ElementPaths.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/FirstMatch.h"
#include "vanxml/MatchCount.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

bool IsPath(const std::string& text)
{
    try {
        const QueryPath path(text);
        return true;
    } catch (const UsageError&) {
        return false;
    }
}

bool IsFileOrFolder(const std::string& argument)
{
    if (argument == "-")
        return true;
    // On Windows, "//a/b" could also be the share "b" of the computer "a", for which the system would search the
    // network for seconds. Such a name is written with backslashes.
    if (OperatingSystem::IsWindows && argument.starts_with("//"))
        return false;
    const std::filesystem::path path(VString::fromStdString(argument).View());
    const std::filesystem::file_type type = OperatingSystem::TypeOf(path);
    // On Windows, names of elements such as "aux" also name devices, in every folder.
    if (OperatingSystem::IsWindows && type == std::filesystem::file_type::character)
        return !IsPath(argument);
    return type != std::filesystem::file_type::not_found;
}

bool IsFolder(const std::string& argument)
{
    const std::filesystem::path path(VString::fromStdString(argument).View());
    return OperatingSystem::TypeOf(path) == std::filesystem::file_type::directory;
}

// True for the name of an element, without wildcards.
bool IsName(const std::string& text)
{
    if (!IsPath(text))
        return false;
    const QueryPath path(text);
    return path.Steps().size() == 1 && !path.HasPredicates() && path.Steps().front().name != "*";
}

// True for a quoted pattern such as 'docs/*.xml'. "//*" is a path, although it matches files too.
bool IsPatternForFiles(const std::string& argument)
{
    return !IsPath(argument) && !argument.starts_with("//") && MatchesFiles(argument);
}

// Refuses arguments whose last one should be the path but is probably a file.
void RequirePathAtEnd(const std::vector<std::string>& arguments)
{
    const std::string& first = arguments.front();
    const std::string& last = arguments.back();
    if (IsFileOrFolder(last) && !IsFolder(last))
        throw UsageError("query needs a PATH behind the files, but '" + last +
            "' is a file; if it is also the path, write --at '" + last + "'");
    const bool looksLikeFile = last.find('.') != std::string::npos;
    if (arguments.size() > 1 && looksLikeFile && !IsFileOrFolder(first) && IsPath(first))
        throw UsageError("there is no file '" + first + "'; if it is the path, write --at '" + first + "'");
}

std::string FormatPlace(SourcePosition place, const std::string& path)
{
    return std::to_string(place.line) + ":" + std::to_string(place.column) + "\t" + EscapeControlCharacters(path) +
        "\n";
}

// Calls `visit` for the elements that a path with predicates selects, in document order.
void ForEachMatchOf(const QueryPath& path, const DOMElement& root, const std::function<void(const DOMElement&)>& visit)
{
    struct Frame {
        DOMElementConstChildren::const_iterator next;
        DOMElementConstChildren::const_iterator end;
    };
    QueryMatcher matcher(path);
    std::vector<Frame> frames;
    const auto enter = [&](const DOMElement& element) {
        if (matcher.Enter(element.GetName(), element.GetAttributes()))
            visit(element);
        const DOMElementConstChildren children = element.GetChildren();
        if (matcher.CanMatchInside())
            frames.push_back({children.begin(), children.end()});
        else
            matcher.Leave();
    };
    enter(root);
    // A loop instead of a recursion, because elements can be nested deeply.
    while (!frames.empty()) {
        if (frames.back().next != frames.back().end) {
            enter(**frames.back().next++);
        } else {
            frames.pop_back();
            matcher.Leave();
        }
    }
}

}  // namespace

void QueryCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("query", "Print the elements that a path selects");
    m_selection.AddOptions(*command);
    command
        ->add_option("PATH",
            m_unused,
            "Behind the files: element names between slashes, from the document element down, such as a/b, //b, a/*, "
            "a/b[2], a/b[@id='7'] or a/b/@id. PATH may also stand in front of the files, if no file has its name")
        ->type_name("");
    m_atOption = command->add_option("--at", m_at, "The path; then all other arguments are files")->type_name("PATH");

    CLI::Option* count = command->add_flag("--count", m_count, "Print the number of selected elements");
    command->add_flag("--first", m_first, "Select only the first match in each document, and stop there");
    CLI::Option* attribute =
        command
            ->add_option("--attribute",
                m_attribute,
                "Print the value of attribute NAME for each selected element that has it, like PATH/@NAME")
            ->type_name("NAME");
    CLI::Option* text = command->add_flag("--text", m_text, "Print the text of each selected element");
    CLI::Option* xml = command->add_flag("--xml", m_xml, "Print each selected element as XML");
    count->excludes(attribute)->excludes(text)->excludes(xml);
    attribute->excludes(text)->excludes(xml);
    text->excludes(xml);

    CLI::Option* within =
        command
            ->add_option("--within",
                m_within,
                "Select the children called NAME of the elements at PATH, their children called NAME, and so on")
            ->type_name("NAME");
    CLI::Option* underneath = command
                                  ->add_option("--underneath",
                                      m_underneath,
                                      "Apply SUBPATH to the children of each element at PATH, "
                                      "and to the children of the elements of the same name that are nested in it")
                                  ->type_name("SUBPATH");
    within->excludes(underneath);

    m_command = command;
    m_attributeOption = attribute;
    m_withinOption = within;
    m_underneathOption = underneath;
}

bool QueryCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus QueryCommand::Run()
{
    m_path.emplace(m_atOption->count() > 0 ? m_at : ReleasePath());
    m_wantedAttribute = m_attributeOption->count() > 0 ? VString::fromStdString(m_attribute) : m_path->Attribute();
    RequireUsable();
    const SelectedFiles selected = m_selection.Select();
    const bool hasPrefix = selected.files.size() > 1 || selected.hasFolder || selected.hasList;
    bool hasMatch = false;
    bool hasFailed = false;
    for (const SelectedFile& file : selected.files) {
        if (!file.error.empty()) {
            StandardStreams::WriteError(FormatErrorLine(file.error));
            hasFailed = true;
            continue;
        }
        m_prefix = hasPrefix ? EscapeControlCharacters(file.name.toStdString()) + ":" : "";
        const ExitStatus status = Search(file.name);
        hasMatch |= status == ExitStatus::Good;
        hasFailed |= status == ExitStatus::Failed;
    }
    if (hasFailed)
        return ExitStatus::Failed;
    return hasMatch ? ExitStatus::Good : ExitStatus::Faulty;
}

std::string QueryCommand::ReleasePath()
{
    std::vector<std::string>& arguments = m_selection.Arguments();
    if (arguments.size() < (m_selection.HasList() ? 1 : 2))
        throw UsageError("query needs a PATH behind the files, such as vanxml query FILE //title");
    const bool isFirst = arguments.size() > 1 && !IsFileOrFolder(arguments.front()) &&
        (IsFileOrFolder(arguments.back()) || IsPatternForFiles(arguments.back()));
    if (!isFirst)
        RequirePathAtEnd(arguments);
    const auto place = isFirst ? arguments.begin() : arguments.end() - 1;
    std::string path = std::move(*place);
    arguments.erase(place);
    return path;
}

void QueryCommand::RequireUsable() const
{
    const bool hasCanopies = m_withinOption->count() > 0 || m_underneathOption->count() > 0;
    if (!m_path->Attribute().IsEmpty()) {
        const std::string attribute = "'/@" + m_path->Attribute().toStdString() + "'";
        if (m_attributeOption->count() > 0 || m_text || m_xml)
            throw UsageError("a path that ends with " + attribute + " excludes --attribute, --text and --xml");
        if (hasCanopies)
            throw UsageError(
                "--within and --underneath need a path to elements; write --attribute instead of " + attribute);
    }
    if (m_attributeOption->count() > 0 && !IsName(m_attribute)) {
        const bool hasSign = m_attribute.starts_with("@") && IsName(m_attribute.substr(1));
        throw UsageError("--attribute: '" + m_attribute + "' is not the name of an attribute" +
            (hasSign ? "; write '" + m_attribute.substr(1) + "'" : ""));
    }
    if (m_withinOption->count() > 0 && !IsName(m_within)) {
        throw UsageError(m_within == "*" ? "--within: '*' is not a wildcard here; write the name of an element"
                                         : "--within: '" + m_within + "' is not the name of an element");
    }
    if (m_underneathOption->count() > 0) {
        const QueryPath subPath(m_underneath);
        if (subPath.HasPredicates() || !subPath.Attribute().IsEmpty())
            throw UsageError("--underneath: a SUBPATH has neither predicates nor attributes");
        if (m_underneath.starts_with("/"))
            throw UsageError("--underneath: a SUBPATH does not begin with a slash");
    }
}

ExitStatus QueryCommand::Search(const VString& file)
{
    try {
        art::Activity activity("vanxml.document");
        activity.Tag("file", file);
        const std::optional<std::size_t> matches = SearchFile(file);
        if (!matches)
            return ExitStatus::Failed;
        if (m_count)
            PrintLines(std::to_string(*matches) + "\n");
        return *matches > 0 ? ExitStatus::Good : ExitStatus::Faulty;
    } catch (...) {
        StandardStreams::WriteError(ReportException(file).lines);
        return ExitStatus::Failed;
    }
}

std::optional<std::size_t> QueryCommand::SearchFile(const VString& file)
{
    // Only the whole tree shows which elements are canopies.
    const bool hasCanopies = m_withinOption->count() > 0 || m_underneathOption->count() > 0;
    if (m_first && !hasCanopies)
        return SearchStart(file);
    SourceDocument source = SourceDocument::Read(file);
    if (m_count && !hasCanopies) {
        // A count needs no tree, which takes several times the memory of most documents. A document with errors is
        // parsed again for its messages.
        if (const std::optional<std::size_t> count = CountMatches(source, *m_path, m_wantedAttribute))
            return count;
    }
    return SearchTree(source);
}

std::optional<std::size_t> QueryCommand::SearchTree(SourceDocument& source)
{
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    const std::unique_ptr<const DOM> document = parser.ParseXmlInputSource(source.Source(), false);
    ThrowIfOutOfMemory(parser.GetDiagnostics());
    if (document->HasErrors()) {
        StandardStreams::WriteError(FormatDiagnostics(parser.GetDiagnostics(), source));
        return std::nullopt;
    }
    std::size_t count = 0;
    ElementPaths paths;
    const bool printsPlace = m_wantedAttribute.IsEmpty() && !m_text && !m_xml;
    ForEachMatch(*document->GetDocumentRoot(), [&](const DOMElement& element) {
        if (!HasWantedAttribute(element) || (m_first && count > 0))
            return;
        ++count;
        if (m_count)
            return;
        if (!printsPlace) {
            PrintContent(element);
            return;
        }
        const SourceMap::Position place = source.MapPosition(
            {static_cast<std::uint64_t>(element.GetStartLine()), static_cast<std::uint64_t>(element.GetStartColumn())});
        PrintLines(FormatPlace(place, paths.PathOf(element)));
    });
    return count;
}

std::optional<std::size_t> QueryCommand::SearchStart(const VString& file)
{
    std::string errors;
    const FirstMatchQuery query{*m_path, m_wantedAttribute, m_text || m_xml};
    const std::optional<FirstMatch> match = FindFirstMatch(file, query, errors);
    if (!match) {
        StandardStreams::WriteError(errors);
        return errors.empty() ? std::optional<std::size_t>(0) : std::nullopt;
    }
    if (m_count)
        return 1;
    if (m_wantedAttribute.IsEmpty() && !m_text && !m_xml)
        PrintLines(FormatPlace(match->place, match->path));
    else
        PrintContent(*match->tree->GetDocumentRoot());
    return 1;
}

void QueryCommand::ForEachMatch(const DOMElement& root, const Visitor& visit) const
{
    if (m_withinOption->count() == 0 && m_underneathOption->count() == 0) {
        ForEachPathMatch(root, visit);
        return;
    }
    ForEachPathMatch(root, [&](const DOMElement& canopy) {
        const std::vector<const DOMElement*> matches = m_withinOption->count() > 0
            ? DOMPathCanopy::WithinCanopy(canopy, canopy.GetName(), VString::fromStdString(m_within))
            : DOMPathCanopy::UnderneathCanopy(canopy, canopy.GetName(), VString::fromStdString(m_underneath));
        for (const DOMElement* match : matches)
            visit(*match);
    });
}

void QueryCommand::ForEachPathMatch(const DOMElement& root, const Visitor& visit) const
{
    if (m_path->HasPredicates()) {
        ForEachMatchOf(*m_path, root, visit);
        return;
    }
    const VString path = m_path->LibraryPath();
    for (const DOMElement& match : DOMPath::Walk(root, path))
        visit(match);
}

bool QueryCommand::HasWantedAttribute(const DOMElement& element) const
{
    return m_wantedAttribute.IsEmpty() || element.HasAttribute(m_wantedAttribute);
}

void QueryCommand::PrintContent(const DOMElement& element) const
{
    if (m_xml)
        PrintLines(XMLDomFormatter::RenderAsXMLBytes(element, nullptr, false));
    else if (m_text)
        PrintLines(element.GetText().toStdString() + "\n");
    else
        PrintLines(element.GetAttribute(m_wantedAttribute).toStdString() + "\n");
}

// Every line begins with the prefix. The text ends with a line feed.
void QueryCommand::PrintLines(const std::string& text) const
{
    if (m_prefix.empty()) {
        StandardStreams::Write(text);
        return;
    }
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start) + 1;
        StandardStreams::Write(m_prefix);
        StandardStreams::Write(std::string_view(text).substr(start, end - start));
        start = end;
    }
}
