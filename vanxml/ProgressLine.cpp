#include "vanxml/ProgressLine.h"

#include <string>

#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"

namespace {

constexpr std::chrono::milliseconds firstDelay{200};
constexpr std::chrono::milliseconds delay{100};

constexpr const char* deleteLine = "\r\x1B[K";

}  // namespace

ProgressLine::ProgressLine(std::size_t total)
    : m_total(total),
      m_isTerminal(total > 0 && OperatingSystem::IsTerminal(OperatingSystem::Stream::Error)),
      m_next(Clock::now() + firstDelay)
{}

void ProgressLine::Show(std::size_t checked)
{
    if (!m_isTerminal || Clock::now() < m_next)
        return;
    m_next = Clock::now() + delay;
    m_isShown = true;
    StandardStreams::WriteError(deleteLine + std::to_string(checked) + "/" + std::to_string(m_total) + " documents");
}

void ProgressLine::Clear()
{
    if (m_isShown)
        StandardStreams::WriteError(deleteLine);
    m_isShown = false;
}
