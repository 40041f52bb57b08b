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

// A finished scope: what was recorded in it, in order, and how long it took.
struct ScopeRecord {
    const char* name = nullptr;
    std::vector<std::pair<VString, VString>> values;
    std::uint64_t nanoseconds = 0;
};

// Receives every finished scope of the categories in `bits`, on the thread that finished
// it. An empty function turns metrics off again, as they are at first. The sink is called
// under a lock: it runs no more when this returns, and must neither throw nor open a scope.
METRICS2_API void SetSink(std::function<void(const ScopeRecord&)> sink, std::uint64_t bits = XmlCategory);

// Whether scopes of one of these categories are collected now.
METRICS2_API bool TestBitsAndContext(std::uint64_t bits) noexcept;

// Measures from construction to destruction when its category is collected, and costs one
// load when it is not.
class METRICS2_API Scope {
public:
    // `name` must outlive the sink's use of it: a literal.
    explicit Scope(const char* name, std::uint64_t bits = XmlCategory);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    bool IsOpen() const noexcept { return m_open; }
    // Nothing when the scope is not open.
    void Record(const char* key, const VString& value);
    void Record(const char* key, std::uint64_t value);

private:
    ScopeRecord m_record;
    std::uint64_t m_start = 0;
    bool m_open;
};

}  // namespace Metrics
