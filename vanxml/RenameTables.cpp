#include "vanxml/RenameTables.h"

#include <algorithm>

#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VFile.h"
#include "vanxml/CsvTable.h"
#include "vanxml/ToolError.h"

namespace {

// Returns the position of the "=" between the names, or npos. Brackets protect a "=" in field names.
std::size_t FindSeparator(const std::string& text, NameRole role)
{
    bool isInBrackets = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '=' && !isInBrackets)
            return i;
        const bool isDoubled = isInBrackets && text.compare(i, 2, "]]") == 0;
        if (isDoubled)
            ++i;
        else if (role == NameRole::FieldName && (text[i] == '[' || text[i] == ']'))
            isInBrackets = text[i] == '[';
    }
    return std::string::npos;
}

bool HasDataSource(const std::string& field)
{
    return !FieldName::ParseGlobal(VString::fromStdString(field)).GetRootValue().IsEmpty();
}

// Returns a sentence with a suggestion, or with all kinds if none is similar.
std::string DescribeUnknownKind(const std::string& kind)
{
    std::vector<VString> names;
    for (const RenameKind& each : GetRenameKinds())
        names.emplace_back(each.option);
    const VString nearest = FindNearestName(VString::fromStdString(kind), names);
    return "'" + kind + "' is not a kind of name; " +
        (nearest.IsEmpty() ? "the kinds are " + VString::join(names, ", ").toStdString()
                           : "did you mean '" + nearest.toStdString() + "'?");
}

std::string Quoted(const VString& text)
{
    return "'" + text.toStdString() + "'";
}

// Bytes that cannot be decoded are a fault of a document elsewhere, so this function throws them as another exception.
std::string ReadTable(const std::string& file)
{
    try {
        return VFile::LoadTextFileAsUtf8(VString::fromStdString(file), false);
    } catch (const VIO::DecodingException& exception) {
        throw ToolError(exception.what());
    }
}

}  // namespace

const std::vector<RenameKind>& GetRenameKinds()
{
    static const std::vector<RenameKind> kinds = {
        {NameRole::DataSource, "data-source", "data source", "OLD=NEW"},
        {NameRole::DataConnection, "data-connection", "data connection", "OLD=NEW"},
        {NameRole::MapSource, "map-source", "map source", "OLD=NEW"},
        {NameRole::Caption, "caption", "caption", "OLD=NEW"},
        {NameRole::FieldName, "field", "field", "[SOURCE].[OLD]=[SOURCE].[NEW]"},
        {NameRole::FilePath, "path", "path", "OLD=NEW"},
    };
    return kinds;
}

const RenameKind& GetRenameKind(NameRole role)
{
    return *std::find_if(
        GetRenameKinds().begin(), GetRenameKinds().end(), [role](const RenameKind& kind) { return kind.role == role; });
}

std::string DescribeRename(NameRole role, const VString& oldName, const VString& newName)
{
    return GetRenameKind(role).name + std::string(" ") + Quoted(oldName) + " -> " + Quoted(newName);
}

RenameTables::RenameTables()
{
    // The fields of the protected data source keep their names. A new DOM protects the data source without a name.
    // Protect a name that no document can contain instead.
    m_tables.SetProtectedDataSourceName(VString(u"\0", 1));
}

void RenameTables::Add(const RenameKind& kind, const std::string& text)
{
    const std::string place = "--" + std::string(kind.option) + ": ";
    const std::size_t separator = FindSeparator(text, kind.role);
    if (separator == std::string::npos)
        throw ToolError(place + "'" + text + "' is not of the form " + kind.argument);
    AddRename(kind, text.substr(0, separator), text.substr(separator + 1), place);
    m_tables.SetPathRenames(m_paths);
}

void RenameTables::AddTable(const std::string& file)
{
    const std::string text = ReadTable(file);
    const std::vector<CsvRecord> records = ParseCsv(text, file);
    for (const CsvRecord& record : records) {
        const std::string place = file + ":" + std::to_string(record.line) + ": ";
        if (record.fields.size() != 3)
            throw ToolError(place + "a record has the three fields kind, old and new");
        const bool isHeader = &record == &records.front() && record.fields[0] == "kind" && record.fields[1] == "old" &&
            record.fields[2] == "new";
        if (isHeader)
            continue;
        const RenameKind* found = nullptr;
        for (const RenameKind& kind : GetRenameKinds()) {
            if (record.fields[0] == kind.option)
                found = &kind;
        }
        if (!found)
            throw ToolError(place + DescribeUnknownKind(record.fields[0]));
        AddRename(*found, record.fields[1], record.fields[2], place);
    }
    m_tables.SetPathRenames(m_paths);
}

void RenameTables::Protect(const std::string& dataSource)
{
    m_tables.SetProtectedDataSourceName(VString::fromStdString(dataSource));
}

void RenameTables::AddRename(
    const RenameKind& kind, const std::string& oldText, const std::string& newText, const std::string& place)
{
    for (const std::string* text : {&oldText, &newText}) {
        const VString name = VString::fromStdString(*text);
        if (name.IsEmpty())
            throw ToolError(place + "a name is empty");
        if (kind.role == NameRole::FieldName && FieldName::ParseGlobal(name).GetFullValue() != name)
            throw ToolError(place + "'" + *text + "' is not a field name of the form [SOURCE].[FIELD] or [FIELD]");
    }
    if (kind.role == NameRole::FieldName && HasDataSource(oldText) != HasDataSource(newText))
        throw ToolError(place + "either both names of a field have a data source, or none of them");
    const Rename rename{kind.role, VString::fromStdString(oldText), VString::fromStdString(newText)};
    const Rename* const known = Find(rename.role, rename.oldName);
    if (known && known->newName != rename.newName)
        throw ToolError(place + "the " + kind.name + " '" + oldText + "' has two new names");
    if (known)
        return;
    if (rename.role == NameRole::FilePath)
        m_pathNumbers.emplace(VPath(rename.oldName), m_renames.size());
    else
        m_numbers.emplace(std::pair(rename.role, rename.oldName), m_renames.size());
    AddToTables(rename);
    m_renames.push_back(rename);
}

void RenameTables::AddToTables(const Rename& rename)
{
    switch (rename.role) {
    case NameRole::DataSource: m_tables.AddDataSourceRename(rename.oldName, rename.newName); break;
    case NameRole::DataConnection: m_tables.AddDataConnectionRename(rename.oldName, rename.newName); break;
    case NameRole::MapSource: m_tables.AddMapSourceRename(rename.oldName, rename.newName); break;
    case NameRole::Caption: m_tables.AddCaptionRename(rename.oldName, rename.newName); break;
    case NameRole::FieldName:
        m_tables.AddFieldRename(FieldName::ParseGlobal(rename.oldName), FieldName::ParseGlobal(rename.newName));
        break;
    case NameRole::FilePath: m_paths.SetRename(VPath(rename.oldName), VPath(rename.newName)); break;
    case NameRole::None:
    case NameRole::Formula: break;
    }
}

void RenameTables::MarkUsed(const RenamedName& name) const
{
    if (name.role != NameRole::FieldName) {
        Mark(name.role, name.oldName);
        return;
    }
    // A field rename applies under the new name of the data source.
    FieldName field = FieldName::ParseGlobal(name.oldName);
    const VString dataSource = field.GetRootValue();
    field.SetRootValue(m_tables.RenameDataSource(dataSource));
    Mark(NameRole::FieldName, field.GetFullValue());
    if (field.GetRootValue() != dataSource)
        Mark(NameRole::DataSource, dataSource);
}

const RenameTables::Rename* RenameTables::Find(NameRole role, const VString& oldName) const
{
    if (role == NameRole::FilePath) {
        const auto path = m_pathNumbers.find(VPath(oldName));
        return path == m_pathNumbers.end() ? nullptr : &m_renames[path->second];
    }
    const auto name = m_numbers.find(std::pair(role, oldName));
    return name == m_numbers.end() ? nullptr : &m_renames[name->second];
}

void RenameTables::Mark(NameRole role, const VString& oldName) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const Rename* const rename = Find(role, oldName))
        rename->isUsed = true;
}

std::vector<std::string> RenameTables::DescribeUnused() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> unused;
    for (const Rename& rename : m_renames) {
        if (rename.isUsed)
            continue;
        const bool isEqual = rename.oldName == rename.newName;
        unused.push_back(DescribeRename(rename.role, rename.oldName, rename.newName) +
            (isEqual ? " changes nothing, because the names are equal" : " matched nothing"));
    }
    return unused;
}
