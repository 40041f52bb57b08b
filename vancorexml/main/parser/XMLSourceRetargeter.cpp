#include "vancorexml/main/parser/XMLSourceRetargeter.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/WrittenValue.h"
#include "vancorexml/main/parser/XMLCharacters.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLTokenReader.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vansys/VantoraException.h"

namespace {

using Runs = std::vector<WrittenValue::Run>;

// The part of a value that a name takes, in UTF-16 code units.
struct Part {
    std::size_t offset;
    std::size_t length;
};

// If the white space of a value is collapsed, its name is the whole value without the white space at the ends.
Part FindPart(const NamePlace& place, std::u16string_view value)
{
    if (!place.isCollapsed)
        return {place.offset, place.length};
    std::size_t begin = 0;
    std::size_t end = value.size();
    while (begin < end && XmlUtils::IsWhitespace(value[begin]))
        ++begin;
    while (end > begin && XmlUtils::IsWhitespace(value[end - 1]))
        --end;
    return {begin, end - begin};
}

// A document as it is written.
struct SourceText {
    std::string_view text;
    bool isVersion11 = false;
};

bool IsVersion11(std::string_view text)
{
    XMLTokenReader reader(text);
    XMLToken token;
    while (reader.Next(token) && token.kind == XMLToken::Kind::Text)
        ;
    if (token.kind != XMLToken::Kind::Declaration)
        return false;
    XMLAttributeReader parts(token);
    for (XMLAttributeToken part; parts.Next(part);) {
        if (part.name == "version")
            return part.value == "1.1";
    }
    return false;
}

// Finds the bytes of names in a document.
class NameLocator {
public:
    explicit NameLocator(const SourceText& source) : m_text(source.text), m_isVersion11(source.isVersion11) {}

    // Returns the bytes of each name, or no runs for a name that comes from an entity or a default value. The places
    // must be in the order of the elements. Returns nothing if the document has not `elementCount` start tags, because
    // the numbers of the elements then mean other elements.
    std::vector<Runs> Locate(const std::vector<NamePlace>& places, std::size_t elementCount)
    {
        std::vector<Runs> located(places.size());
        XMLTokenReader reader(m_text);
        std::size_t count = 0;
        std::size_t next = 0;
        for (XMLToken token; reader.Next(token);) {
            if (token.kind != XMLToken::Kind::StartTag)
                continue;
            const std::size_t element = count++;
            if (next == places.size() || places[next].element != element)
                continue;
            // A formula can contain many names, so each value is read once for all its names.
            while (next < places.size() && places[next].element == element) {
                const VString& attribute = places[next].attribute;
                const WrittenValue value =
                    attribute.IsEmpty() ? ReadText(reader, token) : ReadAttribute(token, attribute.toStdString());
                const auto isInValue = [&](const NamePlace& place) {
                    return place.element == element && place.attribute == attribute;
                };
                for (; next < places.size() && isInValue(places[next]); ++next)
                    located[next] = FindRuns(value, places[next]);
            }
        }
        return count == elementCount ? located : std::vector<Runs>();
    }

private:
    // Reads the text between a start tag and the next tag. Takes a copy of the reader, because the caller must still
    // read this next tag.
    WrittenValue ReadText(XMLTokenReader reader, const XMLToken& startTag) const
    {
        WrittenValue value(m_text, m_isVersion11);
        if (startTag.isEmpty)
            return value;
        for (XMLToken token; reader.Next(token);) {
            if (token.kind == XMLToken::Kind::StartTag || token.kind == XMLToken::Kind::EndTag)
                break;
            if (token.kind == XMLToken::Kind::Text)
                value.Append(token.text, WrittenValue::Form::Text, '\0');
            else if (token.kind == XMLToken::Kind::CData)
                value.Append(CDataContent(token.text), WrittenValue::Form::CData, '\0');
        }
        return value;
    }

    static std::string_view CDataContent(std::string_view token)
    {
        constexpr std::string_view opening = "<![CDATA[";
        constexpr std::string_view closing = "]]>";
        return token.substr(opening.size(), token.size() - opening.size() - closing.size());
    }

    // Returns an empty value if the tag does not have the attribute: it has a default value then.
    WrittenValue ReadAttribute(const XMLToken& token, const std::string& name) const
    {
        WrittenValue value(m_text, m_isVersion11);
        XMLAttributeReader reader(token);
        for (XMLAttributeToken attribute; reader.Next(attribute);) {
            if (attribute.name != name)
                continue;
            value.Append(attribute.value, WrittenValue::Form::Attribute, attribute.quote);
            break;
        }
        return value;
    }

    static Runs FindRuns(const WrittenValue& value, const NamePlace& place)
    {
        const Part part = FindPart(place, value.GetUnits());
        const bool isInside = part.length > 0 && part.offset + part.length <= value.GetUnits().size();
        return value.HasEntity() || !isInside ? Runs() : value.FindRuns(part.offset, part.length);
    }

    std::string_view m_text;
    bool m_isVersion11;
};

// A change and the bytes of its name.
struct NameEdit {
    const NameChange* change;
    Runs runs;
};

// `Name` is a NameChange or a NameClash.
template <typename Name>
std::vector<NamePlace> PlacesOf(const std::vector<Name>& names)
{
    std::vector<NamePlace> places(names.size());
    std::transform(names.begin(), names.end(), places.begin(), [](const Name& name) { return name.place; });
    return places;
}

// True if a parser that collapses the white space of the text would not change it.
bool IsCollapsed(std::u16string_view text)
{
    bool isBehindBlank = true;
    for (const char16_t unit : text) {
        if (XmlUtils::IsWhitespace(unit) && (unit != u' ' || isBehindBlank))
            return false;
        isBehindBlank = unit == u' ';
    }
    return text.empty() || !isBehindBlank;
}

[[noreturn]] void RefuseName(const NameChange& change, const VString& reason)
{
    throw VantoraException(
        VFormatString("\"%1\" cannot become \"%2\": %3").arg(change.oldName).arg(change.newName).arg(reason),
        VError::ErrorInfo(VantoraError::MakeError(0x8F42D07B, "VantoraException_UnwritableName_0x8F42D07B")));
}

void RequireWritable(const NameChange& change, const XMLCharacters& characters)
{
    if (const std::optional<char32_t> forbidden = characters.FindForbidden(change.newText))
        RefuseName(change, VFormatString("XML does not allow the character %1").arg(DescribeCharacter(*forbidden)));
    if (change.place.isCollapsed && !IsCollapsed(change.newText.View()))
        RefuseName(change, "this name must not have white space at its ends, or two blanks in a row");
}

[[noreturn]] void RefuseEntity(const NameChange& change)
{
    throw VantoraException(VFormatString("\"%1\" cannot become \"%2\" where it comes from an entity or a default value")
                               .arg(change.oldName)
                               .arg(change.newName),
        VError::ErrorInfo(VantoraError::MakeError(0x3D90B6E2, "VantoraException_NameInEntity_0x3D90B6E2")));
}

// Returns the edits in the order of the text.
std::vector<NameEdit> FindEdits(
    const SourceText& source, const std::vector<NameChange>& changes, std::size_t elementCount)
{
    std::vector<Runs> located = NameLocator(source).Locate(PlacesOf(changes), elementCount);
    located.resize(changes.size());
    std::vector<NameEdit> edits;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (located[i].empty())
            RefuseEntity(changes[i]);
        edits.push_back({&changes[i], std::move(located[i])});
    }
    std::sort(edits.begin(), edits.end(), [](const NameEdit& a, const NameEdit& b) {
        return a.runs.front().offset < b.runs.front().offset;
    });
    return edits;
}

// Replaces the first run of each name by the new text, and removes its other runs.
EditedText ApplyEdits(const std::string& text, const std::vector<NameEdit>& edits, const XMLCharacters& characters)
{
    EditedText result;
    result.text.reserve(text.size());
    std::size_t position = 0;
    for (const NameEdit& edit : edits) {
        for (const WrittenValue::Run& run : edit.runs) {
            const bool isFirst = &run == &edit.runs.front();
            const std::u16string_view newText = isFirst ? edit.change->newText.View() : std::u16string_view();
            result.edits.push_back({run.offset, run.length, WrittenValue::Escape(newText, run, characters)});
            result.text.append(text, position, run.offset - position);
            result.text += result.edits.back().replacement;
            position = run.End();
        }
    }
    result.text.append(text, position, std::string::npos);
    return result;
}

std::unique_ptr<DOM> ParseTree(const std::string& text)
{
    BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
    DOMParser parser;
    std::unique_ptr<DOM> document = parser.ParseXmlInputSource(source, true);
    ThrowIfOutOfMemory(parser.GetDiagnostics());
    return document;
}

// Applies the changes from `first` up to `end`, which are in the order of their places in the value. Linear.
VString ApplyToValue(const VString& value, const NameChange* first, const NameChange* end)
{
    const std::u16string_view units = value.View();
    std::u16string result;
    std::size_t position = 0;
    for (; first != end; ++first) {
        const Part part = FindPart(first->place, units);
        result += units.substr(std::min(position, units.size()), part.offset - position);
        result += first->newText.View();
        position = part.offset + part.length;
    }
    result += units.substr(std::min(position, units.size()));
    return VString(result.data(), result.size());
}

// Applies the changes, which are in the order of the elements, to the tree of the document. The changes in one value
// stand together.
void ApplyToTree(DOM& document, const std::vector<NameChange>& changes)
{
    std::size_t number = 0;
    const NameChange* next = changes.data();
    const NameChange* const last = next + changes.size();
    for (DOMElement& element : DOMElementTraversal::MutablePreorderTraversal(*document.GetDocumentRoot())) {
        while (next != last && next->place.element == number) {
            const VString& attribute = next->place.attribute;
            const NameChange* const end = std::find_if(next, last, [&](const NameChange& change) {
                return change.place.element != number || change.place.attribute != attribute;
            });
            if (attribute.IsEmpty())
                element.SetText(ApplyToValue(element.GetText(), next, end));
            else
                element.SetAttribute(attribute, ApplyToValue(element.GetAttribute(attribute), next, end));
            next = end;
        }
        ++number;
    }
}

void Verify(const std::string& text, const std::string& result, const std::vector<NameChange>& changes)
{
    const std::unique_ptr<DOM> expected = ParseTree(text);
    ApplyToTree(*expected, changes);
    const std::unique_ptr<DOM> actual = ParseTree(result);
    if (actual->HasErrors() || *actual != *expected)
        throw XMLVerificationError("The retargeted document would not have the expected content");
}

RenamedName Describe(const NameChange& change, SourcePosition position)
{
    return {change.role, change.oldName, change.newName, position.line, position.column};
}

// Returns the clashes in the order of the text. The names without a place come last.
std::vector<ClashingName> DescribeClashes(
    const SourceText& source, const std::vector<NameClash>& clashes, std::size_t elementCount)
{
    std::vector<Runs> located = NameLocator(source).Locate(PlacesOf(clashes), elementCount);
    located.resize(clashes.size());
    std::vector<std::pair<std::size_t, const NameClash*>> sorted;  // with the offset of the name
    for (std::size_t i = 0; i < clashes.size(); ++i)
        sorted.emplace_back(located[i].empty() ? std::string::npos : located[i].front().offset, &clashes[i]);
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

    PositionCounter counter(source.text, source.isVersion11);
    std::vector<ClashingName> names;
    for (const auto& [offset, clash] : sorted) {
        ClashingName name;
        name.role = clash->role;
        name.oldName = clash->second;
        name.newName = clash->newName;
        name.other = clash->first;
        if (offset != std::string::npos) {
            const SourcePosition position = counter.At(offset);
            name.line = position.line;
            name.column = position.column;
        }
        names.push_back(name);
    }
    return names;
}

bool HasErrors(const std::vector<ParseDiagnostic>& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(), [](const ParseDiagnostic& diagnostic) {
        return diagnostic.severity != ParseDiagnostic::Severity::Warning;
    });
}

}  // namespace

XMLSourceRetargeter::XMLSourceRetargeter(const NameRoles& roles, const DOM& tables)
    : XMLSourceRetargeter(roles, tables, Options())
{}

XMLSourceRetargeter::XMLSourceRetargeter(const NameRoles& roles, const DOM& tables, Options options)
    : m_roles(roles),
      m_tables(tables),
      m_options(std::move(options))
{}

XMLSourceRetargeter::~XMLSourceRetargeter() = default;

std::optional<EditedText> XMLSourceRetargeter::Retarget(const std::string& text, const VString& id)
{
    m_renamedNames.clear();
    m_clashes.clear();
    BorrowedInputSource source(text, id, true, TextEncoding::Utf8);
    const auto retargeter = std::make_shared<NameRetargeter>(m_roles, m_tables);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, retargeter);
    parser->Parse();
    m_diagnostics = parser->GetDiagnostics();
    ThrowIfOutOfMemory(m_diagnostics);
    if (HasErrors(m_diagnostics))
        return std::nullopt;
    if (!retargeter->GetClashes().empty()) {
        m_clashes = DescribeClashes({text, IsVersion11(text)}, retargeter->GetClashes(), retargeter->GetElementCount());
        return std::nullopt;
    }
    const std::vector<NameChange>& changes = retargeter->GetChanges();
    return changes.empty() ? EditedText{text, {}} : Edit(text, changes, retargeter->GetElementCount());
}

EditedText XMLSourceRetargeter::Edit(
    const std::string& text, const std::vector<NameChange>& changes, std::size_t elementCount)
{
    const SourceText source{text, IsVersion11(text)};
    const XMLCharacters characters{m_options.canEncode, source.isVersion11};
    for (const NameChange& change : changes)
        RequireWritable(change, characters);
    const std::vector<NameEdit> edits = FindEdits(source, changes, elementCount);
    EditedText result = ApplyEdits(text, edits, characters);
    Verify(text, result.text, changes);
    PositionCounter counter(source.text, source.isVersion11);
    for (const NameEdit& edit : edits) {
        const SourcePosition position = counter.At(edit.runs.front().offset);
        m_renamedNames.push_back(Describe(*edit.change, position));
    }
    return result;
}
