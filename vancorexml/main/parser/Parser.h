// The base class of the parsers.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"

// Collects the errors and warnings of a parse, each with its identity, and runs the parse.
// Faults in a document are entries of these lists, never exceptions.
//
// Ownership: a value for its derived classes to extend.
//
// Threads: one at a time; no lock.
class VANCOREXML_API Parser {
public:
    virtual ~Parser();

    // Starts from empty lists: errors recorded before, while schemas were loaded, are gone.
    // Raises a LogicException (code 0x61D3A9F5) when a callback of this parser calls it; the
    // work that called the callback is not affected.
    void Parse();
    // Empties the lists and leaves HasFatallyErrored() as it is.
    void ClearErrorsAndWarnings();

    bool HasErrors() const noexcept { return !m_errors.empty(); }
    bool HasWarnings() const noexcept { return !m_warnings.empty(); }
    // An error that ended the parse; it is in GetErrors() as well.
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }

    // In the order they were met; valid until the next parse.
    const std::vector<VString>& GetErrors() const noexcept { return m_errors; }
    const std::vector<VString>& GetWarnings() const noexcept { return m_warnings; }
    // As long as the messages, entry by entry; VError::ErrorInfo::NoError where a message has
    // no identity of its own.
    std::vector<VError::ErrorInfo> GetMetadataForErrors() const { return m_errorInfos; }
    std::vector<VError::ErrorInfo> GetMetadataForWarnings() const { return m_warningInfos; }
    // The same errors and warnings as data, together in the order they were met; valid until the next parse.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }

protected:
    Parser() = default;
    Parser(const Parser&) = default;
    Parser& operator=(const Parser&) = default;

    // Marks the parser as at work while it lives. Raises the LogicException of Parse() when the
    // parser is at work already.
    class WorkScope {
    public:
        explicit WorkScope(Parser& parser);
        ~WorkScope() { m_parser.m_work.isRunning = false; }
        WorkScope(const WorkScope&) = delete;
        WorkScope& operator=(const WorkScope&) = delete;

    private:
        Parser& m_parser;
    };
    // Raises the LogicException of Parse() when the parser is at work.
    void RequireIdle() const;

    virtual void DoParse() = 0;

    void Error(const VString& message, const VError::ErrorInfo& info);
    // An error that also marks the parse as fatally errored.
    void FatalError(const VString& message, const VError::ErrorInfo& info);
    void Warning(const VString& message, const VError::ErrorInfo& info);
    // Does what the operation above for its severity does, with `text` as the message. The operations above
    // record a diagnostic that has only a severity and a message.
    void Record(const VString& text, const VError::ErrorInfo& info, ParseDiagnostic diagnostic);

private:
    // Stays with its parser: a copy of a parser at work is idle.
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
