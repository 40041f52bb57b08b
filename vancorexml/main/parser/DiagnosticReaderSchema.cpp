// The explanation of faults against a schema.
#include "vancorexml/main/parser/DiagnosticReader.h"

#include <algorithm>

#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "vancoreplatform/NearestName.h"
#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/TypeDescription.h"
#include "vancorexml/main/parser/ValueMisfit.h"

using namespace MessageWords;
using xercesc::XMLValid;

namespace {

constexpr std::size_t AllowedLimit = 100;

// True if the type of the element declares an attribute of that name.
bool HasAttribute(const TrailElement& element, const VString& name)
{
    if (!element.complexType || !element.complexType->hasAttDefs())
        return false;
    const xercesc::XMLAttDefList& declared = element.complexType->getAttDefList();
    for (XMLSize_t i = 0; i < declared.getAttDefCount(); ++i) {
        if (name == declared.getAttDef(i).getFullName())
            return true;
    }
    return false;
}

// True if the type, which may be null, declares a child of that name.
bool HasChild(xercesc::ComplexTypeInfo* type, const VString& name)
{
    if (!type || !type->getContentSpec())
        return false;
    const ContentModelQuery::Names none;
    std::size_t budget = 0;
    const ContentModelQuery query(*type, none, budget);
    const auto isIt = [&](const xercesc::QName* child) { return name == child->getLocalPart(); };
    return std::any_of(query.GetNames().begin(), query.GetNames().end(), isIt);
}

// Returns the last sibling in front of the last child that may have a child of that name, or null.
const TrailChild* FindParentAmongSiblings(const TrailElement& parent, const VString& name)
{
    constexpr std::size_t Searched = 10;
    for (std::size_t i = 2; i <= std::min(parent.children.size(), Searched); ++i) {
        const TrailChild& sibling = parent.children[parent.children.size() - i];
        if (HasChild(sibling.complexType, name))
            return &sibling;
    }
    return nullptr;
}

// True if a name in front of the name `index` is equal to it.
bool IsRepeatedName(const ContentModelQuery::Names& names, std::size_t index)
{
    const auto isSame = [&](const xercesc::QName* name) { return *name == *names[index]; };
    return std::any_of(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(index), isSame);
}

}  // namespace

// Explaining faults of start tags.

void DiagnosticReader::ExplainTag(const XercesFault& fault, StartTag& tag)
{
    if (!fault.isValidity && !fault.isOfValue) {
        ExplainOther(fault);
        return;
    }
    switch (fault.isValidity ? fault.code : static_cast<unsigned int>(XMLValid::DatatypeError)) {
    case XMLValid::ElementNotDefined:
    case XMLValid::GrammarNotFound: ExplainUndeclaredElement(fault, tag); return;
    case XMLValid::AttNotDefined:
    case XMLValid::AttNotDefinedForElement:
    case XMLValid::ProhibitedAttributePresent:
    case XMLValid::AttributeNotQualified:
    case XMLValid::AttributeNotUnQualified: ExplainUndeclaredAttribute(fault, tag); return;
    case XMLValid::ElementNotQualified:
    case XMLValid::ElementNotUnQualified: ExplainQualification(fault); return;
    case XMLValid::RequiredAttrNotProvided: ExplainMissingAttribute(fault); return;
    default: break;
    }
    const DiagnosticCode code = CodeOf(fault);
    if (code == DiagnosticCode::BadType) {
        ExplainBadType(fault, tag);
        return;
    }
    const bool isOfValue = code == DiagnosticCode::BadValue || code == DiagnosticCode::FixedValue;
    if (isOfValue && ExplainAttributeValue(fault, tag))
        return;
    if (isOfValue && tag.isEmpty)
        m_pending.push_back(fault);  // about the content of the element
    else
        ExplainOther(fault);
}

void DiagnosticReader::ExplainUndeclaredElement(const XercesFault& fault, StartTag& tag)
{
    TrailElement& element = m_trail.Top();
    if (std::exchange(element.isUndeclared, true))
        return;
    TrailElement* const parent = m_trail.Parent();
    if (!parent) {
        ExplainUndeclaredRoot(fault, tag);
        return;
    }
    if (parent->declaration)
        parent->children.back().isReported = true;
    if (IsRepeated(DiagnosticCode::UnexpectedElement, parent->name, element.name))
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::UnexpectedElement);
    SetParent(diagnostic);
    if (parent->complexType && HasDetail()) {
        ContentModelQuery::Names before;
        for (const TrailChild& child : parent->children) {
            if (!child.isReported || &child == &parent->children.back())
                before.push_back(child.name);
        }
        const ContentModelQuery query(*parent->complexType, before, m_contentBudget);
        diagnostic.allowed = WriteNames(query.FindAllowed(before.size() - 1), *parent);
        diagnostic.suggestion = FindNearestName(element.name, diagnostic.allowed);
        if (diagnostic.suggestion.IsEmpty())
            diagnostic.suggestion = FindNearestName(element.name, WriteNames(query.GetNames(), *parent));
    }
    diagnostic.message = HasAttribute(*parent, element.name)
        ? Quote(element.name) + " is an attribute of element " + Quote(parent->name) + ", not an element"
        : WithSuggestion("element " + Quote(element.name) + " is not allowed here", diagnostic.suggestion);
    if (const TrailChild* const sibling = FindParentAmongSiblings(*parent, element.name)) {
        diagnostic.suggestion = VString();
        diagnostic.message = "element " + Quote(element.name) + " is not allowed here; it belongs into element " +
            Quote(sibling->name->getLocalPart());
        diagnostic.related = {
            "element " + Quote(sibling->name->getLocalPart()) + " begins", MapPosition(sibling->start.start)};
    }
    element.undeclared = Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainWrapper()
{
    const TrailElement& element = m_trail.Top();
    if (!element.undeclared)
        return;
    ParseDiagnostic& diagnostic = m_diagnostics[*element.undeclared];
    for (const VString& name : diagnostic.allowed) {
        if (element.counts.contains(std::u16string(name.View()))) {
            diagnostic.suggestion = VString();
            diagnostic.message = "element " + Quote(element.name) + " is not allowed around element " + Quote(name) +
                "; remove its start tag and its end tag";
            return;
        }
    }
}

void DiagnosticReader::ExplainBadType(const XercesFault& fault, StartTag& tag)
{
    TrailElement& element = m_trail.Top();
    element.hasBadType = true;
    if (element.isUndeclared)
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::BadType);
    const bool isNil = fault.code == XMLValid::NillNotAllowed;
    for (XMLSize_t i = 0; i < tag.count; ++i) {
        const xercesc::XMLAttr& attribute = *tag.attributes->elementAt(i);
        if (!IsOfInstance(attribute, isNil ? xercesc::SchemaSymbols::fgATT_NILL : xercesc::SchemaSymbols::fgXSI_TYPE))
            continue;
        const VString name(attribute.getQName());
        diagnostic.attribute = name;
        diagnostic.value = attribute.getValue();
        if (const XMLAttributeToken* const token = FindWritten(tag, name))
            SetRange(diagnostic, m_tags->GetRange(isNil ? token->name : token->value), fault);
    }
    const VString owner = "element " + Quote(element.name);
    const VString type = "the type " + Quote(diagnostic.value) + " of " + owner;
    switch (fault.code) {
    case XMLValid::NillNotAllowed:
        diagnostic.message = owner + " must not have xsi:nil, because it needs a value";
        break;
    case XMLValid::BadXsiType:
        if (HasDetail())
            diagnostic.allowed = FindTypeNames();
        diagnostic.suggestion = FindNearestName(diagnostic.value, diagnostic.allowed);
        diagnostic.message = WithSuggestion(type + " is not in the schema", diagnostic.suggestion);
        break;
    case XMLValid::NonDerivedXsiType:
        diagnostic.message = type + " is not one of the types that the element may have";
        break;
    case XMLValid::NoAbstractInXsiType:
    case XMLValid::NoUseAbstractType:
        diagnostic.message = "the type of " + owner + " is abstract; name one of its derived types with xsi:type";
        break;
    case XMLValid::NoDirectUseAbstractElement:
        diagnostic.message = owner + " is abstract; use one of the elements that can replace it";
        break;
    default: diagnostic.message = Adapt(fault.text); break;
    }
    Add(std::move(diagnostic));
}

std::vector<VString> DiagnosticReader::FindTypeNames()
{
    std::vector<VString> names;
    xercesc::RefHashTableOfEnumerator<xercesc::Grammar> grammars = GetGrammars().getGrammarEnumerator();
    while (grammars.hasMoreElements()) {
        const auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(&grammars.nextElement());
        if (!grammar || !grammar->getComplexTypeRegistry())
            continue;
        xercesc::RefHashTableOfEnumerator<xercesc::ComplexTypeInfo> types(grammar->getComplexTypeRegistry());
        while (types.hasMoreElements()) {
            const xercesc::ComplexTypeInfo& type = types.nextElement();
            if (!type.getAnonymous() && names.size() < AllowedLimit)
                names.emplace_back(type.getTypeLocalName());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void DiagnosticReader::ExplainQualification(const XercesFault& fault)
{
    TrailElement& element = m_trail.Top();
    const TrailElement* const parent = m_trail.Parent();
    if (!parent || std::exchange(element.isUndeclared, true))
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::WrongNamespace);
    const std::u16string_view name = element.name.View();
    const std::u16string_view parentName = parent->name.View();
    const std::size_t colon = parentName.find(u':');
    const VString local(name.substr(name.find(u':') + 1).data(), name.size() - name.find(u':') - 1);
    const bool isQualified = fault.code == XMLValid::ElementNotQualified;
    diagnostic.message = "element " + Quote(element.name) + " must be in " +
        (isQualified ? "the namespace of the schema" : "no namespace");
    if (isQualified && colon != std::u16string_view::npos)
        diagnostic.suggestion = VString(parentName.data(), colon + 1) + local;
    else if (!isQualified && name.find(u':') != std::u16string_view::npos)
        diagnostic.suggestion = local;
    if (!diagnostic.suggestion.IsEmpty())
        diagnostic.message += "; write " + Quote(diagnostic.suggestion);
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainUndeclaredRoot(const XercesFault& fault, StartTag& tag)
{
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::UndeclaredElement);
    const VString& name = m_trail.Top().name;
    const std::u16string_view text = name.View();
    const std::u16string local(text.substr(text.find(u':') + 1));
    std::optional<VString> otherNamespace;
    xercesc::RefHashTableOfEnumerator<xercesc::Grammar> grammars = GetGrammars().getGrammarEnumerator();
    while (grammars.hasMoreElements()) {
        const auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(&grammars.nextElement());
        if (!grammar)
            continue;
        auto declarations = grammar->getElemEnumerator();
        while (declarations.hasMoreElements()) {
            const xercesc::SchemaElementDecl& declaration = declarations.nextElement();
            if (!declaration.isGlobalDecl())
                continue;
            if (local == declaration.getBaseName())
                otherNamespace = grammar->getTargetNamespace();
            if (diagnostic.allowed.size() < AllowedLimit)
                diagnostic.allowed.emplace_back(declaration.getBaseName());
        }
    }
    std::sort(diagnostic.allowed.begin(), diagnostic.allowed.end());
    if (!otherNamespace) {
        diagnostic.suggestion = FindNearestName(name, diagnostic.allowed);
        diagnostic.message =
            WithSuggestion("the schema does not declare the document element " + Quote(name), diagnostic.suggestion);
        Add(std::move(diagnostic));
        return;
    }
    diagnostic.code = DiagnosticCode::WrongNamespace;
    diagnostic.allowed.clear();
    const bool isNone = otherNamespace->IsEmpty();
    diagnostic.expected = isNone ? VString("no namespace") : "the namespace " + Quote(*otherNamespace);
    diagnostic.message = "the document element " + Quote(name) + " must be in " + diagnostic.expected;
    const VString prefix(text.data(), std::min(text.find(u':'), text.size()));
    const VString declaration = local.size() == text.size() ? VString("xmlns") : "xmlns:" + prefix;
    if (const XMLAttributeToken* const written = FindWritten(tag, declaration)) {
        SetRange(diagnostic, m_tags->GetRange(isNone ? written->text : written->value), fault);
        diagnostic.attribute = declaration;
        diagnostic.value = VString::fromUtf8(written->value.data(), written->value.size());
        if (isNone && local.size() == text.size())
            diagnostic.message += "; remove this attribute";
    } else if (!isNone) {
        diagnostic.message += "; add " + declaration + "=\"" + *otherNamespace + "\"";
    }
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainUndeclaredAttribute(const XercesFault& fault, StartTag& tag)
{
    const TrailElement& element = m_trail.Top();
    if (element.isUndeclared)
        return;
    const VString name = FindReported(tag, fault.parameters[0]);
    const VString written = Restore(name);
    if (IsRepeated(DiagnosticCode::UndeclaredAttribute, element.name, written))
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::UndeclaredAttribute);
    diagnostic.attribute = written;
    if (const XMLAttributeToken* const token = FindWritten(tag, name)) {
        SetRange(diagnostic, m_tags->GetRange(token->name), fault);
        diagnostic.value = VString::fromUtf8(token->value.data(), token->value.size());
    }
    if (element.complexType && element.complexType->hasAttDefs() && HasDetail()) {
        const xercesc::XMLAttDefList& declared = element.complexType->getAttDefList();
        for (XMLSize_t i = 0; i < declared.getAttDefCount() && diagnostic.allowed.size() < AllowedLimit; ++i) {
            const xercesc::XMLAttDef& attribute = declared.getAttDef(i);
            const VString allowed = GetName(static_cast<const xercesc::SchemaAttDef&>(attribute));
            const bool isProhibited = attribute.getDefaultType() == xercesc::XMLAttDef::Prohibited;
            if (!isProhibited && !FindWritten(tag, allowed))
                diagnostic.allowed.push_back(allowed);
        }
    }
    std::sort(diagnostic.allowed.begin(), diagnostic.allowed.end());
    diagnostic.suggestion = FindNearestName(written, diagnostic.allowed);
    const std::u16string_view name16 = written.View();
    const VString local(name16.substr(name16.find(u':') + 1).data(), name16.size() - name16.find(u':') - 1);
    const auto isAllowed = [&](const VString& allowed) { return allowed == local; };
    if (HasChild(element.complexType, written)) {
        diagnostic.message =
            Quote(written) + " is a child element of element " + Quote(element.name) + ", not an attribute";
    } else if (local != written && std::any_of(diagnostic.allowed.begin(), diagnostic.allowed.end(), isAllowed)) {
        diagnostic.suggestion = local;
        diagnostic.message = "attribute " + Quote(written) + " must have no prefix; write " + Quote(local);
    } else {
        diagnostic.message = WithSuggestion(
            "attribute " + Quote(written) + " is not allowed on element " + Quote(element.name), diagnostic.suggestion);
    }
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainMissingAttribute(const XercesFault& fault)
{
    const TrailElement& element = m_trail.Top();
    if (element.isUndeclared)
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::MissingAttribute);
    diagnostic.attribute = Restore(fault.parameters[0]);
    VString space;
    if (element.complexType && element.complexType->hasAttDefs()) {
        const xercesc::XMLAttDefList& declared = element.complexType->getAttDefList();
        for (XMLSize_t i = 0; i < declared.getAttDefCount(); ++i) {
            const auto& attribute = static_cast<const xercesc::SchemaAttDef&>(declared.getAttDef(i));
            if (fault.parameters[0] != attribute.getFullName())
                continue;
            diagnostic.attribute = GetName(attribute);
            space = GetGrammars().getURIStringPool()->getValueForId(attribute.getAttName()->getURI());
            if (attribute.getDatatypeValidator())
                diagnostic.expected = GetDescription(*attribute.getDatatypeValidator()).words;
        }
    }
    diagnostic.message = "element " + Quote(element.name) + " needs the attribute " + Quote(diagnostic.attribute);
    if (!space.IsEmpty() && !diagnostic.attribute.contains(":"))
        diagnostic.message += " of the namespace " + Quote(space);
    if (!diagnostic.expected.IsEmpty())
        diagnostic.message += ", " + diagnostic.expected;
    Add(std::move(diagnostic));
}

const xercesc::SchemaAttDef* DiagnosticReader::FindDeclaration(
    const xercesc::ComplexTypeInfo& type, const xercesc::XMLAttr& attribute) const
{
    if (type.hasAttDefs()) {
        const auto* const declared = type.getAttDef(attribute.getName(), static_cast<int>(attribute.getURIId()));
        if (declared)
            return declared;
    }
    // A wildcard allows attributes that a schema declares at its top.
    const XMLCh* const space = GetGrammars().getURIStringPool()->getValueForId(attribute.getURIId());
    xercesc::RefHashTableOfEnumerator<xercesc::Grammar> grammars = GetGrammars().getGrammarEnumerator();
    while (grammars.hasMoreElements()) {
        const auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(&grammars.nextElement());
        if (!grammar || !xercesc::XMLString::equals(grammar->getTargetNamespace(), space) ||
            !grammar->getAttributeDeclRegistry())
            continue;
        const xercesc::XMLAttDef* const declared = grammar->getAttributeDeclRegistry()->get(attribute.getName());
        if (declared)
            return static_cast<const xercesc::SchemaAttDef*>(declared);
    }
    return nullptr;
}

bool DiagnosticReader::ExplainAttributeValue(const XercesFault& fault, StartTag& tag)
{
    const TrailElement& element = m_trail.Top();
    if (element.isUndeclared || !element.complexType)
        return element.isUndeclared;
    const bool isFixed = CodeOf(fault) == DiagnosticCode::FixedValue;
    for (XMLSize_t i = isFixed ? 0 : tag.nextValue; i < tag.count; ++i) {
        const xercesc::XMLAttr& attribute = *tag.attributes->elementAt(i);
        const xercesc::SchemaAttDef* const declared = FindDeclaration(*element.complexType, attribute);
        xercesc::DatatypeValidator* const type = declared ? declared->getDatatypeValidator() : nullptr;
        if (!type)
            continue;
        bool isFaulty = isFixed && fault.parameters[0] == attribute.getQName();
        if (!isFixed) {
            try {
                type->validate(attribute.getValue(), nullptr, &GetMemory());
            } catch (const xercesc::XMLException&) {
                isFaulty = true;
            }
        }
        if (!isFaulty)
            continue;
        tag.nextValue = isFixed ? tag.nextValue : i + 1;
        ParseDiagnostic diagnostic = Begin(fault, CodeOf(fault));
        diagnostic.attribute = Restore(attribute.getQName());
        diagnostic.value = attribute.getValue();
        if (const XMLAttributeToken* const token = FindWritten(tag, attribute.getQName()))
            SetRange(diagnostic, m_tags->GetRange(token->value), fault);
        const VString owner = "attribute " + Quote(diagnostic.attribute);
        if (isFixed) {
            diagnostic.expected = "always " + Quote(declared->getValue());
            diagnostic.message = "the value of " + owner + " must be " + Quote(declared->getValue());
        } else {
            DescribeValue(diagnostic, owner, *type);
        }
        Add(std::move(diagnostic));
        return true;
    }
    return false;
}

const TypeDescription& DiagnosticReader::GetDescription(xercesc::DatatypeValidator& type)
{
    const auto [entry, isNew] = m_descriptions.try_emplace(&type);
    if (isNew)
        entry->second = DescribeType(type);
    return entry->second;
}

void DiagnosticReader::DescribeValue(
    ParseDiagnostic& diagnostic, const VString& owner, xercesc::DatatypeValidator& type)
{
    const bool hasDetail = HasDetail();
    const TypeDescription& description = GetDescription(type);
    diagnostic.expected = description.words;
    if (hasDetail)
        diagnostic.allowed = description.values;
    if (diagnostic.value.IsEmpty()) {
        diagnostic.message = "the value of " + owner + " is empty, but must be " + diagnostic.expected;
        return;
    }
    diagnostic.message = "the value " + Quote(diagnostic.value) + " of " + owner + " ";
    const VString misfit = hasDetail ? DescribeMisfit(type, diagnostic.value) : VString();
    if (misfit.IsEmpty())
        diagnostic.message += "is not " + diagnostic.expected;
    else
        diagnostic.message += misfit;
    // The other clauses about a value already propose another one.
    if (misfit.IsEmpty() || misfit.startsWith("is neither "))
        diagnostic.suggestion = FindNearestName(diagnostic.value, diagnostic.allowed);
    diagnostic.message = WithSuggestion(diagnostic.message, diagnostic.suggestion);
}

// Explaining faults of content.

void DiagnosticReader::ExplainText(const XercesFault& fault)
{
    const TrailElement& element = m_trail.Top();
    if (element.isUndeclared)
        return;
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::UnexpectedText);
    const bool isInEntity = !m_openEntities.empty() || element.start.start.line == 0;
    const std::optional<SourceRange> range = m_tags && !isInEntity ? m_tags->GetTextRange() : std::nullopt;
    SetRange(diagnostic, range.value_or(SourceRange()), fault);
    const bool isEmpty =
        element.complexType && element.complexType->getContentType() == xercesc::SchemaElementDecl::Empty;
    if (range)
        diagnostic.value = VString::fromUtf8(m_tags->GetText().data(), m_tags->GetText().size());
    const VString text = diagnostic.value.IsEmpty() ? VString("text") : "the text " + Quote(diagnostic.value);
    diagnostic.message = isEmpty
        ? "element " + Quote(element.name) + " must be empty; remove " + text
        : text + " is not allowed in element " + Quote(element.name) + ", which must contain only elements";
    const bool isSame = !m_diagnostics.empty() && m_diagnostics.back() == diagnostic;
    if (!isSame)
        Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainContent(const XercesFault& fault, const SourceRange& endTag)
{
    TrailElement& element = m_trail.Top();
    if (element.isUndeclared)
        return;
    if (fault.code == XMLValid::NilAttrNotEmpty) {
        ExplainNilContent(fault);
        return;
    }
    if (!element.complexType && element.hasOwnType) {
        const auto isReported = [](const TrailChild& child) { return child.isReported; };
        if (std::none_of(element.children.begin(), element.children.end(), isReported))
            ExplainOther(fault);
        return;
    }
    // Children that have a diagnostic are left out, so that the others are still checked.
    ContentModelQuery::Names names;
    std::vector<const TrailChild*> children;
    for (const TrailChild& child : element.children) {
        if (!child.isReported) {
            names.push_back(child.name);
            children.push_back(&child);
        }
    }
    ContentFailure content;
    std::size_t failure = ContentModelQuery::npos;
    if (element.complexType && element.complexType->getContentSpec()) {
        const ContentModelQuery query(*element.complexType, names, m_contentBudget);
        failure = query.FindFailure();
        if (failure == ContentModelQuery::npos && children.size() < element.children.size())
            return;
        if (failure != ContentModelQuery::npos && HasDetail()) {
            const ContentModelQuery::Names allowed = query.FindAllowed(failure);
            content.allowed = WriteNames(allowed, element);
            content.missing = WriteNames(query.FindMissing(failure, allowed), element);
            const bool mayMove = failure < names.size() && content.missing.empty();
            const std::size_t place = mayMove ? query.FindEarlierPlace(failure) : ContentModelQuery::npos;
            if (place != ContentModelQuery::npos)
                content.next = children[place]->written;
            // The missing element may follow at a wrong place.
            const auto isMissing = [&](const TrailChild* child) {
                return content.missing.size() == 1 && child->written == content.missing.front();
            };
            const auto behind = children.begin() + static_cast<std::ptrdiff_t>(std::min(failure, children.size()));
            content.isSwapped = std::any_of(behind, children.end(), isMissing);
        }
    } else if (!names.empty()) {
        failure = 0;
    } else if (!element.children.empty()) {
        return;
    }
    // An element that seems to be missing may be one of those left out.
    const bool isPartial = children.size() < element.children.size();
    if (isPartial && (failure >= names.size() || !content.missing.empty()))
        return;
    if (failure >= names.size()) {
        content.isRepeated = failure == names.size();
        ExplainEnd(fault, endTag, std::move(content));
    } else {
        content.isRepeated = IsRepeatedName(names, failure);
        ExplainChild(fault, *children[failure], std::move(content));
    }
}

void DiagnosticReader::ExplainNilContent(const XercesFault& fault)
{
    const TrailElement& element = m_trail.Top();
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::BadType);
    if (const std::optional<SourceRange> text = m_tags ? m_tags->GetTextRange() : std::nullopt)
        SetRange(diagnostic, *text, fault);
    diagnostic.message =
        "element " + Quote(element.name) + " has xsi:nil, so it must be empty; remove its content or xsi:nil";
    Add(std::move(diagnostic));
}

// The content ends too early, or it is wrong in a way that the model does not know.
void DiagnosticReader::ExplainEnd(const XercesFault& fault, const SourceRange& endTag, ContentFailure failure)
{
    const TrailElement& element = m_trail.Top();
    const bool isMissing = !failure.allowed.empty();
    ParseDiagnostic diagnostic = Begin(fault, isMissing ? DiagnosticCode::MissingChild : CodeOf(fault));
    SetRange(diagnostic, endTag, fault);
    if (isMissing && element.hasEndTag)
        diagnostic.related = {"in " + m_trail.GetPath() + ", which began", MapPosition(element.start.start)};
    diagnostic.message = Adapt(fault.text);
    if (isMissing) {
        diagnostic.message = "element " + Quote(element.name) +
            " is not complete: " + ListNames(failure.missing.empty() ? failure.allowed : failure.missing) +
            " is missing";
    } else if (failure.isRepeated) {
        diagnostic.code = DiagnosticCode::MissingChild;
        diagnostic.message = "element " + Quote(element.name) + " is not complete";
    }
    diagnostic.allowed = std::move(failure.allowed);
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainChild(const XercesFault& fault, const TrailChild& child, ContentFailure failure)
{
    const TrailElement& element = m_trail.Top();
    const VString name = Quote(child.written);
    ParseDiagnostic diagnostic = Begin(fault, DiagnosticCode::UnexpectedElement);
    SetRange(diagnostic, child.start, fault);
    diagnostic.element = child.number;
    if (element.start.start.line != 0)
        diagnostic.related = {"in " + diagnostic.path + ", which began", MapPosition(element.start.start)};
    diagnostic.path += "/" + child.written + "[" + VString::fromStdString(std::to_string(child.index)) + "]";
    if (!failure.missing.empty() && failure.isSwapped) {
        diagnostic.message =
            "element " + name + " is not allowed here: " + ListNames(failure.missing) + " must come first";
    } else if (!failure.missing.empty()) {
        diagnostic.code = DiagnosticCode::MissingChild;
        diagnostic.message = ListNames(failure.missing) + " is missing in front of element " + name;
    } else if (!failure.next.IsEmpty()) {
        diagnostic.message =
            "element " + name + " is not allowed here; it must stand in front of element " + Quote(failure.next);
    } else if (!element.complexType || !element.complexType->getContentSpec()) {
        diagnostic.message =
            "element " + name + " is not allowed here: element " + Quote(element.name) + " must contain only text";
    } else {
        diagnostic.message = failure.isRepeated ? "no further element " + name + " is allowed here"
                                                : "element " + name + " is not allowed here";
    }
    diagnostic.allowed = std::move(failure.allowed);
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainValue(const XercesFault& fault)
{
    const TrailElement& element = m_trail.Top();
    if (element.isUndeclared || element.hasBadType)
        return;
    ParseDiagnostic diagnostic = Begin(fault, CodeOf(fault));
    diagnostic.message = Adapt(fault.text);
    if (const std::optional<SourceRange> text = m_tags ? m_tags->GetTextRange() : std::nullopt)
        SetRange(diagnostic, *text, fault);
    const XMLCh* const fixed = element.declaration ? element.declaration->getDefaultValue() : nullptr;
    if (diagnostic.code == DiagnosticCode::FixedValue && fixed) {
        diagnostic.value = VString(element.text.data(), element.text.size()).trimmed();
        diagnostic.expected = "always " + Quote(fixed);
        diagnostic.message = "the value of element " + Quote(element.name) + " must be " + Quote(fixed);
    } else if (element.simpleType) {
        diagnostic.value = VString(element.text.data(), element.text.size()).trimmed();
        DescribeValue(diagnostic, "element " + Quote(element.name), *element.simpleType);
        if (diagnostic.value.IsEmpty()) {
            diagnostic.message =
                "element " + Quote(element.name) + " is empty, but must contain " + diagnostic.expected;
        }
    }
    Add(std::move(diagnostic));
}
