// The errors and warnings that a document records for one element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vansys/VError.h"

// The kinds of diagnostics that the Has… queries distinguish, as bits of a DiagnosticKinds.
enum DiagnosticKind : std::uint8_t {
    AnyError = 1,
    CancelError = 2,
    FaultError = 4,
    UnreportedError = 8,
    AnyWarning = 16
};
using DiagnosticKinds = std::uint8_t;
constexpr std::size_t DiagnosticKindCount = 5;

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

inline DiagnosticKinds KindsOf(const ErrorRecord& record) noexcept
{
    return static_cast<DiagnosticKinds>(
        AnyError | (record.cancel ? CancelError : FaultError) | (record.reported ? 0 : UnreportedError));
}

inline DiagnosticKinds KindsOf(const WarningRecord&) noexcept
{
    return AnyWarning;
}

// The records of one element, in order. Inserting at either end is amortised constant.
//
// Ownership: a value. Threads: one writer or many readers.
template <typename Record>
class DiagnosticRecords {
public:
    bool empty() const noexcept { return m_prefixed.empty() && m_appended.empty(); }
    std::size_t size() const noexcept { return m_prefixed.size() + m_appended.size(); }
    // The union of the kinds of all records. Constant.
    DiagnosticKinds Kinds() const noexcept { return m_kinds; }

    void PushFront(Record&& record) { Push(m_prefixed, std::move(record)); }
    void PushBack(Record&& record) { Push(m_appended, std::move(record)); }

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
    void Push(std::vector<Record>& records, Record&& record)
    {
        const DiagnosticKinds kinds = KindsOf(record);
        records.push_back(std::move(record));
        m_kinds = static_cast<DiagnosticKinds>(m_kinds | kinds);
    }

    std::vector<Record> m_prefixed;  // in reverse order: its last record is the first of all
    std::vector<Record> m_appended;
    DiagnosticKinds m_kinds = 0;
};
