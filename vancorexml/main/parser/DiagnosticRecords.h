// What a document records for one element.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vansys/VError.h"

struct ErrorRecord {
    VString message;
    VError::ErrorInfo info;
    bool reported = false;
    bool cancel = false;
};

struct WarningRecord {
    VString message;
    VError::ErrorInfo info;
};

// The records of one element, in order. Grows at both ends at amortised constant cost:
// putting a record first is as common as adding one.
//
// Ownership: a value. Threads: one writer or many readers.
template <typename Record>
class DiagnosticRecords {
public:
    bool empty() const noexcept { return m_prefixed.empty() && m_appended.empty(); }
    std::size_t size() const noexcept { return m_prefixed.size() + m_appended.size(); }

    void PushFront(Record&& record) { m_prefixed.push_back(std::move(record)); }
    void PushBack(Record&& record) { m_appended.push_back(std::move(record)); }

    // Calls `visit` with each record, in order.
    template <typename Visit>
    void ForEach(Visit&& visit) const
    {
        for (auto i = m_prefixed.rbegin(); i != m_prefixed.rend(); ++i)
            visit(*i);
        for (const Record& record : m_appended)
            visit(record);
    }

private:
    std::vector<Record> m_prefixed;  // the first record is the last here
    std::vector<Record> m_appended;
};
