// Which elements of a document have diagnostics at or below them.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "vancorexml/main/parser/DiagnosticRecords.h"

class DOM;
class DOMElement;

// For one document: the kinds of diagnostics that an element or anything below it has, so
// that a test costs a lookup where it would climb from every record. Below is meant as
// DOMElement::IsChildOf means it: by parent links, so a removed child counts for its old
// parent.
//
// A cache: built by the first test that needs it, extended when a record is added, dropped
// when records go or a parent link with records below it changes. Its keys are living
// elements of the document only: with a key dies a record below it, or the link through
// which the record was below it, and either drops the index. Where a record's way up passes
// an element of another document, whose changes the document would not hear of, nothing is
// kept and every test builds anew.
//
// Ownership: part of its document, whose maps and elements it refers to.
//
// Threads: readers of the document build it side by side, so it has a mutex of its own,
// taken after the document's lock.
class DiagnosticsIndex {
public:
    enum Bits : std::uint8_t { Error = 1, CancelError = 2, FaultError = 4, UnreportedError = 8, Warning = 16 };

    static std::uint8_t BitsOf(const ErrorRecord& record) noexcept;
    static std::uint8_t BitsOf(const DiagnosticRecords<ErrorRecord>& records) noexcept;

    // The bits of `element` and everything below it; of all records of the document when it
    // is null. The document's lock is held for reading.
    std::uint8_t Get(const DOM& document, const DOMElement* element);
    // `element` got a record. The document's lock is held for writing. Never fails: what
    // cannot be extended is dropped.
    void Add(const DOM& document, const DOMElement& element, std::uint8_t bits) noexcept;
    // `element` is about to get another parent or another document.
    void ElementMoves(const DOMElement& element) noexcept;
    void Drop() noexcept;

private:
    // Both are false when some record's way up passes an element of another document.
    bool Build(const DOM& document);
    bool Climb(const DOM& document, const DOMElement& element, std::uint8_t bits);
    void DropLocked() noexcept;

    std::mutex m_mutex;
    // Read without the mutex by those who only want to know that there is nothing to do.
    std::atomic<bool> m_isBuilt{false};
    std::uint8_t m_all = 0;
    std::unordered_map<const DOMElement*, std::uint8_t> m_bits;
};
