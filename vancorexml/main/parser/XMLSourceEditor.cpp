#include "vancorexml/main/parser/XMLSourceEditor.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/ElementTrail.h"
#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/XMLCharacters.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLEditWriter.h"
#include "vancorexml/main/parser/XMLEditedTree.h"
#include "vancorexml/main/parser/XMLElementFinder.h"
#include "vancorexml/main/parser/XMLEventReader.h"
#include "vancorexml/main/parser/XMLFragment.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

constexpr std::size_t MostErrors = 100;

VString FromUtf8(std::string_view text)
{
    return VString::fromUtf8(text.data(), text.size());
}

// Adds the positions and paths of elements to errors, in one pass over the text.
std::vector<ParseDiagnostic> Locate(std::string_view text, std::vector<ElementError> errors, const VString& id)
{
    std::stable_sort(errors.begin(), errors.end(), [](const auto& a, const auto& b) { return a.offset < b.offset; });
    errors.resize(std::min(errors.size(), MostErrors));
    std::vector<ParseDiagnostic> diagnostics;
    ElementTrail open;
    PositionCounter counter(text);
    XMLTokenReader reader(text);
    XMLToken token;
    auto error = errors.begin();
    while (error != errors.end() && reader.Next(token)) {
        if (token.kind == XMLToken::Kind::StartTag)
            open.Push(FromUtf8(token.name));
        const std::size_t end = reader.OffsetOf(token.text) + token.text.size();
        for (; error != errors.end() && error->offset < end; ++error) {
            ParseDiagnostic diagnostic;
            diagnostic.message = error->message;
            diagnostic.sourceId = id;
            diagnostic.start = counter.At(error->offset);
            diagnostic.path = open.GetPath();
            diagnostic.element = open.IsEmpty() ? 0 : open.Top().number;
            diagnostics.push_back(std::move(diagnostic));
        }
        if (token.kind == XMLToken::Kind::EndTag || token.isEmpty)
            open.Pop();
    }
    return diagnostics;
}

// Marks the elements of a tree, in document order, that come from the expansion of an entity.
struct EntityElements {
    // For each element of the tree: the index of its reference plus 1; 0 for an element of the text itself.
    std::vector<std::size_t> references;
    bool hasAny = false;
};

EntityElements FindEntityElements(const std::string& text)
{
    EntityElements found;
    BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
    XMLEventReader reader(source);
    std::size_t depth = 0;
    std::size_t reference = 0;
    for (;;) {
        switch (reader.Next().kind) {
        case XMLEvent::Kind::StartEntity: reference += depth++ == 0 ? 1U : 0U; break;
        case XMLEvent::Kind::EndEntity: --depth; break;
        case XMLEvent::Kind::StartElement:
            found.references.push_back(depth > 0 ? reference : 0);
            found.hasAny |= depth > 0;
            break;
        case XMLEvent::Kind::EndOfDocument:
        case XMLEvent::Kind::Fault: return found;
        default: break;
        }
    }
}

// Returns the names of the elements whose xml:space is "preserve" by a default of the document type.
std::set<std::u16string> FindPreservedElements(const std::string& text)
{
    XMLTokenReader tokens(text);
    XMLToken token;
    while (tokens.Next(token) && token.kind != XMLToken::Kind::StartTag) {
        if (token.kind != XMLToken::Kind::DocumentType)
            continue;
        BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
        XMLEventReader reader(source);
        XMLEvent::Kind kind = reader.Next().kind;
        while (kind != XMLEvent::Kind::StartElement && kind != XMLEvent::Kind::Fault)
            kind = reader.Next().kind;
        return reader.PreservedElements();
    }
    return {};
}

// False if the text cannot be an XML name because of its ASCII characters. The parse of the result finds the characters
// beyond ASCII that XML does not allow in a name.
bool IsName(const VString& name)
{
    const std::u16string_view view = name.View();
    const auto isNameChar = [](char16_t unit) { return unit > 0x7F || XmlUtils::IsNameChar(unit); };
    return !view.empty() && (view.front() > 0x7F || XmlUtils::IsFirstNameChar(view.front())) &&
        std::all_of(view.begin(), view.end(), isNameChar);
}

}  // namespace

// One call of Edit.
class XMLSourceEditor::Session {
public:
    explicit Session(XMLSourceEditor& editor)
        : m_editor(editor),
          m_text(editor.m_text),
          m_id(editor.m_id),
          m_diagnostics(editor.m_diagnostics)
    {}

    std::optional<EditedText> Run()
    {
        XMLEditedTree tree(m_text, m_id);
        m_diagnostics = tree.GetDiagnostics();
        if (tree.HasErrors())
            return std::nullopt;
        std::vector<std::vector<DOMElement*>> elements = FindPaths(tree.DocumentElement());
        Find(elements);
        if (!Prepare())
            return std::nullopt;
        FindNumbers(tree.DocumentElement(), elements);
        if (!CheckEntities(tree.DocumentElement(), elements))
            return std::nullopt;
        EditedText result;
        if (!Write(result.edits))
            return std::nullopt;
        WarnOfPaths();
        if (m_findings.elements.empty()) {
            result.text = m_text;
            return result;
        }
        RequireSameMatches(elements);
        // The result and its verification take the most memory, so all other data is released before.
        m_findings = ElementFindings();
        Apply(tree, std::move(elements));
        result.text = ApplyEdits(m_text, result.edits);
        if (!tree.IsTreeOf(result.text, m_id)) {
            ReportDifference(tree);
            return std::nullopt;
        }
        return result;
    }

private:
    // Returns the elements of each path.
    std::vector<std::vector<DOMElement*>> FindPaths(DOMElement& documentElement) const
    {
        std::vector<std::vector<DOMElement*>> elements;
        for (const auto& [path, change] : m_editor.m_pathChanges)
            elements.push_back(DOMPath::GetAll(documentElement, path));
        return elements;
    }

    void Find(const std::vector<std::vector<DOMElement*>>& elements)
    {
        std::size_t expected = 0;
        for (const std::vector<DOMElement*>& each : elements)
            expected = std::max(expected, each.size());
        std::vector<VString> paths;
        for (const auto& [path, change] : m_editor.m_pathChanges)
            paths.push_back(path);
        std::vector<std::pair<std::size_t, std::size_t>> numbers;
        for (const auto& [number, change] : m_editor.m_elementChanges)
            numbers.emplace_back(number, paths.size() + numbers.size());
        std::sort(numbers.begin(), numbers.end());
        m_findings = XMLElementFinder(m_text, paths, numbers, FindPreservedElements(m_text)).Run(expected);
        if (!numbers.empty() && numbers.back().first >= m_findings.elementCount)
            throw std::out_of_range("XMLSourceEditor: there is no element of this number");
        m_documentType = m_findings.documentType;
        m_characters.canEncode = m_editor.m_options.canEncode;
        m_characters.isVersion11 = m_findings.isVersion11;
    }

    // Reads the fragments, and checks names and values.
    bool Prepare()
    {
        for (const auto& [path, change] : m_editor.m_pathChanges)
            Prepare(change);
        for (const auto& [number, change] : m_editor.m_elementChanges)
            Prepare(change);
        return m_isPrepared;
    }

    void Prepare(const ElementChange& change)
    {
        TreeChange prepared;
        prepared.change = &change;
        prepared.before = ReadFragments(change.before);
        prepared.prepended = ReadFragments(change.prepended);
        prepared.appended = ReadFragments(change.appended);
        prepared.after = ReadFragments(change.after);
        m_changes.push_back(std::move(prepared));
        for (const auto& [name, value] : change.setAttributes) {
            CheckName(name);
            CheckCharacters("the value of '" + name + "'", value);
        }
        for (const VString& name : change.removeAttributes)
            CheckName(name);
        if (change.name)
            CheckName(*change.name);
        if (change.text)
            CheckCharacters("the text", *change.text);
    }

    TreeChange::Fragments ReadFragments(const std::vector<VString>& texts)
    {
        TreeChange::Fragments fragments;
        for (const VString& text : texts) {
            if (!CheckCharacters("the fragment '" + text + "'", text))
                continue;
            try {
                fragments.push_back(std::make_unique<XMLFragment>(text, m_documentType, m_characters));
            } catch (const XMLFragmentError& error) {
                ReportChange("the fragment '" + text + "' " + error.Message());
            }
        }
        return fragments;
    }

    void CheckName(const VString& name)
    {
        if (!IsName(name) || m_characters.FindForbidden(name))
            ReportChange("'" + name + "' is not a name");
        else if (const auto character = m_characters.FindUnencodable(name.toStdString()))
            ReportChange("the name '" + name + "' contains " + DescribeCharacter(*character) +
                ", which the encoding of the document lacks");
    }

    bool CheckCharacters(const VString& what, const VString& text)
    {
        const std::optional<char32_t> character = m_characters.FindForbidden(text);
        if (character)
            ReportChange(what + " contains " + DescribeCharacter(*character) + ", which XML does not allow");
        return !character;
    }

    // Reports an error of a change, which has no position.
    void ReportChange(const VString& message)
    {
        m_isPrepared = false;
        const auto isSame = [&](const ParseDiagnostic& each) { return each.message == message; };
        if (std::any_of(m_diagnostics.begin(), m_diagnostics.end(), isSame))
            return;
        ParseDiagnostic diagnostic;
        diagnostic.message = message;
        diagnostic.sourceId = m_id;
        m_diagnostics.push_back(std::move(diagnostic));
    }

    // Adds the elements of the changes by number.
    void FindNumbers(DOMElement& documentElement, std::vector<std::vector<DOMElement*>>& elements)
    {
        elements.resize(m_changes.size());
        if (!m_findings.entityReferences.empty())
            m_entityElements = FindEntityElements(m_text);
        std::vector<std::pair<std::size_t, std::size_t>> numbers;
        for (std::size_t i = 0; i < m_editor.m_elementChanges.size(); ++i)
            numbers.emplace_back(m_editor.m_elementChanges[i].first, m_editor.m_pathChanges.size() + i);
        std::sort(numbers.begin(), numbers.end());
        auto next = numbers.begin();
        std::size_t inText = 0;
        std::size_t inTree = 0;
        DOMElementTraversal::PreorderGeneratorTemplate<DOMElement> generator(documentElement);
        while (DOMElement* element = next == numbers.end() ? nullptr : generator.Next()) {
            if (m_entityElements.hasAny && m_entityElements.references[inTree++] > 0)
                continue;
            for (; next != numbers.end() && next->first == inText; ++next)
                elements[next->second].push_back(element);
            ++inText;
        }
    }

    // Reports changes of elements in the expansion of entities, which have no bytes of their own.
    bool CheckEntities(const DOMElement& documentElement, const std::vector<std::vector<DOMElement*>>& elements)
    {
        if (!m_entityElements.hasAny)
            return true;
        std::unordered_map<const DOMElement*, std::vector<std::size_t>> changes;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            for (const DOMElement* element : elements[i])
                changes[element].push_back(i);
        }
        std::vector<ElementError> errors;
        std::size_t inTree = 0;
        DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement> generator(documentElement);
        while (const DOMElement* element = generator.Next()) {
            const std::size_t reference = m_entityElements.references[inTree++];
            const auto change = changes.find(element);
            if (change == changes.end())
                continue;
            const auto hasText = [&](std::size_t i) { return m_changes[i].change->text.has_value(); };
            const bool getsText = std::any_of(change->second.begin(), change->second.end(), hasText);
            const std::size_t below = element->HasChildren() ? m_entityElements.references[inTree] : 0;
            if (reference > 0)
                Add(errors, reference, "the element '" + element->GetName() + "' of an entity cannot be changed");
            else if (getsText && below > 0)
                Add(errors, below, "the text cannot be changed, because an entity contains elements");
        }
        return Report(std::move(errors));
    }

    // Adds an error at the place of the reference to an entity with this number, from 1.
    void Add(std::vector<ElementError>& errors, std::size_t reference, const VString& message) const
    {
        const std::vector<EntityReferencePlace>& places = m_findings.entityReferences;
        errors.push_back({places[std::min(reference, places.size()) - 1].offset, message});
    }

    bool Report(std::vector<ElementError> errors)
    {
        std::vector<ParseDiagnostic> located = Locate(m_text, std::move(errors), m_id);
        m_diagnostics.insert(m_diagnostics.end(), located.begin(), located.end());
        return located.empty();
    }

    bool Write(std::vector<TextEdit>& edits)
    {
        std::vector<CombinedChange> combined;
        for (const std::vector<std::size_t>& list : m_findings.changeLists)
            combined.push_back(Combine(list));
        XMLEditWriter writer(m_text, m_findings, combined, m_characters);
        edits = writer.Run();
        return Report(writer.Errors());
    }

    CombinedChange Combine(const std::vector<std::size_t>& list) const
    {
        CombinedChange combined;
        bool hasOther = false;
        for (const std::size_t index : list) {
            const TreeChange& tree = m_changes[index];
            const ElementChange& change = *tree.change;
            for (const auto& [name, value] : change.setAttributes)
                AddAttribute(combined, name, value);
            for (const VString& name : change.removeAttributes)
                AddAttribute(combined, name, std::nullopt);
            if (change.text && combined.text && *combined.text != *change.text)
                combined.contradictions.push_back("the element gets two texts");
            if (change.text)
                combined.text = change.text;
            if (change.name && combined.name && *combined.name != change.name->toStdString())
                combined.contradictions.push_back("the element gets two names");
            if (change.name)
                combined.name = change.name->toStdString();
            combined.isDeleted |= change.isDeleted;
            AddFragments(combined.before, tree.before);
            AddFragments(combined.prepended, tree.prepended);
            AddFragments(combined.appended, tree.appended);
            AddFragments(combined.after, tree.after);
            hasOther |= !change.setAttributes.empty() || !change.removeAttributes.empty() || change.text ||
                change.name || !change.prepended.empty() || !change.appended.empty();
        }
        if (combined.isDeleted && hasOther)
            combined.contradictions.push_back("the element is deleted and also changed");
        return combined;
    }

    static void AddAttribute(CombinedChange& combined, const VString& name, const std::optional<VString>& value)
    {
        const std::string utf8 = name.toStdString();
        const auto found = std::find_if(combined.attributes.begin(), combined.attributes.end(), [&](const auto& each) {
            return each.name == utf8;
        });
        if (found == combined.attributes.end())
            combined.attributes.push_back({utf8, value});
        else if (found->value.has_value() != value.has_value())
            combined.contradictions.push_back("the attribute '" + name + "' is set and also removed");
        else if (found->value != value)
            combined.contradictions.push_back("the attribute '" + name + "' gets two values");
    }

    static void AddFragments(std::vector<const XMLFragment*>& to, const TreeChange::Fragments& from)
    {
        for (const auto& fragment : from)
            to.push_back(fragment.get());
    }

    void WarnOfPaths()
    {
        for (std::size_t i = 0; i < m_findings.matches.size(); ++i) {
            if (m_findings.matches[i] > 0)
                continue;
            ParseDiagnostic diagnostic;
            diagnostic.severity = ParseDiagnostic::Severity::Warning;
            diagnostic.message = "the path '" + m_editor.m_pathChanges[i].first + "' matches no element";
            diagnostic.sourceId = m_id;
            m_diagnostics.push_back(std::move(diagnostic));
        }
    }

    void RequireSameMatches(const std::vector<std::vector<DOMElement*>>& elements) const
    {
        for (std::size_t i = 0; i < m_findings.matches.size(); ++i) {
            if (m_findings.matches[i] != elements[i].size())
                throw XMLVerificationError("The elements in the text would differ from those in the tree");
        }
    }

    void Apply(XMLEditedTree& tree, std::vector<std::vector<DOMElement*>> elements) const
    {
        std::vector<std::pair<const TreeChange*, std::vector<DOMElement*>>> changes;
        for (std::size_t i = 0; i < m_changes.size(); ++i)
            changes.emplace_back(&m_changes[i], std::move(elements[i]));
        tree.Apply(changes);
    }

    // Reports why the result is not the edited tree. Throws XMLVerificationError if that is a fault of the library.
    void ReportDifference(const XMLEditedTree& tree)
    {
        if (tree.HasErrors()) {
            for (const ParseDiagnostic& each : tree.GetDiagnostics())
                ReportChange("the edited document would not be well-formed: " + each.message);
            return;
        }
        if (m_documentType.find("<!ATTLIST") == std::string_view::npos)
            throw XMLVerificationError("The edited document would differ from the edited tree");
        ReportChange(
            tree.PathOfDifference() + ": The changes contradict the attributes that the document type declares");
    }

    XMLSourceEditor& m_editor;
    const std::string& m_text;
    const VString& m_id;
    std::vector<ParseDiagnostic>& m_diagnostics;
    XMLCharacters m_characters;
    ElementFindings m_findings;  // released before the result is made
    std::string_view m_documentType;
    EntityElements m_entityElements;
    std::vector<TreeChange> m_changes;  // of the paths, then of the numbers
    bool m_isPrepared = true;
};

std::string ApplyEdits(std::string_view text, const std::vector<TextEdit>& edits)
{
    std::size_t size = text.size();
    std::size_t end = 0;  // of the last edit
    for (const TextEdit& edit : edits) {
        if (edit.offset < end || edit.offset > text.size() || edit.length > text.size() - edit.offset)
            throw std::invalid_argument("ApplyEdits: the edits overlap or exceed the text");
        end = edit.offset + edit.length;
        size += edit.replacement.size() - edit.length;
    }
    std::string edited;
    edited.reserve(size);
    std::size_t copied = 0;
    for (const TextEdit& edit : edits) {
        (edited += text.substr(copied, edit.offset - copied)) += edit.replacement;
        copied = edit.offset + edit.length;
    }
    edited += text.substr(copied);
    return edited;
}

XMLSourceEditor::XMLSourceEditor(const std::string& text, const VString& id) : XMLSourceEditor(text, id, Options()) {}

XMLSourceEditor::XMLSourceEditor(const std::string& text, const VString& id, Options options)
    : m_text(text),
      m_id(id),
      m_options(std::move(options))
{}

XMLSourceEditor::~XMLSourceEditor() = default;

void XMLSourceEditor::Change(const VString& path, const ElementChange& change)
{
    m_pathChanges.emplace_back(path, change);
}

void XMLSourceEditor::ChangeElement(std::size_t number, const ElementChange& change)
{
    m_elementChanges.emplace_back(number, change);
}

std::optional<EditedText> XMLSourceEditor::Edit()
{
    return Session(*this).Run();
}
