#include "vancoreplatform/VLog.h"

#include <QDebug>
#include <QLoggingCategory>

#include <utility>

#include "vancoreplatform/SinkSlot.h"
#include "vancoreplatform/StaticObject.h"

namespace {

Q_LOGGING_CATEGORY(Category, "vancorexml", QtInfoMsg)

SinkSlot<VLog::Sink>& GetSlot()
{
    return GetStaticObject<SinkSlot<VLog::Sink>>();
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

Sink::~Sink() = default;

std::shared_ptr<Sink> SetSink(std::shared_ptr<Sink> sink)
{
    return GetSlot().Exchange(std::move(sink));
}

}  // namespace VLog

void LogMessage(const VLog::Record& record)
{
    if (!GetSlot().Pass([&](VLog::Sink& sink) { sink.Write(record); }))
        PassToQt(record);
}

void LogMessage(VLog::Severity severity, const VString& message)
{
    VLog::Record record;
    record.severity = severity;
    record.message = message;
    LogMessage(record);
}
