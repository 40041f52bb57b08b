#include "vancorexml/main/parser/XSDResources.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "vancoredata/VResource.h"
#include "vancoreplatform/StaticObject.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VLog.h"
#include "vancorexml/main/parser/DOMException.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XSDResourceResolver.h"

namespace {

// The major and minor numbers of the versions that have schemas, oldest first. The last one is the current version.
// resources.cmake reads this line to make the schemas of these versions, so it must stay a single line.
// clang-format off
constexpr const char* const SchemaVersions[] = {"10.2", "10.3", "10.4", "10.5", "18.1"};
// clang-format on

VersionNumber MakeVersion(const char* text)
{
    return VersionNumber(text, u'.', u'-', 0);
}

VString BaseName(XmlFileType type)
{
    switch (type) {
    case XmlFileTypeKXA: return "VQRC_FILEFORMAT_KXA_XSD";
    case XmlFileTypeKXB: return "VQRC_FILEFORMAT_KXB_XSD";
    case XmlFileTypeKXC: return "VQRC_FILEFORMAT_KXC_XSD";
    case XmlFileTypeKXD: return "VQRC_FILEFORMAT_KXD_XSD";
    case XmlFileTypeKXE: return "VQRC_FILEFORMAT_KXE_XSD";
    case XmlFileTypeKXF: return "VQRC_FILEFORMAT_KXF_XSD";
    default: return VString();
    }
}

std::unique_ptr<InputSource> MakeInputSource(const VString& resourceName)
{
    if (resourceName.IsEmpty())
        return nullptr;
    return std::make_unique<StringInputSource>(UTF8StringVResource(resourceName).GetString(), resourceName, false);
}

struct CurrentVersion {
    VersionNumber version = MakeVersion(*std::rbegin(SchemaVersions));
};

}  // namespace

const VersionNumber& XSDResources::GetCurrentVersion()
{
    return GetStaticObject<CurrentVersion>().version;
}

VString XSDResources::GetVersionedXsdResourceName(XmlFileType type, const VersionNumber& version)
{
    VString baseName = BaseName(type);
    if (baseName.IsEmpty())
        return VString();
    if (version == GetCurrentVersion()) {
        XSDResourceResolver::CheckResolves(baseName);
        return baseName;
    }
    LogMessage(VLog::Debug,
        VFormatString("XSD Resource version '%1' != Current version '%2'")
            .arg(version.GetAsString())
            .arg(GetCurrentVersion().GetAsString()));
    const VString name = VFormatString("%1_%2").arg(baseName).arg(version.GetMajorAndMinorAsString(u'_'));
    return VResource(name).isValid() ? name : VString();
}

bool XSDResources::IsThereAnXSDResource(XmlFileType type, const VersionNumber& version)
{
    switch (type) {
    case XmlFileTypeKXA:
    case XmlFileTypeKXB:
    case XmlFileTypeKXC:
    case XmlFileTypeKXD: {
        const VString wanted = version.GetMajorAndMinorAsString(u'.');
        return std::any_of(std::begin(SchemaVersions), std::end(SchemaVersions), [&wanted](const char* listed) {
            return wanted == VString(listed);
        });
    }
    // For these two types the version does not matter.
    case XmlFileTypeKXE:
    case XmlFileTypeKXF: return true;
    default: return false;
    }
}

std::vector<VersionNumber> XSDResources::GetSchemaVersions(XmlFileType type)
{
    std::vector<VersionNumber> versions;
    for (const char* const text : SchemaVersions) {
        VersionNumber version = MakeVersion(text);
        if (!GetVersionedXsdResourceName(type, version).IsEmpty())
            versions.push_back(std::move(version));
    }
    return versions;
}

std::unique_ptr<InputSource> XSDResources::GetVersionedXsdInputSource(XmlFileType type, const VersionNumber& version)
{
    return MakeInputSource(GetVersionedXsdResourceName(type, version));
}

std::unique_ptr<InputSource> XSDResources::GetVersionedXsdInputSourceForDocument(
    XmlFileType type, InputSource& document, const VString& attributeName)
{
    const Nullable<VersionNumber> version = VersionSniffer(document, attributeName);
    if (!version.IsPresent()) {
        throw DOMException("Version attribute missing.",
            VError::ErrorInfo(VantoraError::MakeError(0xCA8DC404, "DOMException_MissingVersionAttribute_0xCA8DC404"),
                VError::ErrorSource::Caller,
                VError::StatusCode::Unknown));
    }
    return GetVersionedXsdInputSource(type, version.GetValue());
}
