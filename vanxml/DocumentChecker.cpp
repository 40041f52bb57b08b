#include "vanxml/DocumentChecker.h"

#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/SourceDocument.h"

namespace {

void AddError(CheckedDocument& result, const std::string& line)
{
    result.lines += line;
    ++result.errors;
    result.status = ExitStatus::Faulty;
}

}  // namespace

CheckedDocument DocumentChecker::Check(const VString& name)
{
    try {
        SourceDocument source = SourceDocument::Read(name);
        CheckedDocument result;
        CheckSource(source, result);
        return result;
    } catch (...) {
        CheckedDocument result;
        result.status = ExitStatus::Failed;
        result.lines = FormatErrorLine(DescribeException(name));
        return result;
    }
}

void DocumentChecker::CheckSource(SourceDocument& source, CheckedDocument& result)
{
    if (m_schema) {
        result.wasChecked = CheckAgainst(*m_schema, source, result);
        return;
    }
    const SchemaSelection selection = SelectSchema(source.Source());
    result.wasChecked = CheckAgainst(selection.schema, source, result);
    // Well-formedness errors come first: a version problem is reported only for a document without them.
    if (result.errors == 0 && !selection.problem.IsEmpty())
        AddError(result, FormatErrorLine(source.Name(), selection.problem));
}

bool DocumentChecker::CheckAgainst(const SchemaReference& schema, SourceDocument& source, CheckedDocument& result)
{
    std::unique_ptr<SchemaDriver>& driver = m_drivers[schema];
    if (!driver)
        driver = std::make_unique<SchemaDriver>(schema);
    if (!driver->SchemaErrors().empty()) {
        for (const VString& message : driver->SchemaErrors())
            result.lines += FormatErrorLine(schema.name, message);
        result.brokenSchema = schema.name.toStdString();
        result.status = ExitStatus::Failed;
        return false;
    }
    for (const ParseDiagnostic& diagnostic : driver->Check(source.Source())) {
        if (IsError(diagnostic))
            AddError(result, FormatErrorLine(source.Name(), diagnostic));
    }
    return true;
}
