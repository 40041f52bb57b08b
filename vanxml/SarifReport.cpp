#include "vanxml/SarifReport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include "vanxml/CheckSummary.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/OperatingSystem.h"

namespace {

QString Text(const VString& text)
{
    return text.ToQString();
}

QJsonObject Message(const VString& text)
{
    return {{QStringLiteral("text"), Text(text)}};
}

std::string ToText(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

QJsonObject Region(const SourcePosition& start, const SourcePosition& end)
{
    QJsonObject region{{QStringLiteral("startLine"), static_cast<qint64>(start.line)}};
    if (start.column == 0)
        return region;
    region.insert(QStringLiteral("startColumn"), static_cast<qint64>(start.column));
    if (end.line != 0 && end.column != 0) {
        region.insert(QStringLiteral("endLine"), static_cast<qint64>(end.line));
        region.insert(QStringLiteral("endColumn"), static_cast<qint64>(end.column));
    }
    return region;
}

QJsonObject PhysicalLocation(const VString& file, const SourcePosition& start, const SourcePosition& end)
{
    const QJsonObject artifact{{QStringLiteral("uri"), QString::fromStdString(ToUriReference(file))}};
    QJsonObject location{{QStringLiteral("artifactLocation"), artifact}};
    if (start.line != 0)
        location.insert(QStringLiteral("region"), Region(start, end));
    return location;
}

QJsonObject Location(const VString& file, const SourcePosition& start, const SourcePosition& end)
{
    return {{QStringLiteral("physicalLocation"), PhysicalLocation(file, start, end)}};
}

QJsonObject LogicalLocation(const ParseDiagnostic& diagnostic)
{
    const bool isAttribute = !diagnostic.attribute.IsEmpty();
    const VString path = isAttribute ? diagnostic.path + "/@" + diagnostic.attribute : diagnostic.path;
    return {{QStringLiteral("fullyQualifiedName"), Text(path)},
        {QStringLiteral("kind"), isAttribute ? QStringLiteral("attribute") : QStringLiteral("element")}};
}

QJsonObject RelatedLocation(const ParseDiagnostic& diagnostic)
{
    QJsonObject location = Location(diagnostic.sourceId, diagnostic.related->start, SourcePosition());
    location.insert(QStringLiteral("message"), Message(diagnostic.related->message + " here"));
    return location;
}

// Code hosts show only the message.
VString MessageWithNote(const ParseDiagnostic& diagnostic)
{
    const VString note = DescribeNote(diagnostic);
    return note.IsEmpty() ? diagnostic.message : diagnostic.message + " (" + note + ")";
}

QJsonObject Notification(const char* level, const std::string& message)
{
    return {{QStringLiteral("level"), QLatin1String(level)},
        {QStringLiteral("message"), Message(VString::fromStdString(message))}};
}

QJsonObject Rule(DiagnosticCode code)
{
    const QString name = QString::fromLatin1(GetDiagnosticName(code));
    // Code hosts show the description as the title: "Unclosed element".
    QString description = name;
    description.replace(QLatin1Char('-'), QLatin1Char(' '));
    description[0] = description[0].toUpper();
    return {{QStringLiteral("id"), name}, {QStringLiteral("shortDescription"), Message(description)}};
}

QJsonObject Driver(const std::set<DiagnosticCode>& codes)
{
    QJsonArray rules;
    for (const DiagnosticCode code : codes)
        rules.append(Rule(code));
    return {{QStringLiteral("name"), QStringLiteral("vanxml")},
        {QStringLiteral("version"), QStringLiteral(VANXML_VERSION)},
        {QStringLiteral("semanticVersion"), QStringLiteral(VANXML_VERSION)},
        {QStringLiteral("rules"), rules}};
}

}  // namespace

std::string ToUriReference(const VString& file)
{
    QString path = Text(file);
    // QDir removes only the first four characters of this prefix.
    const QString sharePrefix = QStringLiteral("\\\\?\\UNC\\");
    if (OperatingSystem::IsWindows && path.startsWith(sharePrefix, Qt::CaseInsensitive))
        path.replace(0, sharePrefix.size(), QStringLiteral("\\\\"));
    path = QDir::fromNativeSeparators(path);
    // A path such as "c:a.xml" of Windows counts as absolute here and is completed.
    if (QDir::isAbsolutePath(path))
        return QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded().toStdString();
    // Colons are encoded too, so that no part of the name becomes a scheme.
    return QUrl::toPercentEncoding(path, "/").toStdString();
}

std::string SarifReport::FormatDiagnostic(const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>&) const
{
    QJsonObject location = Location(diagnostic.sourceId, diagnostic.start, diagnostic.end);
    if (!diagnostic.path.IsEmpty())
        location.insert(QStringLiteral("logicalLocations"), QJsonArray{LogicalLocation(diagnostic)});
    QJsonObject result{{QStringLiteral("ruleId"), QString::fromLatin1(GetDiagnosticName(diagnostic.code))},
        {QStringLiteral("level"), IsError(diagnostic) ? QStringLiteral("error") : QStringLiteral("warning")},
        {QStringLiteral("message"), Message(MessageWithNote(diagnostic))},
        {QStringLiteral("locations"), QJsonArray{location}}};
    if (diagnostic.related)
        result.insert(QStringLiteral("relatedLocations"), QJsonArray{RelatedLocation(diagnostic)});
    return ToText(result);
}

std::string SarifReport::FormatFailure(const VString& file, const std::string& message) const
{
    QJsonObject notification = Notification("error", message);
    if (!file.IsEmpty()) {
        const QJsonObject location = Location(file, SourcePosition(), SourcePosition());
        notification.insert(QStringLiteral("locations"), QJsonArray{location});
    }
    return ToText(notification);
}

void SarifReport::Write(const CheckMessage& message)
{
    WriteStart();
    if (!message.code) {
        m_notifications.push_back(message.text);
        return;
    }
    m_codes.insert(*message.code);
    WriteBytes((m_hasResults ? ",\n" : "\n") + message.text);
    m_hasResults = true;
}

void SarifReport::WriteEnd(const CheckSummary& summary, std::size_t omitted)
{
    WriteStart();
    if (omitted > 0)
        m_notifications.push_back(ToText(Notification("note", CheckSummary::FormatOmitted(omitted))));
    std::string notifications;
    for (const std::string& notification : m_notifications)
        notifications += (notifications.empty() ? "\n" : ",\n") + notification;
    const std::string isSuccessful = summary.unchecked == 0 ? "true" : "false";
    WriteBytes("],\n\"invocations\":[{\"executionSuccessful\":" + isSuccessful + ",\"toolExecutionNotifications\":[" +
        notifications + "]}],\n\"tool\":" + ToText({{QStringLiteral("driver"), Driver(m_codes)}}) + "}]}\n");
}

void SarifReport::WriteStart()
{
    if (m_hasStarted)
        return;
    m_hasStarted = true;
    WriteBytes("{\"version\":\"2.1.0\",\"$schema\":\"https://json.schemastore.org/sarif-2.1.0.json\",\n"
               "\"runs\":[{\"columnKind\":\"utf16CodeUnits\",\"results\":[");
}
