#include "vanxml/RetargetCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "vancoredata/VResource.h"
#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/NameRetargeter.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/DocumentEdits.h"
#include "vanxml/DocumentText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/FirstTag.h"
#include "vanxml/SchemaSelection.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

VString Place(const VString& name, const RenamedName& renamed)
{
    if (renamed.line == 0)
        return name;
    return VFormatString("%1:%2:%3")
        .arg(name)
        .arg(VString::number(static_cast<std::uint64_t>(renamed.line)))
        .arg(VString::number(static_cast<std::uint64_t>(renamed.column)));
}

VString Describe(const RenamedName& renamed)
{
    return VString::fromStdString(DescribeRename(renamed.role, renamed.oldName, renamed.newName));
}

VString DescribeClash(const ClashingName& clash)
{
    return VFormatString("%1s '%2' and '%3' would both become '%4'")
        .arg(VString(GetRenameKind(clash.role).name))
        .arg(clash.other)
        .arg(clash.oldName)
        .arg(clash.newName);
}

// Returns the document with the lines of the diagnostics. Their positions are those in `text`.
RewrittenDocument Fail(
    const VString& name, const std::vector<ParseDiagnostic>& diagnostics, const std::string& text, ExitStatus status)
{
    RewrittenDocument result;
    result.status = status;
    result.lines = FormatDiagnostics(name, diagnostics, text);
    return result;
}

RewrittenDocument Fail(const VString& name, const VString& message)
{
    RewrittenDocument result;
    result.status = ExitStatus::Failed;
    result.lines = FormatErrorLine(name, message);
    return result;
}

bool HasErrors(const std::vector<ParseDiagnostic>& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(), IsError);
}

}  // namespace

// Borrows a parser with a schema from the command, so that each thread compiles each schema at most once.
class RetargetCommand::Validator {
public:
    Validator(const RetargetCommand& command, const SchemaReference& schema)
        : m_unused(command.m_unusedValidators),
          m_mutex(command.m_mutex),
          m_schema(schema.name)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            std::vector<std::unique_ptr<SchemaDriver>>& unused = m_unused[m_schema];
            if (!unused.empty()) {
                m_driver = std::move(unused.back());
                unused.pop_back();
            }
        }
        if (!m_driver)
            m_driver = std::make_unique<SchemaDriver>(schema);
    }

    ~Validator()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        try {
            m_unused[m_schema].push_back(std::move(m_driver));
        } catch (const std::bad_alloc&) {
            // The next document of this type compiles the schema again.
        }
    }

    Validator(const Validator&) = delete;
    Validator& operator=(const Validator&) = delete;

    // Returns the errors and warnings of the text. Valid until the next call.
    const std::vector<ParseDiagnostic>& Check(const std::string& text, const VString& name)
    {
        const std::unique_ptr<StringInputSource> source = StringInputSource::FromUtf8(std::string(text), name, true);
        return m_driver->Check(*source);
    }

private:
    std::map<VString, std::vector<std::unique_ptr<SchemaDriver>>>& m_unused;
    std::mutex& m_mutex;
    const VString m_schema;
    std::unique_ptr<SchemaDriver> m_driver;
};

void RetargetCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand(
        "retarget", "Rename the data sources, captions, fields and files to which documents refer");
    AddFileArguments(*command);
    m_renames.resize(GetRenameKinds().size());
    for (std::size_t i = 0; i < m_renames.size(); ++i) {
        const RenameKind& kind = GetRenameKinds()[i];
        command
            ->add_option(std::string("--") + kind.option,
                m_renames[i],
                std::string("Rename a ") + kind.name + "; can be repeated")
            ->type_name(kind.argument)
            ->allow_extra_args(false);
    }
    command->add_option("--from", m_tableFiles, "Read renames from a table with the columns kind, old and new")
        ->type_name("TABLE.csv")
        ->allow_extra_args(false);
    command->add_option("--protect", m_protected, "Keep the names of the fields of this data source")
        ->type_name("SOURCE");
}

ExitStatus RetargetCommand::Run()
{
    FillTables();
    const ExitStatus status = RewriteCommand::Run();
    if (status == ExitStatus::Failed || m_failures > 0)
        return status;  // the documents that failed may contain the names of the unused renames
    for (const std::string& unused : m_tables.DescribeUnused())
        StandardStreams::WriteError(FormatErrorLine("warning: " + unused));
    if (!m_protected.empty() && !m_hasFoundProtected) {
        StandardStreams::WriteError(
            FormatErrorLine("warning: --protect: no document has a data source '" + m_protected + "'"));
    }
    return status;
}

void RetargetCommand::FillTables()
{
    try {
        for (std::size_t i = 0; i < m_renames.size(); ++i) {
            for (const std::string& rename : m_renames[i])
                m_tables.Add(GetRenameKinds()[i], rename);
        }
    } catch (const ToolError& error) {
        throw UsageError(error.what());
    }
    for (const std::string& file : m_tableFiles)
        m_tables.AddTable(file);
    if (m_tables.IsEmpty())
        throw UsageError("retarget needs a rename, for example --data-source OLD=NEW");
    if (!m_protected.empty())
        m_tables.Protect(m_protected);
}

RewrittenDocument RetargetCommand::Rewrite(const VString& name, const std::string& bytes) const
{
    ++m_failures;
    RewrittenDocument result = Retarget(name, bytes);
    if (result.status == ExitStatus::Good)
        --m_failures;
    return result;
}

RewrittenDocument RetargetCommand::Retarget(const VString& name, const std::string& bytes) const
{
    const DocumentText document(name, bytes);
    const std::string& text = document.Text();
    const std::unique_ptr<StringInputSource> source = StringInputSource::FromUtf8(std::string(text), name, true);
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const SchemaSelection selection = SelectSchema(*source, FindEnd({1, 1}, std::string_view(text).substr(0, start)));
    if (!selection.problems.empty())
        return Fail(name, selection.problems, text, ExitStatus::Failed);
    if (selection.schema.kind == SchemaReference::Kind::None) {
        return Fail(name,
            "the document has no type that has schemas; its extension (.kxa to .kxf) names the type, or its first "
            "element with a version");
    }
    Validator validator(*this, selection.schema);
    const std::vector<ParseDiagnostic>& diagnostics = validator.Check(text, name);
    if (HasErrors(diagnostics))
        return Fail(name, diagnostics, text, ExitStatus::Faulty);

    LookForProtected(*source, GetRoles(selection.schema.name));
    DocumentEdits edits(name, bytes, document);
    XMLSourceRetargeter retargeter(GetRoles(selection.schema.name), m_tables.GetTables(), {edits.CharacterTest()});
    std::optional<EditedText> renamed = retargeter.Retarget(text, name);
    RewrittenDocument result;
    for (const ClashingName& clash : retargeter.GetClashes()) {
        result.lines += FormatErrorLine(Place(name, clash), DescribeClash(clash));
    }
    if (!renamed) {
        if (result.lines.empty())
            return Fail(name, retargeter.GetDiagnostics(), text, ExitStatus::Faulty);
        result.status = ExitStatus::Failed;
        return result;
    }
    if (renamed->edits.empty()) {
        result.bytes = bytes;
        return result;
    }
    const std::vector<ParseDiagnostic>& newDiagnostics = validator.Check(renamed->text, name);
    if (HasErrors(newDiagnostics)) {
        result = Fail(name, "the new names would make the document invalid:");
        result.lines += Fail(name, newDiagnostics, renamed->text, ExitStatus::Failed).lines;
        return result;
    }
    for (const RenamedName& each : retargeter.GetRenamedNames()) {
        m_tables.MarkUsed(each);
        result.lines += FormatDocumentLine(Place(name, each), Describe(each));
    }
    result.bytes = edits.Apply(std::move(*renamed));
    return result;
}

// Renames the data source, to see whether that changes a name.
void RetargetCommand::LookForProtected(InputSource& document, const NameRoles& roles) const
{
    if (m_protected.empty() || m_hasFoundProtected)
        return;
    const VString name = VString::fromStdString(m_protected);
    DOM tables;
    tables.AddDataSourceRename(name, name + "'");
    const auto finder = std::make_shared<NameRetargeter>(roles, tables);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(document, finder);
    parser->Parse();
    ThrowIfOutOfMemory(parser->GetDiagnostics());
    if (!finder->GetChanges().empty())
        m_hasFoundProtected = true;
}

const NameRoles& RetargetCommand::GetRoles(const VString& name) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::unique_ptr<NameRoles>& roles = m_roles[name];
    if (!roles) {
        StringInputSource schema(UTF8StringVResource(name).GetString(), name, false);
        roles = std::make_unique<NameRoles>(schema);
    }
    return *roles;
}
