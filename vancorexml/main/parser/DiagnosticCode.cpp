#include "vancorexml/main/parser/DiagnosticCode.h"

#include <cstddef>
#include <iterator>

namespace {

struct NamedCode {
    DiagnosticCode code;
    const char* name;
};

// In the order of the codes.
constexpr NamedCode namedCodes[] = {
    {DiagnosticCode::Other, "other"},
    {DiagnosticCode::EmptyDocument, "empty-document"},
    {DiagnosticCode::NotXml, "not-xml"},
    {DiagnosticCode::SecondRoot, "second-root"},
    {DiagnosticCode::TextOutsideRoot, "text-outside-root"},
    {DiagnosticCode::MisplacedDeclaration, "misplaced-declaration"},
    {DiagnosticCode::BadDeclaration, "bad-declaration"},
    {DiagnosticCode::BadDocumentType, "bad-document-type"},
    {DiagnosticCode::BadBytes, "bad-bytes"},
    {DiagnosticCode::UnknownEncoding, "unknown-encoding"},
    {DiagnosticCode::WrongEncoding, "wrong-encoding"},
    {DiagnosticCode::InvalidCharacter, "invalid-character"},
    {DiagnosticCode::BadCharacterReference, "bad-character-reference"},
    {DiagnosticCode::UnclosedElement, "unclosed-element"},
    {DiagnosticCode::MismatchedEndTag, "mismatched-end-tag"},
    {DiagnosticCode::UnexpectedEndTag, "unexpected-end-tag"},
    {DiagnosticCode::MalformedTag, "malformed-tag"},
    {DiagnosticCode::MissingValue, "missing-value"},
    {DiagnosticCode::UnquotedValue, "unquoted-value"},
    {DiagnosticCode::UnclosedValue, "unclosed-value"},
    {DiagnosticCode::DuplicateAttribute, "duplicate-attribute"},
    {DiagnosticCode::BareLessThan, "bare-less-than"},
    {DiagnosticCode::BareAmpersand, "bare-ampersand"},
    {DiagnosticCode::UnclosedReference, "unclosed-reference"},
    {DiagnosticCode::UnknownEntity, "unknown-entity"},
    {DiagnosticCode::RecursiveEntity, "recursive-entity"},
    {DiagnosticCode::ExternalEntity, "external-entity"},
    {DiagnosticCode::ExpansionLimit, "expansion-limit"},
    {DiagnosticCode::BadComment, "bad-comment"},
    {DiagnosticCode::UnclosedSection, "unclosed-section"},
    {DiagnosticCode::SectionEndInText, "section-end-in-text"},
    {DiagnosticCode::BadProcessingInstruction, "bad-processing-instruction"},
    {DiagnosticCode::UndeclaredPrefix, "undeclared-prefix"},
    {DiagnosticCode::BadNamespace, "bad-namespace"},
    {DiagnosticCode::WrongNamespace, "wrong-namespace"},
    {DiagnosticCode::UndeclaredElement, "undeclared-element"},
    {DiagnosticCode::UnexpectedElement, "unexpected-element"},
    {DiagnosticCode::MissingChild, "missing-child"},
    {DiagnosticCode::UnexpectedText, "unexpected-text"},
    {DiagnosticCode::UndeclaredAttribute, "undeclared-attribute"},
    {DiagnosticCode::MissingAttribute, "missing-attribute"},
    {DiagnosticCode::BadValue, "bad-value"},
    {DiagnosticCode::FixedValue, "fixed-value"},
    {DiagnosticCode::BadType, "bad-type"},
    {DiagnosticCode::DuplicateKey, "duplicate-key"},
    {DiagnosticCode::MissingKey, "missing-key"},
    {DiagnosticCode::UnknownReference, "unknown-reference"},
    {DiagnosticCode::BadSchema, "bad-schema"},
    {DiagnosticCode::MissingSchema, "missing-schema"},
    {DiagnosticCode::OutOfMemory, "out-of-memory"},
};

constexpr bool IsInOrder() noexcept
{
    for (std::size_t i = 0; i < std::size(namedCodes); ++i) {
        if (static_cast<std::size_t>(namedCodes[i].code) != i)
            return false;
    }
    return true;
}
static_assert(IsInOrder(), "the table is indexed by code");
static_assert(std::size(namedCodes) == static_cast<std::size_t>(DiagnosticCode::OutOfMemory) + 1);

}  // namespace

const char* GetDiagnosticName(DiagnosticCode code) noexcept
{
    return namedCodes[static_cast<std::size_t>(code)].name;
}

std::vector<DiagnosticCode> GetDiagnosticCodes()
{
    std::vector<DiagnosticCode> codes;
    for (const NamedCode& named : namedCodes)
        codes.push_back(named.code);
    return codes;
}
