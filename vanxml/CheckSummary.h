// The summary of "vanxml check".
#pragma once

#include <cstddef>
#include <string>

#include "vanxml/DocumentChecker.h"

// Counts documents, errors and warnings.
struct CheckSummary {
    std::size_t documents = 0;
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t unchecked = 0;
    unsigned long long bytes = 0;  // of the checked documents

    void Add(const CheckedDocument& document);
    // Returns a text such as "1,234 documents, 1 error, 2 warnings, 1 not checked". Leaves out warnings and unchecked
    // documents if there are none.
    std::string Format() const;
    // Returns a text such as "; 3.2 s, 41 MB/s"; empty for less than a tenth of a second.
    std::string FormatSpeed(double seconds) const;
    // Returns a text such as "12 more messages are not shown".
    static std::string FormatOmitted(std::size_t messages);
    // Returns the number with a comma in front of each group of three digits.
    static std::string FormatNumber(unsigned long long number);
};
