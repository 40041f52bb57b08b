#include "vancorexml/main/parser/VersionSniffer.h"

#include <optional>
#include <string>

#include "vancorexml/main/parser/FirstElementTag.h"
#include "vancorexml/main/parser/XMLUtils.h"

Nullable<VersionNumber> VersionSniffer(InputSource& source, const VString& attributeName)
{
    const std::string tag = ReadFirstElementTag(source);
    if (tag.empty())
        return {};
    const std::string name = attributeName.IsEmpty() ? "version" : attributeName.toStdString();
    const std::optional<std::string> value = XmlUtils::GetAttributeValueInTag(tag, name, {0, tag.size()});
    if (!value)
        return {};
    return VersionNumber(VString::fromStdString(*value), u'.', u'-', 0);
}
