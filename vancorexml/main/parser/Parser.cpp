#include "vancorexml/main/parser/Parser.h"

Parser::~Parser() = default;

void Parser::Parse()
{
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
