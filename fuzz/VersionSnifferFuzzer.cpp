// Compares the version sniffer with a search of the whole document. The sniffer resets the source.
// Input: a document, and the name of the attribute as a second part.
#include <optional>

#include "fuzz/FuzzSupport.h"
#include "tests/input/ReferenceScanners.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/VersionSniffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const std::string text = parts.Next();
    const VString name = VString::fromStdString(parts.Next());
    Utf8InputSource source(text, "input", false);
    const Nullable<VersionNumber> version = VersionSniffer(source, name);
    const XmlUtils::TagRange tag = reference::FindFirstElementTag(text);
    std::optional<std::string> expected;
    if (tag.start != reference::npos) {
        const std::string attribute = name.IsEmpty() ? "version" : name.toStdString();
        expected = reference::GetAttributeValueInTag(text, attribute, tag);
    }
    Require(version.IsPresent() == expected.has_value(), "the sniffer finds the attribute of the reference");
    if (expected) {
        Require(version.GetValue().GetAsString() == VString::fromStdString(*expected),
            "the sniffer finds the version of the reference");
    }
    std::string bytes;
    Require(source.GetBytes(bytes, static_cast<unsigned>(size)) != text.empty() && bytes == text,
        "the sniffer resets the source");
    return 0;
}
