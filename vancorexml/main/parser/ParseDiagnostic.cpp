#include "vancorexml/main/parser/ParseDiagnostic.h"

#include "vancoreplatform/VFormatString.h"

namespace {

const char* NameOf(ParseDiagnostic::Severity severity) noexcept
{
    switch (severity) {
    case ParseDiagnostic::Severity::Warning: return "Warning";
    case ParseDiagnostic::Severity::Error: return "Error";
    case ParseDiagnostic::Severity::FatalError: return "Fatal Error";
    }
    return "";
}

VString FormatPosition(const ParseDiagnostic& diagnostic)
{
    return VFormatString("(%1,%2)").arg(diagnostic.line).arg(diagnostic.column);
}

}  // namespace

VString ParseDiagnostic::GetText() const
{
    switch (layout) {
    case Layout::Message: return message;
    case Layout::Fault:
        return VFormatString("%1%2: %3 (id: %4)")
            .arg(NameOf(severity))
            .arg(line != 0 || column != 0 ? FormatPosition(*this) : VString())
            .arg(message)
            .arg(sourceId);
    case Layout::ExternalEntity: return VFormatString("%1%2 '%3'").arg(message).arg(FormatPosition(*this)).arg(entity);
    }
    return VString();
}
