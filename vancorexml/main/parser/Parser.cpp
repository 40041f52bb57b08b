#include "vancorexml/main/parser/Parser.h"

#include <iterator>
#include <utility>

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr AssertionSite ParserIsRunning{
    "vancorexml\\main\\parser\\Parser", 22, "!m_work.isRunning", 0x61D3A9F5};  // own code

}  // namespace Assertions

ParseDiagnostic MakeDiagnostic(ParseDiagnostic::Severity severity, const VString& message)
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.message = message;
    return diagnostic;
}

}  // namespace

Parser::~Parser() = default;

Parser::WorkScope::WorkScope(Parser& parser) : m_parser(parser)
{
    parser.RequireIdle();
    parser.m_work.isRunning = true;
}

void Parser::RequireIdle() const
{
    if (m_work.isRunning)
        ThrowLogicException(Assertions::ParserIsRunning);
}

void Parser::Parse()
{
    const WorkScope work(*this);
    ClearErrorsAndWarnings();
    m_fatallyErrored = false;
    DoParse();
}

void Parser::ClearErrorsAndWarnings()
{
    m_warnings.clear();
    m_warningInfos.clear();
    m_errors.clear();
    m_errorInfos.clear();
    m_diagnostics.clear();
}

void Parser::Error(const VString& message, const VError::ErrorInfo& info)
{
    Record(ParseDiagnostic::Severity::Error, message, info);
    m_diagnostics.push_back(MakeDiagnostic(ParseDiagnostic::Severity::Error, message));
}

void Parser::FatalError(const VString& message, const VError::ErrorInfo& info)
{
    Record(ParseDiagnostic::Severity::FatalError, message, info);
    m_diagnostics.push_back(MakeDiagnostic(ParseDiagnostic::Severity::FatalError, message));
}

void Parser::Warning(const VString& message, const VError::ErrorInfo& info)
{
    Record(ParseDiagnostic::Severity::Warning, message, info);
    m_diagnostics.push_back(MakeDiagnostic(ParseDiagnostic::Severity::Warning, message));
}

void Parser::Record(ParseDiagnostic::Severity severity, const VString& message, const VError::ErrorInfo& info)
{
    const bool isWarning = severity == ParseDiagnostic::Severity::Warning;
    m_fatallyErrored |= severity == ParseDiagnostic::Severity::FatalError;
    std::vector<VError::ErrorInfo>& infos = isWarning ? m_warningInfos : m_errorInfos;
    infos.push_back(info);
    try {
        (isWarning ? m_warnings : m_errors).push_back(message);
    } catch (...) {
        infos.pop_back();
        throw;
    }
}

void Parser::Describe(std::vector<ParseDiagnostic> diagnostics)
{
    m_diagnostics.insert(
        m_diagnostics.end(), std::make_move_iterator(diagnostics.begin()), std::make_move_iterator(diagnostics.end()));
}
