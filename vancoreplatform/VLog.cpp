#include "vancoreplatform/VLog.h"

#include <QDebug>
#include <QLoggingCategory>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "vancoreplatform/StaticObject.h"

namespace {

Q_LOGGING_CATEGORY(Category, "vancorexml", QtInfoMsg)

struct Captures {
    std::mutex mutex;
    std::vector<std::pair<const VLog::Capture*, const std::function<void(const VLog::Record&)>*>>
        stack;  // guarded by mutex
};

Captures& GetCaptures()
{
    return GetStaticObject<Captures>();
}

bool PassToCapture(const VLog::Record& record)
{
    Captures& captures = GetCaptures();
    const std::lock_guard lock(captures.mutex);
    if (captures.stack.empty())
        return false;
    const auto& sink = *captures.stack.back().second;
    if (sink)
        sink(record);
    return true;
}

void PassToQt(const VLog::Record& record)
{
    QString text = record.message.ToQString();
    if (!record.key.IsEmpty())
        text += QLatin1String(" [") + record.key.ToQString() + QLatin1Char(']');
    switch (record.severity) {
    case VLog::Debug: qCDebug(Category).noquote() << text; break;
    case VLog::Info: qCInfo(Category).noquote() << text; break;
    case VLog::Warn: qCWarning(Category).noquote() << text; break;
    case VLog::Error: qCCritical(Category).noquote() << text; break;
    }
}

}  // namespace

namespace VLog {

Capture::Capture(std::function<void(const Record&)> sink) : m_sink(std::move(sink))
{
    Captures& captures = GetCaptures();
    const std::lock_guard lock(captures.mutex);
    captures.stack.emplace_back(this, &m_sink);
}

Capture::~Capture()
{
    Captures& captures = GetCaptures();
    const std::lock_guard lock(captures.mutex);
    const auto mine = std::find_if(
        captures.stack.begin(), captures.stack.end(), [this](const auto& entry) { return entry.first == this; });
    captures.stack.erase(mine);
}

}  // namespace VLog

void LogMessage(const VLog::Record& record)
{
    if (!PassToCapture(record))
        PassToQt(record);
}

void LogMessage(VLog::Severity severity, const VString& message)
{
    VLog::Record record;
    record.severity = severity;
    record.message = message;
    LogMessage(record);
}
