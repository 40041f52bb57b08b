// Measured scopes.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "metrics2/Export.h"
#include "vancoreplatform/VString.h"

namespace Metrics {

// The category of XML work.
inline constexpr std::uint64_t XmlCategory = 0x80000000000;

// A finished scope: the recorded values in their order, and the duration.
struct ScopeRecord {
    const char* name = nullptr;
    std::vector<std::pair<VString, VString>> values;
    std::uint64_t nanoseconds = 0;
};

// Sets the function that receives every finished scope of the categories in `bits`, on the thread that finished it.
// An empty function turns metrics off; metrics are off by default. The sink is called under a lock and must neither
// throw nor open a scope. The previous sink does not run any more when this function returns. Thread-safe.
METRICS2_API void SetSink(std::function<void(const ScopeRecord&)> sink, std::uint64_t bits = XmlCategory);

// Returns whether scopes of at least one of these categories are collected now. Thread-safe.
METRICS2_API bool TestBitsAndContext(std::uint64_t bits) noexcept;

// Measures the time from construction to destruction, if its category is collected. Otherwise costs one atomic load.
class METRICS2_API Scope {
public:
    // Borrows `name`, which must live as long as the sink uses it. Pass a literal.
    explicit Scope(const char* name, std::uint64_t bits = XmlCategory);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    // True if the scope is measured, because its category was collected when it began.
    bool IsOpen() const noexcept { return m_open; }
    // Adds a value to the record of the scope. Does nothing if the scope is not open.
    void Record(const char* key, const VString& value);
    void Record(const char* key, std::uint64_t value);

private:
    ScopeRecord m_record;
    std::uint64_t m_start = 0;
    bool m_open;
};

}  // namespace Metrics
