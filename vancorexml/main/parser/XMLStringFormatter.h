// The writer into a string.
#pragma once

#include <exception>

#include <QString>

#include "vancorexml/main/parser/XMLFormatter.h"

// Collects what is written in memory.
//
// A text that outgrows a VString makes the operation throw std::length_error. Because the
// closing of an element swallows exceptions, the first failure is kept: every text written
// later, and GetOutput, throw it again, so that a cut text is never taken for a whole one.
//
// Ownership and threads: as XMLFormatter.
class VANCOREXML_API XMLStringFormatter : public XMLFormatter {
public:
    explicit XMLStringFormatter(const VString& indentUnit = VString(u"  "), bool singleLine = false);
    ~XMLStringFormatter() override;

    void OutputString(const VString& text) override;
    // All that was written until now.
    virtual VString GetOutput() const;

private:
    // The slow half of OutputString, which may fail: at least doubles the buffer.
    void OutputBehindTheRoom(const VString& text);

    // The text written so far, followed by spare room. GetOutput drops the spare room and shares
    // the buffer with its result, without a copy.
    mutable QString m_buffer;
    int m_length = 0;
    std::exception_ptr m_failure;
};
