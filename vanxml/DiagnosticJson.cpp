#include "vanxml/DiagnosticJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString Severity(ParseDiagnostic::Severity severity)
{
    switch (severity) {
    case ParseDiagnostic::Severity::Warning: return QStringLiteral("warning");
    case ParseDiagnostic::Severity::Error: return QStringLiteral("error");
    case ParseDiagnostic::Severity::FatalError: return QStringLiteral("fatal");
    }
    return QString();
}

void InsertText(QJsonObject& object, const char* name, const VString& text)
{
    if (!text.IsEmpty())
        object.insert(QLatin1String(name), text.ToQString());
}

void InsertNumber(QJsonObject& object, const char* name, std::uint64_t number)
{
    if (number != 0)
        object.insert(QLatin1String(name), static_cast<qint64>(number));
}

void InsertPosition(QJsonObject& object, const char* line, const char* column, const SourcePosition& position)
{
    InsertNumber(object, line, position.line);
    if (position.line != 0)
        InsertNumber(object, column, position.column);
}

std::string ToLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace

std::string DiagnosticToJson(const ParseDiagnostic& diagnostic)
{
    QJsonObject object;
    InsertText(object, "type", "diagnostic");
    InsertText(object, "file", diagnostic.sourceId);
    object.insert(QLatin1String("severity"), Severity(diagnostic.severity));
    InsertText(object, "code", GetDiagnosticName(diagnostic.code));
    InsertText(object, "message", diagnostic.message);
    InsertPosition(object, "line", "column", diagnostic.start);
    InsertPosition(object, "endLine", "endColumn", diagnostic.end);
    InsertText(object, "path", diagnostic.path);
    InsertNumber(object, "element", diagnostic.element);
    InsertText(object, "attribute", diagnostic.attribute);
    InsertText(object, "value", diagnostic.value);
    if (!diagnostic.allowed.empty()) {
        QJsonArray allowed;
        for (const VString& each : diagnostic.allowed)
            allowed.append(each.ToQString());
        object.insert(QLatin1String("allowed"), allowed);
    }
    InsertText(object, "expected", diagnostic.expected);
    InsertText(object, "suggestion", diagnostic.suggestion);
    if (diagnostic.related) {
        QJsonObject related;
        InsertText(related, "message", diagnostic.related->message);
        InsertPosition(related, "line", "column", diagnostic.related->start);
        object.insert(QLatin1String("related"), related);
    }
    return ToLine(object);
}

std::string FailureToJson(const VString& file, const std::string& message)
{
    QJsonObject object;
    InsertText(object, "type", "failure");
    InsertText(object, "file", file);
    InsertText(object, "message", VString::fromStdString(message));
    return ToLine(object);
}
