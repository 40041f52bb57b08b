// A line on a terminal that shows how far a command is.
#pragma once

#include <chrono>
#include <cstddef>

// Shows "CHECKED/TOTAL documents" on standard error, at most ten times a second and not in the first fifth of a second.
// Does nothing if standard error is not a terminal.
//
// Threads: one at a time.
class ProgressLine {
public:
    // Shows nothing if `total` is 0.
    explicit ProgressLine(std::size_t total);
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(std::size_t checked);
    // Deletes the line. Call it before another line is written to a terminal.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    const std::size_t m_total;
    const bool m_isTerminal;
    bool m_isShown = false;
    Clock::time_point m_next;
};
