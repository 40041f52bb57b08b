// Renames names in a document. The result is well-formed, consists of the original and the edits, and is verified by
// the retargeter.
// Input: a document, and lines that each begin with the kind of a name (see ReadRenames), followed by "OLD=NEW".
#include <optional>
#include <sstream>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"
#include "vancorexml/main/parser/XSDResources.h"
#include "vansys/VantoraException.h"

namespace {

void ReadRenames(const std::string& lines, DOM& tables)
{
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const auto equalsSign = line.find('=');
        if (equalsSign == 0 || equalsSign == std::string::npos)
            continue;
        const VString from = VString::fromStdString(line.substr(1, equalsSign - 1));
        const VString to = VString::fromStdString(line.substr(equalsSign + 1));
        switch (line[0]) {
        case 's': tables.AddDataSourceRename(from, to); break;
        case 'c': tables.AddDataConnectionRename(from, to); break;
        case 'm': tables.AddMapSourceRename(from, to); break;
        case 'f': tables.AddFieldRename(FieldName::ParseGlobal(from), FieldName::ParseGlobal(to)); break;
        case 't':
            if (tables.GetCaptionRenameIfItExists(from) == from)
                tables.AddCaptionRename(from, to);
            break;
        default: break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const NameRoles roles(
        *XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXA, XSDResources::GetCurrentVersion()));
    InputParts parts(data, size);
    const std::string text = parts.Next();
    DOM tables;
    ReadRenames(parts.IsAtEnd() ? "sorders=new\nf[orders].[Sales]=[orders].[new]" : parts.Next(), tables);
    XMLSourceRetargeter retargeter(roles, tables);
    try {
        const std::optional<EditedText> renamed = retargeter.Retarget(text, "input");
        if (!renamed)
            return 0;
        Require(ApplyEdits(text, renamed->edits) == renamed->text, "only the bytes of the edits change");
        Require(!DOMParser().ParseXmlString(VString::fromStdString(renamed->text), "renamed")->HasErrors(),
            "the document with the new names is well-formed");
    } catch (const VantoraException&) {
        // A new name that cannot be written, or a name in an entity.
    }
    return 0;
}
