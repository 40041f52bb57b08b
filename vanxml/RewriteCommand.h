// The base of the commands that rewrite documents.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"
#include "vanxml/Command.h"
#include "vanxml/FileSelection.h"

// The new bytes of one document, or the reason why there are none.
struct RewrittenDocument {
    ExitStatus status = ExitStatus::Good;
    std::string bytes;  // meaningful if status is Good
    std::string lines;  // complete lines for standard error: errors, warnings, reports
};

// Reads documents, lets a derived class rewrite their bytes, and delivers the results: to standard output, to a file,
// in place, as the names of the documents that would change, or as a diff. Prints in the order of the arguments. A
// document that fails does not stop the others; the worst status counts.
//
// AddTo of a derived class creates the subcommand, calls AddFileArguments and adds its own options. A derived class
// that must check its options before any document is read overrides Run and calls RewriteCommand::Run.
//
// Memory: each job owns the bytes of one document and its result. See JobQueue for the results that wait.
//
// Threads: one at a time.
class RewriteCommand : public Command {
public:
    bool IsChosen() const override;
    ExitStatus Run() override;

protected:
    // Adds FILE, --recursive, --include, --in-place, --check, --diff, --output and --jobs. Call it once, in AddTo.
    void AddFileArguments(CLI::App& command);

    // Returns the rewritten document. `name` is for messages, `bytes` are those of the file. If the result has the same
    // bytes, the file is not touched. Several threads call this at once. An exception becomes an error line and the
    // status Failed of this document only.
    virtual RewrittenDocument Rewrite(const VString& name, const std::string& bytes) const = 0;

private:
    struct Outcome;

    void RequireUsable(const SelectedFiles& selected) const;
    Outcome Process(const SelectedFile& file) const;
    void Finish(const VString& name, const std::string& before, std::string&& after, Outcome& outcome) const;
    void WriteOutput(const std::string& bytes) const;

    const CLI::App* m_command = nullptr;
    FileSelection m_selection;
    std::string m_output = "-";  // standard output
    unsigned m_jobs = 0;
    bool m_isInPlace = false;
    bool m_isCheck = false;
    bool m_isDiff = false;
};
