#include "vancorexml/main/parser/KeyTracker.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <xercesc/validators/datatype/ListDatatypeValidator.hpp>
#include <xercesc/validators/schema/SchemaAttDef.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>
#include <xercesc/validators/schema/identity/IC_KeyRef.hpp>
#include <xercesc/validators/schema/identity/IC_Selector.hpp>
#include <xercesc/validators/schema/identity/IdentityConstraint.hpp>

#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/KeyPath.h"
#include "vancorexml/main/parser/KeyValues.h"
#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

using MessageWords::Quote;
using xercesc::DatatypeValidator;
using xercesc::IdentityConstraint;

namespace {

// The faults of a document that list the allowed values. All of them would take memory of 100 times their number.
constexpr std::size_t ListLimit = 1000;
// A search for a similar key compares the value with each key, which takes time that grows with the square of the
// length. All searches of a document together may have this sum of squares, which took 0.3 seconds.
constexpr std::size_t SearchLimit = 100000000;

enum class IdKind : std::uint8_t {
    None,
    Id,
    Reference,
    References,  // separated by white space
};

IdKind IdKindOf(const DatatypeValidator* type)
{
    if (!type)
        return IdKind::None;
    switch (type->getType()) {
    case DatatypeValidator::ID: return IdKind::Id;
    case DatatypeValidator::IDREF: return IdKind::Reference;
    case DatatypeValidator::List: {
        const auto* const list = static_cast<const xercesc::ListDatatypeValidator*>(type);
        return IdKindOf(list->getItemTypeDTV()) == IdKind::Reference ? IdKind::References : IdKind::None;
    }
    default: return IdKind::None;
    }
}

// A key, unique constraint or key reference of a schema.
struct Constraint {
    explicit Constraint(const IdentityConstraint& source)
        : identity(&source),
          type(source.getType()),
          name(source.getIdentityConstraintName()),
          selector(*source.getSelector()->getXPath())
    {
        for (XMLSize_t i = 0; i < source.getFieldCount(); ++i)
            fields.emplace_back(*source.getFieldAt(i)->getXPath());
        if (type == IdentityConstraint::ICType_KEYREF)
            key = static_cast<const xercesc::IC_KeyRef&>(source).getKey();
    }

    bool IsReference() const noexcept { return type == IdentityConstraint::ICType_KEYREF; }

    const IdentityConstraint* identity;
    short type;
    const IdentityConstraint* key = nullptr;  // the constraint to which a key reference refers
    VString name;
    KeyPath selector;
    std::vector<KeyPath> fields;
};

// A constraint of an open element.
struct Scope {
    const Constraint* constraint = nullptr;
    VString elementName;
    // The values of a key or unique constraint. For a key reference, the values of the keys that ended within the
    // element.
    KeyTable keys;
    bool hasKeys = false;  // at least one key ended within the element of a key reference
    KeyReferences references;
};

// An open element that a selector has found.
struct Target {
    struct Field {
        bool hasValue = false;
        std::u16string value;  // canonical
        VString written;
    };

    Scope* scope = nullptr;
    VString elementName;
    std::vector<Field> fields;
    std::size_t valueCount = 0;
};

// A selector or a field that may match the children of an element.
struct Matcher {
    Scope* scope = nullptr;
    Target* target = nullptr;  // of a field; null for a selector
    std::size_t field = 0;
    const KeyPath::Branch* branch = nullptr;
    KeyPath::State state = 0;
};

// An open element that a constraint or an id needs.
struct Frame {
    std::size_t depth = 0;
    VString name;
    const DatatypeValidator* type = nullptr;  // of the text
    std::vector<Matcher> matchers;            // for the children
    std::vector<std::unique_ptr<Scope>> scopes;
    std::vector<std::unique_ptr<Target>> targets;
    // The fields that have the text as their value.
    std::vector<std::pair<Target*, std::size_t>> captures;
    IdKind idKind = IdKind::None;  // of the text
    std::u16string text;

    bool NeedsText() const noexcept { return !captures.empty() || idKind != IdKind::None; }
    bool IsNeeded() const noexcept { return NeedsText() || !matchers.empty() || !scopes.empty() || !targets.empty(); }
};

VString DescribeScope(const Scope& scope)
{
    const bool isKey = scope.constraint->type == IdentityConstraint::ICType_KEY;
    return (isKey ? "the key " : "") + Quote(scope.constraint->name) + " must be unique in element " +
        Quote(scope.elementName);
}

}  // namespace

class KeyTracker::Impl {
public:
    explicit Impl(KeyPlaces& places) : m_places(places) {}

    Faults StartElement(const KeyElement& element);
    void AddText(const XMLCh* text, XMLSize_t length);
    Faults EndElement();
    Faults EndDocument();

private:
    // The place of a value: an attribute of the innermost element or, if the name is null, the element itself.
    struct ValuePlace {
        const XMLCh* attribute = nullptr;
        VString elementName;

        VString GetWords() const
        {
            return attribute ? "attribute " + Quote(XercesColonSanitizer::RestoreName(attribute))
                             : "element " + Quote(elementName);
        }
    };
    struct IdAttribute {
        std::u16string name;
        unsigned int uri = 0;
        IdKind kind = IdKind::None;
    };

    const Constraint& RequireConstraint(const IdentityConstraint& source);
    void OpenScopes(Frame& frame, const xercesc::SchemaElementDecl& declaration, const KeyElement& element);
    void Select(Frame& frame, Scope& scope, const KeyElement& element);
    // Starts the path of a selector, or of a field of a target, at `element`.
    void Start(Frame& frame, Scope& scope, Target* target, std::size_t field, const KeyElement& element);
    // Processes a matcher that has reached `element`.
    void Reach(Frame& frame, const Matcher& matcher, const KeyElement& element);
    void MatchField(Frame& frame, const Matcher& matcher, const KeyElement& element);
    void AddValue(Target& target,
        std::size_t field,
        std::u16string_view value,
        const DatatypeValidator* type,
        const ValuePlace& place);
    void AddTuple(Target& target, const ValuePlace& place);
    void EndTarget(const Target& target);
    void EndKeys(Scope& scope);
    void EndReferences(Scope& scope);
    void ReportUnknown(KeyReferences::Reference& reference, const KeyTable& keys, std::vector<VString>& candidates);

    const std::vector<IdAttribute>& GetIdAttributes(const xercesc::ComplexTypeInfo& type);
    void AddIds(IdKind kind, std::u16string_view text, const ValuePlace& place);
    void AddId(const std::u16string& value, const ValuePlace& place);

    // Returns a diagnostic of the place.
    ParseDiagnostic Begin(DiagnosticCode code, const ValuePlace& place);

    KeyPlaces& m_places;
    std::size_t m_depth = 0;
    std::vector<Frame> m_frames;
    std::unordered_map<const IdentityConstraint*, Constraint> m_constraints;
    // The open key references by the constraint to which they refer, the innermost last.
    std::unordered_map<const IdentityConstraint*, std::vector<Scope*>> m_openReferences;
    std::unordered_map<const xercesc::ComplexTypeInfo*, std::vector<IdAttribute>> m_idAttributes;
    KeyTable m_ids;
    KeyReferences m_idReferences;
    std::size_t m_searchLeft = SearchLimit;
    std::size_t m_listsLeft = ListLimit;
    Faults m_faults;
};

KeyTracker::Faults KeyTracker::Impl::StartElement(const KeyElement& element)
{
    ++m_depth;
    Frame frame;
    frame.depth = m_depth;
    if (element.complexType) {
        for (const IdAttribute& id : GetIdAttributes(*element.complexType)) {
            for (XMLSize_t i = 0; i < element.attributeCount; ++i) {
                const xercesc::XMLAttr& attribute = *element.attributes.elementAt(i);
                if (attribute.getURIId() == id.uri && id.name == attribute.getName())
                    AddIds(id.kind, attribute.getValue(), {attribute.getQName(), element.name});
            }
        }
    }
    frame.idKind = IdKindOf(element.simpleType);
    if (element.declaration.getObjectType() == xercesc::XMLElementDecl::Schema) {
        OpenScopes(frame, static_cast<const xercesc::SchemaElementDecl&>(element.declaration), element);
        const bool isParentNeeded = !m_frames.empty() && m_frames.back().depth + 1 == m_depth;
        if (isParentNeeded) {
            for (Matcher matcher : m_frames.back().matchers) {
                matcher.state = matcher.branch->Step(matcher.state, element.uri, element.declaration.getBaseName());
                if (matcher.state != 0)
                    Reach(frame, matcher, element);
            }
        }
    }
    if (frame.IsNeeded()) {
        frame.name = element.name;
        frame.type = element.simpleType;
        m_frames.push_back(std::move(frame));
    }
    return std::exchange(m_faults, {});
}

void KeyTracker::Impl::AddText(const XMLCh* text, XMLSize_t length)
{
    const bool isNeeded = !m_frames.empty() && m_frames.back().depth == m_depth && m_frames.back().NeedsText();
    if (isNeeded)
        m_frames.back().text.append(text, length);
}

KeyTracker::Faults KeyTracker::Impl::EndElement()
{
    const std::size_t depth = m_depth--;
    if (m_frames.empty() || m_frames.back().depth != depth)
        return {};
    const Frame frame = std::move(m_frames.back());
    m_frames.pop_back();
    const ValuePlace place{nullptr, frame.name};
    AddIds(frame.idKind, frame.text, place);
    for (const auto& [target, field] : frame.captures)
        AddValue(*target, field, frame.text, frame.type, place);
    for (const std::unique_ptr<Target>& target : frame.targets)
        EndTarget(*target);
    // A key reference may refer to a key of the same element.
    for (const std::unique_ptr<Scope>& scope : frame.scopes) {
        if (!scope->constraint->IsReference())
            EndKeys(*scope);
    }
    for (auto scope = frame.scopes.rbegin(); scope != frame.scopes.rend(); ++scope) {
        if ((*scope)->constraint->IsReference())
            EndReferences(**scope);
    }
    return std::exchange(m_faults, {});
}

KeyTracker::Faults KeyTracker::Impl::EndDocument()
{
    std::vector<VString> candidates;
    for (KeyReferences::Reference& reference : m_idReferences.Get()) {
        if (m_ids.Contains(*reference.value))
            continue;
        reference.diagnostic.message += " is not the id of an element";
        ReportUnknown(reference, m_ids, candidates);
    }
    m_ids = KeyTable();
    m_idReferences = KeyReferences();
    return std::exchange(m_faults, {});
}

// Matching the paths.

const Constraint& KeyTracker::Impl::RequireConstraint(const IdentityConstraint& source)
{
    return m_constraints.try_emplace(&source, source).first->second;
}

void KeyTracker::Impl::OpenScopes(
    Frame& frame, const xercesc::SchemaElementDecl& declaration, const KeyElement& element)
{
    for (XMLSize_t i = 0; i < declaration.getIdentityConstraintCount(); ++i) {
        const IdentityConstraint& source = *declaration.getIdentityConstraintAt(i);
        if (!source.getSelector())
            continue;  // a schema with a fault
        frame.scopes.push_back(std::make_unique<Scope>());
        Scope& scope = *frame.scopes.back();
        scope.constraint = &RequireConstraint(source);
        scope.elementName = element.name;
        if (scope.constraint->IsReference())
            m_openReferences[scope.constraint->key].push_back(&scope);
        Start(frame, scope, nullptr, 0, element);
    }
}

void KeyTracker::Impl::Select(Frame& frame, Scope& scope, const KeyElement& element)
{
    const auto isSelected = [&scope](const std::unique_ptr<Target>& target) { return target->scope == &scope; };
    if (std::any_of(frame.targets.begin(), frame.targets.end(), isSelected))
        return;  // by another branch of the selector
    frame.targets.push_back(std::make_unique<Target>());
    Target& target = *frame.targets.back();
    target.scope = &scope;
    target.elementName = element.name;
    target.fields.resize(scope.constraint->fields.size());
    for (std::size_t i = 0; i < target.fields.size(); ++i)
        Start(frame, scope, &target, i, element);
}

void KeyTracker::Impl::Start(Frame& frame, Scope& scope, Target* target, std::size_t field, const KeyElement& element)
{
    const KeyPath& path = target ? scope.constraint->fields[field] : scope.constraint->selector;
    for (const KeyPath::Branch& branch : path.GetBranches())
        Reach(frame, {&scope, target, field, &branch, KeyPath::Branch::Start}, element);
}

void KeyTracker::Impl::Reach(Frame& frame, const Matcher& matcher, const KeyElement& element)
{
    if (matcher.branch->IsMatch(matcher.state)) {
        if (matcher.target)
            MatchField(frame, matcher, element);
        else
            Select(frame, *matcher.scope, element);
    }
    const bool canMatchChildren = matcher.branch->beginsAnywhere || !matcher.branch->steps.empty();
    if (canMatchChildren)
        frame.matchers.push_back(matcher);
}

void KeyTracker::Impl::MatchField(Frame& frame, const Matcher& matcher, const KeyElement& element)
{
    const std::optional<KeyPath::NameTest>& test = matcher.branch->attribute;
    if (!test) {
        const std::pair<Target*, std::size_t> capture(matcher.target, matcher.field);
        const bool isKnown = std::find(frame.captures.begin(), frame.captures.end(), capture) != frame.captures.end();
        if (!isKnown)
            frame.captures.push_back(capture);
        return;
    }
    for (XMLSize_t i = 0; i < element.attributeCount; ++i) {
        const xercesc::XMLAttr& attribute = *element.attributes.elementAt(i);
        if (!test->Matches(attribute.getURIId(), attribute.getName()))
            continue;
        const xercesc::SchemaAttDef* const declared = element.complexType
            ? element.complexType->getAttDef(attribute.getName(), static_cast<int>(attribute.getURIId()))
            : nullptr;
        AddValue(*matcher.target,
            matcher.field,
            attribute.getValue(),
            declared ? declared->getDatatypeValidator() : nullptr,
            {attribute.getQName(), element.name});
        return;
    }
}

// Collecting the values.

void KeyTracker::Impl::AddValue(Target& target,
    std::size_t field,
    std::u16string_view value,
    const DatatypeValidator* type,
    const ValuePlace& place)
{
    Target::Field& into = target.fields[field];
    if (into.hasValue) {
        ParseDiagnostic fault = Begin(DiagnosticCode::MissingKey, place);
        fault.value = VString(value.data(), value.size());
        fault.message = "element " + Quote(target.elementName) + " has more than one value for " +
            target.scope->constraint->fields[field].GetWords() + " of " + Quote(target.scope->constraint->name);
        m_faults.push_back(std::move(fault));
        return;
    }
    const std::u16string normal = KeyValues::Normalise(value, type);
    into.hasValue = true;
    into.value = KeyValues::Canonicalise(normal, type);
    into.written = VString(normal.data(), normal.size());
    if (++target.valueCount == target.fields.size())
        AddTuple(target, place);
}

void KeyTracker::Impl::AddTuple(Target& target, const ValuePlace& place)
{
    std::u16string key;
    VString written;
    for (const Target::Field& field : target.fields) {
        const bool isFirst = &field == &target.fields.front();
        KeyValues::AppendField(key, isFirst, field.value);
        written += (isFirst ? VString() : VString(", ")) + field.written;
    }
    // The place of several values is the element.
    const bool isSingle = target.fields.size() == 1;
    const ValuePlace where = isSingle ? place : ValuePlace{nullptr, place.elementName};
    const VString what = isSingle ? "the value " + Quote(written) + " of " + where.GetWords()
                                  : "the combination " + Quote(written) + " in element " + Quote(target.elementName);
    Scope& scope = *target.scope;
    if (scope.constraint->IsReference()) {
        scope.references.Add(key, [&] {
            ParseDiagnostic fault = Begin(DiagnosticCode::UnknownReference, where);
            fault.value = written;
            fault.message = what;
            return fault;
        });
        return;
    }
    if (const std::optional<SourcePosition> first = scope.keys.Add(key, m_places.GetStart(where.attribute))) {
        ParseDiagnostic fault = Begin(DiagnosticCode::DuplicateKey, where);
        fault.value = written;
        fault.message = what + " is already used, but " + DescribeScope(scope);
        fault.related = {
            isSingle ? VString("the same value stands first") : VString("the same combination stands first"), *first};
        m_faults.push_back(std::move(fault));
    }
}

void KeyTracker::Impl::EndTarget(const Target& target)
{
    const Constraint& constraint = *target.scope->constraint;
    // Only a key requires all its values.
    const bool isComplete = target.valueCount == target.fields.size();
    if (isComplete || constraint.type != IdentityConstraint::ICType_KEY)
        return;
    ParseDiagnostic fault = Begin(DiagnosticCode::MissingKey, {nullptr, target.elementName});
    VString missing;
    for (std::size_t i = 0; i < target.fields.size(); ++i) {
        if (target.fields[i].hasValue)
            continue;
        missing += (missing.IsEmpty() ? VString() : VString(" and ")) + constraint.fields[i].GetWords();
        if (fault.attribute.IsEmpty())
            fault.attribute = constraint.fields[i].GetAttributeName();
    }
    const bool isWhole = target.valueCount == 0;
    fault.message = "element " + Quote(target.elementName) + " needs " + missing +
        (isWhole ? " for the key " : " for its part of the key ") + Quote(constraint.name);
    m_faults.push_back(std::move(fault));
}

// Resolving the references.

void KeyTracker::Impl::EndKeys(Scope& scope)
{
    const auto open = m_openReferences.find(scope.constraint->identity);
    if (open == m_openReferences.end() || open->second.empty())
        return;
    Scope& reference = *open->second.back();
    reference.keys.Merge(std::move(scope.keys));
    reference.hasKeys = true;
}

void KeyTracker::Impl::EndReferences(Scope& scope)
{
    std::vector<Scope*>& open = m_openReferences[scope.constraint->key];
    open.pop_back();
    std::vector<VString> candidates;
    for (KeyReferences::Reference& reference : scope.references.Get()) {
        if (scope.keys.Contains(*reference.value))
            continue;
        reference.diagnostic.message += " is not among the values of " +
            Quote(scope.constraint->key->getIdentityConstraintName()) + " in element " + Quote(scope.elementName);
        ReportUnknown(reference, scope.keys, candidates);
        if (!scope.hasKeys)
            break;  // Xerces reports once that there are no keys
    }
    if (scope.hasKeys && !open.empty()) {
        open.back()->keys.Merge(std::move(scope.keys));
        open.back()->hasKeys = true;
    }
}

void KeyTracker::Impl::ReportUnknown(
    KeyReferences::Reference& reference, const KeyTable& keys, std::vector<VString>& candidates)
{
    ParseDiagnostic& fault = reference.diagnostic;
    if (m_listsLeft > 0) {
        --m_listsLeft;
        fault.allowed = keys.GetFirstValues();
    }
    const std::size_t length = fault.value.View().size();
    const std::size_t cost = keys.GetSize() * length * length;
    if (cost <= m_searchLeft) {
        m_searchLeft -= cost;
        if (candidates.empty())
            candidates = keys.GetAllValues();
        fault.suggestion = FindNearestName(fault.value, candidates);
    }
    if (!fault.suggestion.IsEmpty())
        fault.message += "; did you mean " + Quote(fault.suggestion) + "?";
    if (reference.others > 0)
        fault.message += VFormatString("; %1 more like it").arg(reference.others);
    m_faults.push_back(std::move(fault));
}

// Ids.

const std::vector<KeyTracker::Impl::IdAttribute>& KeyTracker::Impl::GetIdAttributes(
    const xercesc::ComplexTypeInfo& type)
{
    const auto [entry, isNew] = m_idAttributes.try_emplace(&type);
    if (!isNew || !type.hasAttDefs())
        return entry->second;
    const xercesc::XMLAttDefList& declared = type.getAttDefList();
    for (XMLSize_t i = 0; i < declared.getAttDefCount(); ++i) {
        const auto& attribute = static_cast<const xercesc::SchemaAttDef&>(declared.getAttDef(i));
        const IdKind kind = IdKindOf(attribute.getDatatypeValidator());
        if (kind != IdKind::None) {
            const xercesc::QName& name = *attribute.getAttName();
            entry->second.push_back({name.getLocalPart(), name.getURI(), kind});
        }
    }
    return entry->second;
}

void KeyTracker::Impl::AddIds(IdKind kind, std::u16string_view text, const ValuePlace& place)
{
    if (kind == IdKind::None)
        return;
    const std::u16string values = KeyValues::CollapseWhiteSpace(text);
    if (kind == IdKind::Id) {
        AddId(values, place);
        return;
    }
    for (std::size_t start = 0; start < values.size();) {
        const std::size_t end = std::min(values.find(u' ', start), values.size());
        const std::u16string value = values.substr(start, end - start);
        m_idReferences.Add(value, [&] {
            ParseDiagnostic fault = Begin(DiagnosticCode::UnknownReference, place);
            fault.value = VString(value.data(), value.size());
            fault.message = "the value " + Quote(fault.value) + " of " + place.GetWords();
            return fault;
        });
        start = end + 1;
    }
}

void KeyTracker::Impl::AddId(const std::u16string& value, const ValuePlace& place)
{
    const std::optional<SourcePosition> first = m_ids.Add(value, m_places.GetStart(place.attribute));
    if (!first)
        return;
    ParseDiagnostic fault = Begin(DiagnosticCode::DuplicateKey, place);
    fault.value = VString(value.data(), value.size());
    fault.message = "the value " + Quote(fault.value) + " of " + place.GetWords() +
        " is already used, but each id must be unique in the document";
    fault.related = {"the same value stands first", *first};
    m_faults.push_back(std::move(fault));
}

ParseDiagnostic KeyTracker::Impl::Begin(DiagnosticCode code, const ValuePlace& place)
{
    ParseDiagnostic fault = m_places.Describe(place.attribute);
    fault.code = code;
    if (place.attribute)
        fault.attribute = XercesColonSanitizer::RestoreName(place.attribute);
    return fault;
}

KeyTracker::KeyTracker(KeyPlaces& places) : m_impl(std::make_unique<Impl>(places)) {}

KeyTracker::~KeyTracker() = default;

KeyTracker::Faults KeyTracker::StartElement(const KeyElement& element)
{
    return m_impl->StartElement(element);
}

void KeyTracker::AddText(const XMLCh* text, XMLSize_t length)
{
    m_impl->AddText(text, length);
}

KeyTracker::Faults KeyTracker::EndElement()
{
    return m_impl->EndElement();
}

KeyTracker::Faults KeyTracker::EndDocument()
{
    return m_impl->EndDocument();
}
