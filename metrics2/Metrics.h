// Measured scopes.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "metrics2/Export.h"
#include "vancoreplatform/VString.h"

namespace Metrics {

// The category of XML work.
inline constexpr std::uint64_t XmlCategory = 0x80000000000;

// A finished scope, with its recorded values in their order.
struct ScopeRecord {
    const char* name = nullptr;  // lives as long as the library that opened the scope
    std::vector<std::pair<VString, VString>> values;
    std::uint64_t start = 0;        // nanoseconds of std::chrono::steady_clock
    std::uint64_t nanoseconds = 0;  // the duration
};

// Receives the finished scopes. An application derives its own class from this and passes it to SetSink.
//
// Threads: called on the thread that finished the scope, so an inner scope comes before the one around it. The
// sinks for metrics, activities and the log are called one at a time, so they need no lock. Scopes, activities and
// messages of the sink itself are not reported. Exceptions that it throws are dropped. A sink must not wait for
// another thread that uses the library.
class METRICS2_API Sink {
public:
    virtual ~Sink();
    // The record is valid only during the call.
    virtual void Finish(const ScopeRecord& record) = 0;
};

// Sets the sink for scopes of the categories in `bits` and returns the previous one. Null, the default, turns metrics
// off. Shares ownership of the sink. When the function returns, the previous sink does not run on another thread. The
// sink is not destroyed when the process ends, and other threads may still call it then. So set null before anything is
// destroyed that the sink uses. Thread-safe; a sink may call it too.
METRICS2_API std::shared_ptr<Sink> SetSink(std::shared_ptr<Sink> sink, std::uint64_t bits = XmlCategory);

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
    bool m_open;
};

}  // namespace Metrics
