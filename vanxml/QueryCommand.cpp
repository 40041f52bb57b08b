#include "vanxml/QueryCommand.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vanxml/ElementPaths.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"

void QueryCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("query", "Print the elements that a path selects");
    command->add_option("FILE", m_file, "The document; - is standard input")->required();
    command
        ->add_option(
            "PATH", m_path, "Element names between slashes, from the document element down: a/b, /a/b, //b, a/*")
        ->required();

    CLI::Option* count = command->add_flag("--count", m_count, "Print the number of selected elements");
    command->add_flag("--first", m_first, "Select only the first match");
    CLI::Option* attribute =
        command
            ->add_option(
                "--attribute", m_attribute, "Print the value of attribute NAME for each selected element that has it")
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
    SourceDocument source = SourceDocument::Read(VString::fromStdString(m_file));
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    const std::unique_ptr<const DOM> document = parser.ParseXmlInputSource(source.Source(), false);
    if (document->HasErrors()) {
        for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
            if (IsError(diagnostic))
                StandardStreams::WriteError(FormatErrorLine(source.Name(), diagnostic));
        }
        return ExitStatus::Faulty;
    }
    std::size_t count = 0;
    const Visitor print = m_count ? [&count](const DOMElement&) { ++count; } : MakePrinter(source);
    ForEachMatch(*document->GetDocumentRoot(), print);
    if (m_count)
        StandardStreams::Write(std::to_string(count) + "\n");
    return ExitStatus::Good;
}

void QueryCommand::ForEachMatch(const DOMElement& root, const Visitor& visit) const
{
    const VString path = VString::fromStdString(m_path);
    std::vector<const DOMElement*> matches;
    if (m_withinOption->count() > 0) {
        matches = DOMPathCanopy::WithinCanopy(root, path, VString::fromStdString(m_within));
    } else if (m_underneathOption->count() > 0) {
        matches = DOMPathCanopy::UnderneathCanopy(root, path, VString::fromStdString(m_underneath));
    } else if (m_first) {
        if (const DOMElement* match = DOMPath::GetFirst(root, path)) {
            matches.push_back(match);
        }
    } else {
        for (const DOMElement& match : DOMPath::Walk(root, path))
            visit(match);
    }
    if (m_first && matches.size() > 1)
        matches.resize(1);
    for (const DOMElement* match : matches)
        visit(*match);
}

QueryCommand::Visitor QueryCommand::MakePrinter(SourceDocument& source) const
{
    if (m_attributeOption->count() > 0) {
        return [name = VString::fromStdString(m_attribute)](const DOMElement& element) {
            if (element.HasAttribute(name))
                StandardStreams::Write(element.GetAttribute(name).toStdString() + "\n");
        };
    }
    if (m_text)
        return [](const DOMElement& element) { StandardStreams::Write(element.GetText().toStdString() + "\n"); };
    if (m_xml) {
        return [](const DOMElement& element) {
            StandardStreams::Write(XMLDomFormatter::RenderAsXMLString(element, nullptr, false).toStdString());
        };
    }
    return MakePositionPrinter(source);
}

QueryCommand::Visitor QueryCommand::MakePositionPrinter(SourceDocument& source) const
{
    return [&source, paths = std::make_shared<ElementPaths>()](const DOMElement& element) {
        const SourceMap::Position place = source.MapPosition(
            {static_cast<std::uint64_t>(element.GetStartLine()), static_cast<std::uint64_t>(element.GetStartColumn())});
        const std::string path = EscapeControlCharacters(paths->PathOf(element));
        StandardStreams::Write(std::to_string(place.line) + ":" + std::to_string(place.column) + "\t" + path + "\n");
    };
}
