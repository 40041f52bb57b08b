// The forms in which "vanxml check" reports its messages.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/OutputFile.h"
#include "vanxml/SourceLines.h"
#include "vanxml/TextStyle.h"

struct CheckSummary;

// A formatted message.
struct CheckMessage {
    std::string text;                    // UTF-8
    std::optional<DiagnosticCode> code;  // empty for a failure: a document that could not be read
    VString file;                        // the document or schema that it is about; empty if it is about an argument
    bool isWarning = false;
};

// Formats messages and writes them to a standard stream or a file.
//
// Threads: any thread may call the const operations. Only one thread calls the others.
class CheckReport {
public:
    // `format` is "text", "gcc", "json", "sarif" or "html"; the style is for "text". `file` is the name of the file to
    // write, or "-" for standard output. Without a file, messages for people go to standard error and all others to
    // standard output. Throws VIO::Exception if it cannot be written, and ToolError if it may be a document.
    static std::unique_ptr<CheckReport> Create(
        const std::string& format, const TextStyle& style, const std::optional<std::string>& file = std::nullopt);

    virtual ~CheckReport() = default;
    CheckReport(const CheckReport&) = delete;
    CheckReport& operator=(const CheckReport&) = delete;

    // True if FormatDiagnostic shows excerpts.
    virtual bool ShowsExcerpts() const { return false; }
    // True if a program reads the messages, so that nothing else may be written between them.
    virtual bool IsForPrograms() const { return false; }
    bool IsOnStandardOutput() const;

    // The source of the diagnostic names the file.
    virtual std::string FormatDiagnostic(
        const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const = 0;
    // Formats the reason why a document could not be checked. `file` is empty if the message is not about a file.
    virtual std::string FormatFailure(const VString& file, const std::string& message) const = 0;

    // Writes a message. Throws VIO::Exception or ToolError if that fails.
    virtual void Write(const CheckMessage& message) = 0;
    // Completes the file; call it once, after the last message. `omitted` is the number of messages that were not
    // written. Throws VIO::Exception or ToolError if that fails.
    void Finish(const CheckSummary& summary, std::size_t omitted);

protected:
    // `stream` is used if there is no file.
    CheckReport(const std::optional<std::string>& file, OperatingSystem::Stream stream);

    // Writes to the stream or the file. Throws VIO::Exception or ToolError if that fails.
    void WriteBytes(std::string_view bytes);
    // Writes what stands behind the last message.
    virtual void WriteEnd(const CheckSummary& /*summary*/, std::size_t /*omitted*/) {}

private:
    const OperatingSystem::Stream m_stream;
    std::optional<StreamedOutputFile> m_file;
};
