#include "vancorexml/main/parser/XMLComparison.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "vancoreplatform/Encoding.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/XMLEventReader.h"
#include "vancorexml/main/parser/XMLReferences.h"
#include "vancorexml/main/parser/XMLTokenReader.h"

namespace {

using Kind = XMLEvent::Kind;

// Uses memcmp, because std::char_traits<char16_t> compares the units one by one.
bool IsEqual(const std::u16string& a, const std::u16string& b) noexcept
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
}

// An element that is open in both documents.
struct OpenElement {
    bool preserves = false;
    bool hasChildElements = false;
    bool hasText = false;
    // True if the documents differ in the white space directly in this element, or below it.
    bool differs = false;
    bool differsBelow = false;

    // False if a difference in white space that was found is a difference in content.
    bool MayDiffer() const noexcept
    {
        const bool isIgnorable = hasChildElements && !hasText && !preserves;
        const bool isKeptBelow = preserves || (hasChildElements && hasText);
        return (!differs || isIgnorable) && (!differsBelow || !isKeptBelow);
    }
};

// Compares the events of two documents in step.
class Comparer {
public:
    Comparer(InputSource& a, InputSource& b) : m_a(a), m_b(b) {}

    // True if both documents are equal. Call it once.
    bool Run(bool comparesDeclarations)
    {
        const XMLEvent* a = &m_a.Next();
        const XMLEvent* b = &m_b.Next();
        if (ReadDeclaration(m_a, a) != ReadDeclaration(m_b, b) && comparesDeclarations)
            return false;
        for (;;) {
            const bool isBlankInA = a->isBlank;
            const bool isBlankInB = b->isBlank;
            if (isBlankInA || isBlankInB) {
                const bool isEqual = isBlankInA && isBlankInB && IsEqual(a->text, b->text);
                m_open.back().differs |= !isEqual;
            } else if (a->kind != b->kind || !IsEqual(a->text, b->text) || !Accept(*a)) {
                return false;
            } else if (a->kind == Kind::EndOfDocument) {
                return true;
            }
            // White space that only one of the documents has is skipped in this document.
            if (isBlankInA || !isBlankInB)
                a = &m_a.Next();
            if (isBlankInB || !isBlankInA)
                b = &m_b.Next();
        }
    }

    // True if the documents have a document type. Meaningful if they are equal.
    bool HasDocumentType() const noexcept { return m_hasDocumentType; }

private:
    // Returns the version and "standalone" of the document, and moves behind the declaration.
    static std::u16string ReadDeclaration(XMLEventReader& reader, const XMLEvent*& event)
    {
        if (event->kind != Kind::Declaration)
            return std::u16string(u"1.0\0\0", 5);
        std::u16string declaration = event->text;
        event = &reader.Next();
        return declaration;
    }

    // Records an event that is equal in both documents. Returns false for a fault, and at the end of an element in
    // which a difference in white space counts.
    bool Accept(const XMLEvent& event)
    {
        switch (event.kind) {
        case Kind::StartElement: {
            if (!m_open.empty())
                m_open.back().hasChildElements = true;
            OpenElement element;
            element.preserves = event.preserves || (!m_open.empty() && m_open.back().preserves);
            m_open.push_back(element);
            return true;
        }
        case Kind::EndElement: {
            const OpenElement element = m_open.back();
            m_open.pop_back();
            if (!m_open.empty())
                m_open.back().differsBelow |= element.differs || element.differsBelow;
            return element.MayDiffer();
        }
        case Kind::Text:
        case Kind::StartEntity: m_open.back().hasText = true; return true;
        case Kind::DocumentType: m_hasDocumentType = true; return true;
        case Kind::Fault: return false;
        default: return true;
        }
    }

    XMLEventReader m_a;
    XMLEventReader m_b;
    std::vector<OpenElement> m_open;
    bool m_hasDocumentType = false;
};

void CountEntities(std::string_view text, std::map<std::string_view, std::size_t>& counts)
{
    for (std::size_t at = XMLReferences::FindEntity(text); at < text.size(); at = XMLReferences::FindEntity(text)) {
        const std::size_t end = std::min(text.find(';', at), text.size());
        ++counts[text.substr(at, end - at)];
        text.remove_prefix(end);
    }
}

// Returns how often the texts and attributes of a document refer to each entity.
std::map<std::string_view, std::size_t> CountEntities(std::string_view text)
{
    std::map<std::string_view, std::size_t> counts;
    XMLTokenReader reader(text);
    XMLToken token;
    while (reader.Next(token)) {
        if (token.kind == XMLToken::Kind::Text || token.kind == XMLToken::Kind::StartTag)
            CountEntities(token.text, counts);
    }
    return counts;
}

// Xerces drops a NUL and incomplete UTF-8 at the end of a document without a fault.
bool MayBeDocument(const std::string& text) noexcept
{
    return text.find('\0') == std::string::npos && FindInvalidUtf8(text.data(), text.size()) == text.size();
}

bool Compare(const std::string& a, const std::string& b, bool comparesDeclarations)
{
    if (!MayBeDocument(a) || !MayBeDocument(b))
        return false;
    BorrowedInputSource first(a, VString(), true, TextEncoding::Utf8);
    BorrowedInputSource second(b, VString(), true, TextEncoding::Utf8);
    Comparer comparer(first, second);
    if (!comparer.Run(comparesDeclarations))
        return false;
    // Xerces reports neither the references in attributes nor those to entities that only an external document type
    // declares.
    return !comparer.HasDocumentType() || CountEntities(a) == CountEntities(b);
}

}  // namespace

XMLVerificationError::XMLVerificationError(const char* message) : std::logic_error(message) {}

XMLVerificationError::~XMLVerificationError() = default;

namespace XMLComparison {

bool AreEqual(const std::string& a, const std::string& b)
{
    return Compare(a, b, true);
}

bool AreContentsEqual(const std::string& a, const std::string& b)
{
    return Compare(a, b, false);
}

}  // namespace XMLComparison
