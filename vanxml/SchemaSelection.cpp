#include "vanxml/SchemaSelection.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include "vancoredata/VResource.h"
#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/FirstElementTag.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XSDResources.h"
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

// Returns the name of the first element; empty if there is no element.
std::string FirstElementName(InputSource& document)
{
    const std::string tag = ReadFirstElementTag(document);
    std::size_t end = 1;
    while (end < tag.size() && XmlUtils::IsNameChar(tag[end]))
        ++end;
    return tag.empty() ? std::string() : tag.substr(1, end - 1);
}

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

// Returns a list such as "10.2, 10.3, 18.1".
VString ListVersions(XmlFileType type)
{
    std::vector<VString> versions;
    for (const VersionNumber& version : XSDResources::GetSchemaVersions(type))
        versions.push_back(version.GetAsString());
    return VString::join(versions, ", ");
}

SchemaSelection Problem(const VString& text)
{
    return {SchemaReference(), text};
}

}  // namespace

SchemaSelection SelectSchema(InputSource& document)
{
    const DocumentType* type = FindByExtension(document.Id());
    if (!type) {
        const std::string element = FirstElementName(document);
        type = FindByElement(element);
        if (!type) {
            return Problem(VFormatString(
                "Neither the extension nor the first element \"%1\" names a type of document that has schemas")
                               .arg(VString::fromStdString(element)));
        }
    }
    const Nullable<VersionNumber> version = VersionSniffer(document, VString());
    if (!version.IsPresent())
        return Problem("The document declares no version; there are schemas for " + ListVersions(type->type));
    const VString schema = XSDResources::GetVersionedXsdResourceName(type->type, version.GetValue());
    if (!schema.IsEmpty())
        return {{SchemaReference::Kind::Resource, schema}, VString()};
    return Problem(VFormatString("There is no schema for version %1; there are schemas for %2")
                       .arg(version.GetValue().GetAsString())
                       .arg(ListVersions(type->type)));
}

bool MayBeFile(const VString& name)
{
    std::error_code ignored;
    const std::filesystem::file_type type = std::filesystem::status(name.View(), ignored).type();
    return type != std::filesystem::file_type::not_found && type != std::filesystem::file_type::directory;
}

SchemaReference FindSchema(const VString& nameOrFile)
{
    if (VResource(nameOrFile).isValid())
        return {SchemaReference::Kind::Resource, nameOrFile};
    if (MayBeFile(nameOrFile))
        return {SchemaReference::Kind::File, nameOrFile};
    throw ToolError("There is no schema \"" + nameOrFile.toStdString() +
        "\": it is neither a file nor a name that \"vanxml schema list\" prints");
}

std::vector<VString> ListSchemaResources()
{
    std::vector<VString> names;
    for (const QString& name :
        QDir(QStringLiteral(":/vancorexml")).entryList({QStringLiteral("VQRC_FILEFORMAT_*")}, QDir::Files, QDir::Name))
        names.emplace_back(name);
    return names;
}
