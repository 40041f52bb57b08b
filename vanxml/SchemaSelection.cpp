#include "vanxml/SchemaSelection.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <utility>

#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VPath.h"
#include "vancorexml/main/parser/XSDResources.h"
#include "vanxml/FirstTag.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/ToolError.h"

namespace {

// A type of document that has schemas.
struct DocumentType {
    XmlFileType type;
    const char* extension;
    const char* firstElement;
};

const DocumentType documentTypes[] = {
    {XmlFileTypeKXA, "kxa", "analysis"},
    {XmlFileTypeKXB, "kxb", "data-source"},
    {XmlFileTypeKXC, "kxc", "data-connection"},
    {XmlFileTypeKXD, "kxd", "map-source"},
    {XmlFileTypeKXE, "kxe", "captions"},
    {XmlFileTypeKXF, "kxf", "fields"},
};

const DocumentType* FindByExtension(const VString& name)
{
    const VString extension(QFileInfo(name.ToQString()).suffix().toLower());
    const auto found = std::find_if(std::begin(documentTypes), std::end(documentTypes), [&](const DocumentType& type) {
        return extension == type.extension;
    });
    return found == std::end(documentTypes) ? nullptr : found;
}

const DocumentType* FindByElement(const std::string& name)
{
    const auto found = std::find_if(std::begin(documentTypes), std::end(documentTypes), [&](const DocumentType& type) {
        return name == type.firstElement;
    });
    return found == std::end(documentTypes) ? nullptr : found;
}

VString Decoded(const VString& location)
{
    const QUrl url(location.ToQString());
    return url.isLocalFile() ? VString(url.toLocalFile())
                             : VString(QUrl::fromPercentEncoding(location.ToQString().toUtf8()));
}

// Returns `shown`, a name of the missing file `path`, with the name of the schema file in the same folder that is
// probably meant. Empty if there is no such file.
VString FindSimilarSchema(const VString& path, const VString& shown)
{
    const QFileInfo file(path.ToQString());
    std::vector<VString> names;
    for (const QString& name : file.dir().entryList({QStringLiteral("*.xsd")}, QDir::Files))
        names.emplace_back(name);
    const VString nearest = FindNearestName(VString(file.fileName()), names);
    const QString shownName = QFileInfo(shown.ToQString()).fileName();
    return nearest.IsEmpty() ? nearest : VString(shown.ToQString().chopped(shownName.size())) + nearest;
}

// Returns the type of the document; null if it has none of the types.
const DocumentType* FindType(const VString& name, const FirstTag& tag)
{
    if (const DocumentType* const type = FindByExtension(name))
        return type;
    // Other vocabularies have a namespace or no version.
    return tag.Find("version") && !tag.Find("xmlns") ? FindByElement(tag.name) : nullptr;
}

std::vector<VString> VersionsOf(XmlFileType type)
{
    std::vector<VString> versions;
    for (const VersionNumber& version : XSDResources::GetSchemaVersions(type))
        versions.push_back(version.GetAsString());
    return versions;
}

// Returns an error of the first element.
ParseDiagnostic MakeProblem(const VString& document, const FirstTag& tag, const VString& message)
{
    ParseDiagnostic problem;
    problem.code = DiagnosticCode::MissingSchema;
    problem.message = message;
    problem.sourceId = document;
    problem.start = tag.start;
    problem.end = tag.end;
    if (!tag.name.empty()) {
        problem.element = 1;
        problem.path = "/" + VString::fromStdString(tag.name);
    }
    return problem;
}

// Returns the error that the first element is not that of the type.
ParseDiagnostic MakeWrongElement(const VString& document, const FirstTag& tag, const DocumentType& type)
{
    ParseDiagnostic problem = MakeProblem(document,
        tag,
        VFormatString("the document element of a .%1 file is '%2', not '%3'")
            .arg(VString(type.extension))
            .arg(VString(type.firstElement))
            .arg(VString::fromStdString(tag.name)));
    problem.code = DiagnosticCode::UnexpectedElement;
    problem.allowed = {type.firstElement};
    problem.expected = "the element " + VString(type.firstElement);
    return problem;
}

// Returns an error of the value of an attribute, or of a part of it.
ParseDiagnostic MakeProblem(const VString& document,
    const FirstTag& tag,
    const FirstTag::Attribute& attribute,
    const VString& part,
    const VString& message)
{
    ParseDiagnostic problem = MakeProblem(document, tag, message);
    problem.attribute = VString::fromStdString(attribute.name);
    problem.value = part;
    problem.start = attribute.start;
    problem.end = attribute.end;
    const std::string text = part.toStdString();
    if (const std::size_t found = attribute.value.find(text); found != std::string::npos) {
        problem.start = FindEnd(attribute.start, std::string_view(attribute.value).substr(0, found));
        problem.end = FindEnd(problem.start, text);
    }
    return problem;
}

constexpr std::string_view instanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";

// Returns the attribute `localName` of the namespace for instances of schemas; null if there is none.
const FirstTag::Attribute* FindInstanceAttribute(const FirstTag& tag, std::string_view localName)
{
    for (const FirstTag::Attribute& attribute : tag.attributes) {
        constexpr std::string_view declaration = "xmlns:";
        if (!attribute.name.starts_with(declaration) || attribute.value != instanceNamespace)
            continue;
        const std::string prefix = attribute.name.substr(declaration.size());
        if (const FirstTag::Attribute* const found = tag.Find(prefix + ":" + std::string(localName)))
            return found;
    }
    return nullptr;
}

// Returns the prefix that the tag declares for instances of schemas; "xsi" if there is none.
std::string FindInstancePrefix(const FirstTag& tag)
{
    constexpr std::string_view declaration = "xmlns:";
    for (const FirstTag::Attribute& attribute : tag.attributes) {
        if (attribute.name.starts_with(declaration) && attribute.value == instanceNamespace)
            return attribute.name.substr(declaration.size());
    }
    return "xsi";
}

// Returns the name that an attribute without a meaning should have to name schemas: "xsi:schemaLocation" for
// "xsi:schemalocation", and "xsi:noNamespaceSchemaLocation" for "noNamespaceSchemaLocation". Empty if the attribute is
// not such a mistake.
std::string FindIntendedHint(const FirstTag& tag, const std::string& attribute)
{
    const std::size_t colon = attribute.find(':');
    const std::string prefix = attribute.substr(0, colon == std::string::npos ? 0 : colon);
    const FirstTag::Attribute* const declaration = tag.Find("xmlns:" + prefix);
    if (!prefix.empty() && (!declaration || declaration->value != instanceNamespace))
        return std::string();
    const VString localName(VString::fromStdString(attribute.substr(prefix.empty() ? 0 : colon + 1)));
    for (const char* const name : {"schemaLocation", "noNamespaceSchemaLocation"}) {
        std::string intended = (prefix.empty() ? FindInstancePrefix(tag) : prefix) + ":" + name;
        const bool isSimilar = VString(localName.ToQString().toLower()) == VString(VString(name).ToQString().toLower());
        if (isSimilar && attribute != intended)
            return intended;
    }
    return std::string();
}

// Returns the parts of an attribute's value between white space.
std::vector<VString> SplitHints(const FirstTag::Attribute& attribute)
{
    // An ampersand is the only character of an address that a document must write as a reference.
    const QString value = QString::fromStdString(attribute.value).replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    std::vector<VString> parts;
    for (const QString& part : value.simplified().split(u' ', Qt::SkipEmptyParts))
        parts.emplace_back(part);
    return parts;
}

bool IsNetworkAddress(const VString& location)
{
    const QString scheme = QUrl(location.ToQString()).scheme();
    // A scheme of one letter is a drive of Windows.
    return scheme.size() > 1 && scheme != QStringLiteral("file");
}

// Collects the schema files that a document names.
class HintReader {
public:
    HintReader(const VString& document, const FirstTag& tag) : m_document(document), m_tag(tag) {}

    void Add(const FirstTag::Attribute& attribute, const VString& location)
    {
        if (IsNetworkAddress(location)) {
            AddProblem(attribute,
                location,
                VFormatString("the schema '%1' is not fetched from the network; download it and pass --schema FILE")
                    .arg(location));
            return;
        }
        const VString file = FindSchemaBeside(m_document, location);
        if (file.IsEmpty())
            AddMissingFile(attribute, location);
        else
            AddFile(file);
    }

    void AddProblem(const FirstTag::Attribute& attribute, const VString& part, const VString& message)
    {
        m_selection.problems.push_back(MakeProblem(m_document, m_tag, attribute, part, message));
    }

    // Adds a warning for each attribute that names schemas under a wrong name.
    void AddMisspeltAttributes()
    {
        for (const FirstTag::Attribute& attribute : m_tag.attributes) {
            const VString intended = VString::fromStdString(FindIntendedHint(m_tag, attribute.name));
            if (intended.IsEmpty())
                continue;
            AddProblem(attribute,
                VString::fromStdString(attribute.value),
                VFormatString("the attribute '%1' names no schema; did you mean '%2'?")
                    .arg(VString::fromStdString(attribute.name))
                    .arg(intended));
            ParseDiagnostic& problem = m_selection.problems.back();
            problem.severity = ParseDiagnostic::Severity::Warning;
            problem.suggestion = intended;
            problem.start = attribute.nameStart;
            problem.end = FindEnd(attribute.nameStart, attribute.name);
        }
    }

    SchemaSelection Finish() { return std::move(m_selection); }

private:
    void AddMissingFile(const FirstTag::Attribute& attribute, const VString& location)
    {
        VPath folder(m_document);
        folder.RemoveFilename();
        const VString similar = FindSimilarSchema((folder / VPath(location)).String(), location);
        const VString hint = similar.IsEmpty() ? VString() : VFormatString("; did you mean '%1'?").arg(similar);
        const VString message =
            VFormatString("there is no schema file '%1' beside the document%2").arg(location).arg(hint);
        AddProblem(attribute, location, message);
        m_selection.problems.back().suggestion = similar;
    }

    void AddFile(const VString& file)
    {
        SchemaReference& schema = m_selection.schema;
        if (schema.kind == SchemaReference::Kind::None)
            schema = {SchemaReference::Kind::File, file, {}};
        else
            schema.moreFiles.push_back(file);
    }

    const VString& m_document;
    const FirstTag& m_tag;
    SchemaSelection m_selection;
};

// Returns the resources whose names have the form of a schema's name, sorted.
std::vector<VString> ListResources()
{
    std::vector<VString> names;
    const QStringList pattern{QStringLiteral("VQRC_FILEFORMAT_*_XSD*")};
    for (const QString& name : QDir(QStringLiteral(":/vancorexml")).entryList(pattern, QDir::Files, QDir::Name))
        names.emplace_back(name);
    return names;
}

// Returns "oauth-config" for "VQRC_FILEFORMAT_OAUTH_CONFIG_XSD".
VString ShortName(const VString& resource)
{
    const QString prefix = QStringLiteral("VQRC_FILEFORMAT_");
    const QString suffix = QStringLiteral("_XSD");
    const QString& name = resource.ToQString();
    return VString(name.mid(prefix.size(), name.size() - prefix.size() - suffix.size()).toLower().replace(u'_', u'-'));
}

// Returns the names of the schemas of a type if `name` begins with the name of the type.
std::vector<VString> ListSchemasOfType(const VString& name)
{
    std::vector<VString> names;
    for (const SchemaName& schema : ListSchemas()) {
        const VString type = schema.name.mid(0, schema.name.indexOf(u'-'));
        const bool hasVersion = std::any_of(std::begin(documentTypes), std::end(documentTypes), [&](const auto& each) {
            return type == each.extension;
        });
        if (hasVersion && VString(name.ToQString().toLower()).startsWith(type))
            names.push_back(schema.name);
    }
    return names;
}

}  // namespace

SchemaSelection SelectSchema(InputSource& document, SourcePosition documentStart)
{
    const FirstTag tag = ReadFirstTag(document, documentStart);
    const DocumentType* const type = FindType(document.Id(), tag);
    SchemaSelection selection;
    if (!type)
        return selection;
    const std::vector<VString> versions = VersionsOf(type->type);
    const VString supported =
        (versions.size() == 1 ? VString("there is a schema for ") : VString("there are schemas for ")) +
        VString::join(versions, ", ");
    const FirstTag::Attribute* const attribute = tag.Find("version");
    VString schema;
    if (attribute) {
        const VersionNumber version(VString::fromStdString(attribute->value), u'.', u'-', 0);
        schema = XSDResources::GetVersionedXsdResourceName(type->type, version);
    }
    if (!schema.IsEmpty()) {
        selection.schema = {SchemaReference::Kind::Resource, schema, {}};
        return selection;
    }
    // The version of another element says nothing about the document.
    if (!tag.name.empty() && tag.name != type->firstElement) {
        selection.problems.push_back(MakeWrongElement(document.Id(), tag, *type));
        return selection;
    }
    if (!attribute) {
        selection.problems.push_back(
            MakeProblem(document.Id(), tag, "the document element has no attribute 'version'; " + supported));
    } else {
        const VString message = VFormatString("there is no schema for version '%1'; %2")
                                    .arg(VString::fromStdString(attribute->value))
                                    .arg(supported);
        selection.problems.push_back(
            MakeProblem(document.Id(), tag, *attribute, VString::fromStdString(attribute->value), message));
    }
    ParseDiagnostic& problem = selection.problems.back();
    problem.attribute = "version";
    problem.allowed = versions;
    problem.expected = "a version such as " + versions.back();
    return selection;
}

SchemaSelection SelectHintedSchemas(InputSource& document, SourcePosition documentStart)
{
    const FirstTag tag = ReadFirstTag(document, documentStart);
    HintReader reader(document.Id(), tag);
    if (const FirstTag::Attribute* const attribute = FindInstanceAttribute(tag, "noNamespaceSchemaLocation")) {
        for (const VString& location : SplitHints(*attribute))
            reader.Add(*attribute, location);
    }
    if (const FirstTag::Attribute* const attribute = FindInstanceAttribute(tag, "schemaLocation")) {
        const std::vector<VString> parts = SplitHints(*attribute);
        std::set<VString> namespaces;
        for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
            if (namespaces.insert(parts[i]).second)
                reader.Add(*attribute, parts[i + 1]);
        }
        if (parts.size() % 2 != 0) {
            reader.AddProblem(*attribute,
                parts.back(),
                VFormatString("the namespace '%1' has no schema file behind it; write pairs of a namespace and a file")
                    .arg(parts.back()));
        }
    }
    reader.AddMisspeltAttributes();
    return reader.Finish();
}

SchemaOption::SchemaOption(const std::string& text)
{
    const VString name = VString::fromStdString(text);
    if (text == "auto")
        m_rule = Rule::Auto;
    else if (text == "hints")
        m_rule = Rule::Hints;
    else if (const VString resource = FindSchemaResource(name); !resource.IsEmpty())
        m_fixed = {SchemaReference::Kind::Resource, resource, {}};
    else if (text != "none" && MayBeFile(name))
        m_fixed = {SchemaReference::Kind::File, name, {}};
    else if (text != "none")
        throw UsageError(DescribeUnknownSchema(name, true));
}

SchemaSelection SchemaOption::Select(SourceDocument& document) const
{
    switch (m_rule) {
    case Rule::Auto: return SelectSchema(document.Source(), document.Start());
    case Rule::Hints: return SelectHintedSchemas(document.Source(), document.Start());
    case Rule::Fixed: break;
    }
    return {m_fixed, {}};
}

std::vector<SchemaName> ListSchemas()
{
    std::vector<SchemaName> schemas;
    for (const DocumentType& type : documentTypes) {
        for (const VersionNumber& version : XSDResources::GetSchemaVersions(type.type)) {
            schemas.push_back({VFormatString("%1-%2").arg(VString(type.extension)).arg(version.GetAsString()),
                XSDResources::GetVersionedXsdResourceName(type.type, version)});
        }
    }
    for (const VString& resource : ListResources()) {
        const auto isListed = [&](const SchemaName& schema) { return schema.resource == resource; };
        if (std::none_of(schemas.begin(), schemas.end(), isListed))
            schemas.push_back({ShortName(resource), resource});
    }
    return schemas;
}

VString FindSchemaResource(const VString& name)
{
    for (const SchemaName& schema : ListSchemas()) {
        if (name == schema.name || name == schema.resource)
            return schema.resource;
    }
    return VString();
}

std::string DescribeUnknownSchema(const VString& name, bool isOption)
{
    std::vector<VString> names;
    if (isOption)
        names = {"auto", "hints", "none"};
    for (const SchemaName& schema : ListSchemas()) {
        names.push_back(schema.name);
        names.push_back(schema.resource);
    }
    const std::string start = "there is no schema '" + name.toStdString() + "'; ";
    if (const VString nearest = FindNearestName(name, names); !nearest.IsEmpty())
        return start + "did you mean '" + nearest.toStdString() + "'?";
    const VString similarFile = isOption ? FindSimilarSchema(name, name) : VString();
    if (!similarFile.IsEmpty())
        return start + "did you mean '" + similarFile.toStdString() + "'?";
    if (const std::vector<VString> similar = ListSchemasOfType(name); !similar.empty())
        return start + (similar.size() == 1 ? "there is " : "there are ") + VString::join(similar, ", ").toStdString();
    return start +
        (isOption ? "it is neither a file nor a name that 'vanxml schema list' prints"
                  : "'vanxml schema list' prints the names");
}

bool MayBeFile(const VString& name)
{
    const std::filesystem::file_type type = OperatingSystem::TypeOf(name.View());
    return type != std::filesystem::file_type::not_found && type != std::filesystem::file_type::directory;
}

VString FindSchemaBeside(const VString& file, const VString& location)
{
    VPath folder(file);
    folder.RemoveFilename();
    const VPath plain = folder / VPath(location);
    if (MayBeFile(plain.String()))
        return plain.String();
    const VPath decoded = folder / VPath(Decoded(location));
    return MayBeFile(decoded.String()) ? decoded.String() : VString();
}
