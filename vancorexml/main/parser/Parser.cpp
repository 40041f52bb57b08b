#include "vancorexml/main/parser/Parser.h"

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
    Record(message, info, MakeDiagnostic(ParseDiagnostic::Severity::Error, message));
}

void Parser::FatalError(const VString& message, const VError::ErrorInfo& info)
{
    Record(message, info, MakeDiagnostic(ParseDiagnostic::Severity::FatalError, message));
}

void Parser::Warning(const VString& message, const VError::ErrorInfo& info)
{
    Record(message, info, MakeDiagnostic(ParseDiagnostic::Severity::Warning, message));
}

void Parser::Record(const VString& text, const VError::ErrorInfo& info, ParseDiagnostic diagnostic)
{
    const bool isWarning = diagnostic.severity == ParseDiagnostic::Severity::Warning;
    m_fatallyErrored |= diagnostic.severity == ParseDiagnostic::Severity::FatalError;
    (isWarning ? m_warnings : m_errors).push_back(text);
    (isWarning ? m_warningInfos : m_errorInfos).push_back(info);
    m_diagnostics.push_back(std::move(diagnostic));
}
