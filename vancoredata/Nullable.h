// Values that may be absent.
#pragma once

#include <utility>

// A value that may be absent. GetValue returns the default value of T if it is absent.
template <typename T>
class Nullable {
public:
    Nullable() = default;
    Nullable(T value) : m_value(std::move(value)), m_present(true) {}

    bool IsPresent() const noexcept { return m_present; }
    const T& GetValue() const noexcept { return m_value; }

private:
    T m_value{};
    bool m_present = false;
};
