// The forms in which "vanxml check" reports its messages.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/SourceLines.h"
#include "vanxml/TextStyle.h"

// A formatted message.
struct CheckMessage {
    std::string text;                    // UTF-8
    std::optional<DiagnosticCode> code;  // empty for a failure: a document that could not be read
};

// Formats messages and writes them.
//
// Threads: any thread may call the const operations. Only one thread calls the others.
class CheckReport {
public:
    // `format` is "text", "gcc", "json" or "sarif"; the style is for "text".
    static std::unique_ptr<CheckReport> Create(const std::string& format, const TextStyle& style);

    virtual ~CheckReport() = default;
    CheckReport(const CheckReport&) = delete;
    CheckReport& operator=(const CheckReport&) = delete;

    // True if FormatDiagnostic shows excerpts.
    virtual bool ShowsExcerpts() const { return false; }
    // True if standard output is for a program that reads the messages, so that nothing else may be written there.
    virtual bool IsForPrograms() const { return false; }

    // The source of the diagnostic names the file.
    virtual std::string FormatDiagnostic(
        const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const = 0;
    // Formats the reason why a document could not be checked. `file` is empty if the message is not about a file.
    virtual std::string FormatFailure(const VString& file, const std::string& message) const = 0;

    // Writes a message. Throws ToolError if that fails.
    virtual void Write(const CheckMessage& message) = 0;
    // Call it once behind the last message. `unchecked` is the number of documents that could not be checked, and
    // `omitted` the number of messages that were not written.
    virtual void Finish(std::size_t /*unchecked*/, std::size_t /*omitted*/) {}

protected:
    CheckReport() = default;
};
