// Rows of values.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "vancoredata/DataValue.h"

// An ordered list of values. A copy owns its values.
class Tuple {
public:
    Tuple() = default;
    Tuple(std::initializer_list<DataValue> values) : m_values(values) {}

    std::size_t GetSize() const noexcept { return m_values.size(); }
    // Precondition, not checked: position < GetSize().
    const DataValue& GetDataValue(std::size_t position) const noexcept { return m_values[position]; }
    void Append(const DataValue& value) { m_values.push_back(value); }

private:
    std::vector<DataValue> m_values;
};
