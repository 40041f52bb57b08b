// A source that never ends, for tests of operations that must not read a document to its end.
#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "vancorexml/main/parser/InputSource.h"

namespace testsupport {

// Supplies `start` and then blanks without end. `blocks` counts the reads.
class EndlessSource : public InputSource {
public:
    explicit EndlessSource(std::string start) : InputSource("endless"), m_start(std::move(start)) {}
    bool GetNextLine(std::string&) override { return false; }
    bool GetBytes(std::string& bytes, unsigned int count) override
    {
        bytes = m_start.substr(std::min(m_position, m_start.size()), count);
        bytes.resize(count, ' ');
        m_position += count;
        ++blocks;
        longestBlock = std::max(longestBlock, count);
        return true;
    }
    void ResetToStart() override { m_position = 0; }
    unsigned long long Size() const override { return m_start.size(); }

    // Returns true if the next read starts at the first byte.
    bool IsAtStart() const noexcept { return m_position == 0; }

    int blocks = 0;
    unsigned int longestBlock = 0;

private:
    const std::string m_start;
    std::size_t m_position = 0;
};

}  // namespace testsupport
