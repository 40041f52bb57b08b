// Describes exceptions to the user.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"
#include "vanxml/ExitStatus.h"

// Returns the message (UTF-8) for the current exception; call it in a catch clause only. `document` is
// the file that was processed, or empty. The message names the cause, and for a logic assertion its
// key, file, line and text.
std::string DescribeException(const VString& document);

// A failure as the user sees it.
struct FailureReport {
    ExitStatus status = ExitStatus::Failed;
    std::string lines;  // for standard error
};

// Reports the current exception; call it in a catch clause only. Bytes that cannot be decoded are a fault of the
// document, so they are shown like every other one, with the status Faulty. For any other exception, the report has the
// text of DescribeException and the status Failed.
FailureReport ReportException(const VString& document);
