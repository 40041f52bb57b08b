#include "vanxml/FormatCommand.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <utility>

#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/DocumentText.h"
#include "vanxml/ToolError.h"

namespace {

std::string CheckEncoding(const std::string& encoding)
{
    const bool isUtf8 = CLI::detail::to_lower(encoding) == "utf-8";
    return isUtf8 ? std::string() : "'" + encoding + "' is not supported; write utf-8";
}

}  // namespace

void FormatCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand(
        "format", "Indent documents and sort their attributes; everything else stays, comments included");
    AddFileArguments(*command);
    command
        ->add_option("--encoding",
            m_encoding,
            "Write utf-8 without a byte order mark; by default, each document keeps its encoding and its mark")
        ->check(CLI::Validator(CheckEncoding, ""))
        ->type_name("utf-8");
    command->add_flag("--no-header", m_noHeader, "Leave out the XML declaration");
    command->add_flag("--strict",
        m_isStrict,
        "Escape all texts in the same way as attribute values, and write no new CDATA sections");
}

RewrittenDocument FormatCommand::Rewrite(const VString& name, const std::string& bytes) const
{
    const DocumentText document(name, bytes);
    const FileEncoding encoding = m_encoding.empty() ? document.Encoding() : FileEncoding();
    XMLSourceFormatter::Options options;
    options.writesHeader = !m_noHeader;
    options.isStrict = m_isStrict;
    options.hasAllCharacters = HasAllCharacters(encoding);
    if (m_encoding.empty())
        options.encoding = document.DeclaredEncoding();
    if (m_noHeader && !options.hasAllCharacters)
        throw ToolError("'" + name.toStdString() + "' needs its XML declaration, which names the encoding " +
            options.encoding + "; use --encoding utf-8 with --no-header");

    XMLSourceFormatter formatter(options);
    RewrittenDocument result;
    std::optional<std::string> formatted = formatter.Format(document.Text(), name);
    if (!formatted) {
        result.lines = FormatDiagnostics(name, formatter.GetDiagnostics(), document.Text());
        result.status = ExitStatus::Faulty;
        return result;
    }
    if (IsUtf8(encoding)) {
        result.bytes = EncodeDocument(std::move(*formatted), encoding);
        return result;
    }
    // The formatter has verified the text, but not its bytes.
    result.bytes = EncodeDocument(std::string(*formatted), encoding);
    if (!IsReadAs(result.bytes, *formatted))
        throw XMLVerificationError("the formatted document would differ from the original");
    return result;
}
