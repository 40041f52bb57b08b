// Writes a document into a file.
#pragma once

#include <exception>
#include <string>

#include "vancoreplatform/FileReplacement.h"
#include "vancorexml/main/parser/XMLFormatter.h"

// Writes UTF-8 without a byte order mark, in FormatModeContent. A lone surrogate in a name or in a text that is not
// escaped becomes U+FFFD.
//
// Memory: a fixed size, plus the longest attribute. Long texts are escaped in pieces, but an attribute as a whole.
//
// Ownership: owns the FileReplacement.
//
// Errors: a failing write throws VIO::Exception. ~Indenter swallows exceptions, so the writer stores the first
// exception, and every later write and Commit rethrow it. An incomplete file never replaces the target.
//
// Threads: see XMLFormatter.
class XMLFileFormatter : public XMLFormatter {
public:
    // Throws VIO::Exception if the file cannot be written (see FileReplacement).
    explicit XMLFileFormatter(const VPath& path);
    ~XMLFileFormatter() override;

    // ~Indenter calls these two. They store their exceptions.
    void Undent() override;
    void OutputCloseTag(const VString& tag) override;
    using XMLFormatter::OutputContent;
    void OutputContent(const VString& text, bool verbatim) override;
    void OutputString(const VString& text) override;

    // Writes the rest and replaces the file.
    void Commit();

private:
    void OutputCData(const VString& text);
    // Runs a step and stores its exception in m_failure.
    template <typename Step>
    void Run(const Step& step);

    FileReplacement m_file;
    std::string m_buffer;  // UTF-8 that is not yet written
    std::exception_ptr m_failure;
};
