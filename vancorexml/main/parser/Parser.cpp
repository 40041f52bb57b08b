#include "vancorexml/main/parser/Parser.h"

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr AssertionSite ParserIsRunning{
    "vancorexml\\main\\parser\\Parser", 22, "!m_work.isRunning", 0x61D3A9F5};  // own code

}  // namespace Assertions

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
}

void Parser::Error(const VString& message, const VError::ErrorInfo& info)
{
    m_errors.push_back(message);
    m_errorInfos.push_back(info);
}

void Parser::FatalError(const VString& message, const VError::ErrorInfo& info)
{
    Error(message, info);
    m_fatallyErrored = true;
}

void Parser::Warning(const VString& message, const VError::ErrorInfo& info)
{
    m_warnings.push_back(message);
    m_warningInfos.push_back(info);
}
