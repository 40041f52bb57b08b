#include "vancorexml/main/parser/DiagnosticsIndex.h"

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

std::uint8_t DiagnosticsIndex::BitsOf(const ErrorRecord& record) noexcept
{
    return static_cast<std::uint8_t>(Error | (record.cancel ? CancelError : FaultError) | (record.reported ? 0 : UnreportedError));
}

std::uint8_t DiagnosticsIndex::BitsOf(const DiagnosticRecords<ErrorRecord>& records) noexcept
{
    std::uint8_t bits = 0;
    records.ForEach([&bits](const ErrorRecord& record) { bits = static_cast<std::uint8_t>(bits | BitsOf(record)); });
    return bits;
}

std::uint8_t DiagnosticsIndex::Get(const DOM& document, const DOMElement* element)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool complete = m_isBuilt || Build(document);
    std::uint8_t bits = m_all;
    if (element) {
        const auto i = m_bits.find(element);
        bits = i != m_bits.end() ? i->second : 0;
    }
    if (!complete)
        DropLocked();
    return bits;
}

void DiagnosticsIndex::Add(const DOM& document, const DOMElement& element, std::uint8_t bits) noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_isBuilt)
        return;
    try {
        if (!Climb(document, element, bits))
            DropLocked();
    } catch (...) {
        DropLocked();
    }
}

void DiagnosticsIndex::ElementMoves(const DOMElement& element) noexcept
{
    if (!m_isBuilt)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bits.count(&element) != 0)
        DropLocked();
}

void DiagnosticsIndex::Drop() noexcept
{
    if (!m_isBuilt)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    DropLocked();
}

bool DiagnosticsIndex::Build(const DOM& document)
{
    DropLocked();
    bool complete = true;
    try {
        for (const auto& [element, records] : document.m_errors)
            complete = Climb(document, *element, BitsOf(records)) && complete;
        for (const auto& [element, records] : document.m_warnings)
            complete = Climb(document, *element, Warning) && complete;
    } catch (...) {
        DropLocked();
        throw;
    }
    m_isBuilt = true;
    return complete;
}

bool DiagnosticsIndex::Climb(const DOM& document, const DOMElement& element, std::uint8_t bits)
{
    m_all = static_cast<std::uint8_t>(m_all | bits);
    bool complete = true;
    for (const DOMElement* i = &element; i; i = i->GetParent()) {
        if (i->GetDOMManager() != &document) {
            complete = false;
            continue;
        }
        std::uint8_t& known = m_bits[i];
        // Whoever set these bits here went on to the top.
        if ((known & bits) == bits)
            break;
        known = static_cast<std::uint8_t>(known | bits);
    }
    return complete;
}

void DiagnosticsIndex::DropLocked() noexcept
{
    m_isBuilt = false;
    m_all = 0;
    // Gives the buckets back too, or the next drop would pay for the largest index ever.
    std::unordered_map<const DOMElement*, std::uint8_t>().swap(m_bits);
}
