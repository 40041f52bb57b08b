// The writer into a string.
#pragma once

#include <exception>

#include <QString>

#include "vancorexml/main/parser/XMLFormatter.h"

// Collects the output in memory.
//
// An operation throws std::length_error if the output becomes too long for a VString. ~Indenter
// swallows exceptions, so the writer stores the first exception, and every later write and
// GetOutput rethrow it. A caller therefore never receives truncated output.
//
// Ownership and threads: see XMLFormatter.
class VANCOREXML_API XMLStringFormatter : public ::XMLFormatter {
public:
    explicit XMLStringFormatter(const VString& indentUnit = VString(u"  "), bool singleLine = false);
    ~XMLStringFormatter() override;

    // ~Indenter calls it. It stores its exception.
    void Undent() override;
    void OutputString(const VString& text) override;
    // Returns the output so far.
    virtual VString GetOutput() const;

private:
    // The slow path of OutputString: at least doubles the buffer, then appends the text.
    void GrowAndAppend(const VString& text);

    // The output so far, followed by spare capacity. GetOutput removes the spare capacity and shares
    // the buffer with its result.
    mutable QString m_buffer;
    int m_length = 0;
    std::exception_ptr m_failure;
};
