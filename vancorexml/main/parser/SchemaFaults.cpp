#include "vancorexml/main/parser/SchemaFaults.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "vancoreplatform/NearestName.h"
#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/SourceTags.h"
#include "vancorexml/main/parser/SyntaxFaultFinder.h"

namespace {

// The names of XML Schema: elements, attributes and types.
constexpr const char* schemaNames[] = {"all",
    "annotation",
    "any",
    "anyAttribute",
    "appinfo",
    "attribute",
    "attributeGroup",
    "choice",
    "complexContent",
    "complexType",
    "documentation",
    "element",
    "enumeration",
    "extension",
    "field",
    "fractionDigits",
    "group",
    "import",
    "include",
    "key",
    "keyref",
    "length",
    "list",
    "maxExclusive",
    "maxInclusive",
    "maxLength",
    "minExclusive",
    "minInclusive",
    "minLength",
    "notation",
    "pattern",
    "redefine",
    "restriction",
    "schema",
    "selector",
    "sequence",
    "simpleContent",
    "simpleType",
    "totalDigits",
    "union",
    "unique",
    "whiteSpace",
    "abstract",
    "attributeFormDefault",
    "base",
    "block",
    "blockDefault",
    "default",
    "elementFormDefault",
    "final",
    "finalDefault",
    "fixed",
    "form",
    "itemType",
    "maxOccurs",
    "memberTypes",
    "minOccurs",
    "mixed",
    "name",
    "namespace",
    "nillable",
    "processContents",
    "ref",
    "refer",
    "schemaLocation",
    "substitutionGroup",
    "targetNamespace",
    "type",
    "use",
    "value",
    "version",
    "xpath",
    "anySimpleType",
    "anyType",
    "anyURI",
    "base64Binary",
    "boolean",
    "byte",
    "date",
    "dateTime",
    "decimal",
    "double",
    "duration",
    "ENTITIES",
    "ENTITY",
    "float",
    "gDay",
    "gMonth",
    "gMonthDay",
    "gYear",
    "gYearMonth",
    "hexBinary",
    "ID",
    "IDREF",
    "IDREFS",
    "int",
    "integer",
    "language",
    "long",
    "Name",
    "NCName",
    "negativeInteger",
    "NMTOKEN",
    "NMTOKENS",
    "nonNegativeInteger",
    "nonPositiveInteger",
    "normalizedString",
    "NOTATION",
    "positiveInteger",
    "QName",
    "short",
    "string",
    "time",
    "token",
    "unsignedByte",
    "unsignedInt",
    "unsignedLong",
    "unsignedShort",
    "optional",
    "prohibited",
    "qualified",
    "required",
    "unbounded",
    "unqualified",
    "lax",
    "skip",
    "strict",
    "collapse",
    "preserve",
    "replace"};

bool IsFatal(const ParseDiagnostic& diagnostic)
{
    return diagnostic.severity == ParseDiagnostic::Severity::FatalError;
}

// Returns the first quoted text of a message without a namespace in front of it; empty if there is none.
VString FindQuotedName(const VString& message)
{
    const std::u16string_view text = message.View();
    const std::size_t start = text.find(u'\'');
    const std::size_t end = start == std::u16string_view::npos ? start : text.find(u'\'', start + 1);
    if (end == std::u16string_view::npos)
        return VString();
    const std::u16string_view quoted = text.substr(start + 1, end - start - 1);
    const std::u16string_view name = quoted.substr(quoted.rfind(u':') + 1);
    return VString(name.data(), name.size());
}

bool IsOfSchema(const VString& name)
{
    return std::any_of(
        std::begin(schemaNames), std::end(schemaNames), [&](const char* known) { return name == known; });
}

void AddSuggestion(ParseDiagnostic& diagnostic)
{
    const VString name = FindQuotedName(diagnostic.message);
    if (name.IsEmpty() || IsOfSchema(name))
        return;
    diagnostic.value = name;
    diagnostic.suggestion = FindNearestName(name, std::vector<VString>(std::begin(schemaNames), std::end(schemaNames)));
    diagnostic.message = MessageWords::WithSuggestion(diagnostic.message, diagnostic.suggestion);
}

std::optional<ParseDiagnostic> ExplainSyntax(const ParseDiagnostic& fatal, const XercesInputSource& source)
{
    const std::optional<SyntaxFault> fault = FindSyntaxFault(source.View());
    if (!fault)
        return std::nullopt;
    ParseDiagnostic diagnostic = fatal;
    DescribeSyntaxFault(*fault, source.View(), source.GetSourceMap().get(), diagnostic);
    return diagnostic;
}

}  // namespace

std::vector<ParseDiagnostic> ExplainSchemaFaults(
    std::vector<ParseDiagnostic> recorded, const XercesInputSource& source, const VString& id)
{
    const auto fatal = std::find_if(recorded.begin(), recorded.end(), IsFatal);
    if (fatal != recorded.end() && fatal->code == DiagnosticCode::BadSchema && fatal->sourceId == id) {
        if (std::optional<ParseDiagnostic> syntax = ExplainSyntax(*fatal, source))
            return {std::move(*syntax)};
    }
    // Xerces reports the place behind the tag.
    std::map<std::pair<std::uint64_t, std::uint64_t>, SourceRange> names;
    if (!recorded.empty()) {
        const auto map = [&](SourcePosition position) {
            return source.GetSourceMap() ? source.GetSourceMap()->Map(position) : position;
        };
        for (SourceTags tags(source.View()); tags.Next(); tags.Advance()) {
            const SourcePosition end = map(tags.GetRange().end);
            const SourceRange name = tags.GetRange(tags.Next()->name);
            names[{end.line, end.column}] = {map(name.start), map(name.end)};
        }
    }
    for (ParseDiagnostic& diagnostic : recorded) {
        if (diagnostic.code != DiagnosticCode::BadSchema || diagnostic.sourceId != id)
            continue;
        AddSuggestion(diagnostic);
        const auto name = names.find({diagnostic.start.line, diagnostic.start.column});
        if (name != names.end()) {
            diagnostic.start = name->second.start;
            diagnostic.end = name->second.end;
        }
    }
    return recorded;
}
