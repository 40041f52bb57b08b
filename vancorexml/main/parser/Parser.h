// The base class of the parsers.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"

// Runs a parse and collects its errors and warnings, each with its identity (VError::ErrorInfo).
// Faults in a document are entries of these lists, never exceptions.
//
// Ownership: owns its lists. Only derived classes can copy it.
//
// Threads: one at a time; no lock.
class VANCOREXML_API Parser {
public:
    virtual ~Parser();

    // Clears the lists, which may contain errors of loaded schemas, and runs the parse. Raises a
    // LogicException (code 0x61D3A9F5), before anything changes, if a callback of this parser calls it.
    void Parse();
    // Clears the lists. Does not change the result of HasFatallyErrored().
    void ClearErrorsAndWarnings();

    bool HasErrors() const noexcept { return !m_errors.empty(); }
    bool HasWarnings() const noexcept { return !m_warnings.empty(); }
    // True if a fatal error was recorded since the last parse began. GetErrors() contains it too.
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }

    // These return the messages in the order in which they were recorded. Valid until the next parse. Lines
    // and columns in the messages count in the text that Xerces reads, which may differ from the source; see
    // GetDiagnostics().
    const std::vector<VString>& GetErrors() const noexcept { return m_errors; }
    const std::vector<VString>& GetWarnings() const noexcept { return m_warnings; }
    // These return one identity for each message, in the same order. A message without an identity has
    // VError::ErrorInfo::NoError.
    std::vector<VError::ErrorInfo> GetMetadataForErrors() const { return m_errorInfos; }
    std::vector<VError::ErrorInfo> GetMetadataForWarnings() const { return m_warningInfos; }
    // Returns the errors and warnings as data, in the order of their places. Their messages are easier to understand
    // than those of GetErrors(). One mistake in the document has one diagnostic, although it may have several
    // errors. There is a diagnostic of severity Error or FatalError if and only if HasErrors(). Valid until the next
    // parse.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }

protected:
    Parser() = default;
    Parser(const Parser&) = default;
    Parser& operator=(const Parser&) = default;

    // Marks the parser as running while the scope lives. The constructor raises the LogicException of
    // Parse() if the parser is already running.
    class WorkScope {
    public:
        explicit WorkScope(Parser& parser);
        ~WorkScope() { m_parser.m_work.isRunning = false; }
        WorkScope(const WorkScope&) = delete;
        WorkScope& operator=(const WorkScope&) = delete;

    private:
        Parser& m_parser;
    };
    // Raises the LogicException of Parse() if the parser is running.
    void RequireIdle() const;

    virtual void DoParse() = 0;

    // These three record a message, and a diagnostic that has only a severity and that message.
    void Error(const VString& message, const VError::ErrorInfo& info);
    // Records an error and makes HasFatallyErrored() true.
    void FatalError(const VString& message, const VError::ErrorInfo& info);
    void Warning(const VString& message, const VError::ErrorInfo& info);
    // Records a message of that severity without a diagnostic. If it throws, it has recorded nothing.
    void Record(ParseDiagnostic::Severity severity, const VString& message, const VError::ErrorInfo& info);
    // Appends diagnostics without messages.
    void Describe(std::vector<ParseDiagnostic> diagnostics);

private:
    // Not copied with the parser: the copy of a running parser is idle.
    struct WorkState {
        WorkState() = default;
        WorkState(const WorkState&) noexcept {}
        WorkState& operator=(const WorkState&) noexcept { return *this; }

        bool isRunning = false;
    };

    std::vector<VString> m_warnings;
    std::vector<VError::ErrorInfo> m_warningInfos;
    std::vector<VString> m_errors;
    std::vector<VError::ErrorInfo> m_errorInfos;
    bool m_fatallyErrored = false;
    WorkState m_work;
    std::vector<ParseDiagnostic> m_diagnostics;
};
