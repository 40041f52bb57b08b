// The reader of the second pass over a document.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/validators/schema/SchemaAttDef.hpp>

#include "vancorexml/main/parser/ContentModelQuery.h"
#include "vancorexml/main/parser/DiagnosticPass.h"
#include "vancorexml/main/parser/ElementTrail.h"
#include "vancorexml/main/parser/KeyTracker.h"
#include "vancorexml/main/parser/NamespacePrefixes.h"
#include "vancorexml/main/parser/SourceTags.h"
#include "vancorexml/main/parser/TypeDescription.h"
#include "vancorexml/main/parser/WrittenNames.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"
#include "vancorexml/main/parser/XercesFault.h"
#include "vancorexml/main/parser/XercesMessages.h"
#include "vancorexml/main/parser/XercesReader.h"
#include "vansys/TextHash.h"

// Reads the document and makes the diagnostics. Messages of Xerces are kept until the next event, because only the
// event tells which element they are about.
class DiagnosticReader final : public XercesReader, private KeyPlaces {
public:
    // See DiagnosticPass. The arguments must outlive the reader.
    DiagnosticReader(const XercesInputSource& source,
        const VString& id,
        xercesc::XMLGrammarPool* schemas,
        xercesc::SecurityManager& limits,
        const DiagnosticPass::Settings& settings);
    ~DiagnosticReader() override;

    std::vector<ParseDiagnostic> Read();

    void startElement(const xercesc::XMLElementDecl& declaration,
        unsigned int uri,
        const XMLCh* prefix,
        const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
        XMLSize_t count,
        bool isEmpty,
        bool isRoot) override;
    void endElement(
        const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot, const XMLCh* prefix) override;
    void docCharacters(const XMLCh* text, XMLSize_t length, bool isCData) override;
    void ignorableWhitespace(const XMLCh*, XMLSize_t, bool) override {}
    void startEntityReference(const xercesc::XMLEntityDecl& entity) override;
    void endEntityReference(const xercesc::XMLEntityDecl&) override { m_openEntities.pop_back(); }
    void error(unsigned int code,
        const XMLCh* domain,
        ErrTypes type,
        const XMLCh* text,
        const XMLCh* systemId,
        const XMLCh* publicId,
        XMLFileLoc line,
        XMLFileLoc column) override;
    void resetErrors() override {}
    void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter, bool isIgnored) override;
    void doctypeDecl(const xercesc::DTDElementDecl& element,
        const XMLCh* publicId,
        const XMLCh* systemId,
        bool hasInternalSubset,
        bool hasExternalSubset) override
    {
        m_hasDocumentType = true;
        XercesReader::doctypeDecl(element, publicId, systemId, hasInternalSubset, hasExternalSubset);
    }

    // Returns the diagnostics that Xerces has no error for.
    std::vector<ParseDiagnostic> ReleaseDoubts() { return std::move(m_doubts); }

private:
    using Attributes = xercesc::RefVectorOf<xercesc::XMLAttr>;

    // The start tag that is being read.
    struct StartTag {
        const XMLToken* token = nullptr;  // null if the tag is not in the text
        const Attributes* attributes = nullptr;
        XMLSize_t count = 0;
        bool isEmpty = false;
        XMLSize_t nextValue = 0;  // the first attribute whose value no fault was about
        std::unordered_map<std::string_view, XMLAttributeToken, TextHash> written;
        std::unordered_map<std::u16string_view, const XMLCh*, TextHash> prefixed;  // qualified names by local names
    };

    // What does not fit in the content of an element.
    struct ContentFailure {
        bool isRepeated = false;       // a child that has the same name as an earlier one
        std::vector<VString> allowed;  // in place of the child, or at the end
        std::vector<VString> missing;  // those of `allowed` behind which the content could go on
        VString next;                  // the sibling in front of which the child must stand; may be empty
        bool isSwapped = false;        // the missing element follows later
    };

    SourcePosition GetStart(const XMLCh* attribute) override;
    ParseDiagnostic Describe(const XMLCh* attribute) override;
    void AddKeyFaults(KeyTracker::Faults faults);
    // Adds the faults of keys: those with the values, as far as Xerces reported faults of the same kind.
    void ChooseKeyFaults();

    SourcePosition MapPosition(SourcePosition scanned) const;
    SourceRange MapRange(SourceRange range) const { return {MapPosition(range.start), MapPosition(range.end)}; }
    void PrepareText();
    // Returns the next tag of the text if it is the one that Xerces reports, or null.
    const XMLToken* FindTag(XMLToken::Kind kind);
    void EndElement();

    void FindTypes(TrailElement& element, const xercesc::XMLElementDecl& declaration, const StartTag& tag);
    xercesc::ComplexTypeInfo* FindType(const VString& name);
    // True for an attribute of the namespace of xsi:type.
    bool IsOfInstance(const xercesc::XMLAttr& attribute, const XMLCh* local) const;
    // Returns the names of the complex types of all schemas.
    std::vector<VString> FindTypeNames();

    // Returns a diagnostic for the innermost element and the range of its name.
    ParseDiagnostic Begin(const XercesFault& fault, DiagnosticCode code);
    void SetRange(ParseDiagnostic& diagnostic, const SourceRange& range, const XercesFault& fault) const;
    void SetParent(ParseDiagnostic& diagnostic);
    // True for the first diagnostics of a document. The others get no list of allowed names and no suggestion, because
    // these may take time and memory of many times the document.
    bool HasDetail() noexcept { return m_detailed++ < 1000; }
    void DropMisspeltAttributes();
    std::size_t Add(ParseDiagnostic diagnostic);
    // Counts a fault that repeats another one. Returns false if it is the first of its kind.
    bool IsRepeated(DiagnosticCode code, const VString& element, const VString& name);

    void ExplainText(const XercesFault& fault);
    void ExplainTag(const XercesFault& fault, StartTag& tag);
    void ExplainUndeclaredElement(const XercesFault& fault, StartTag& tag);
    void ExplainUndeclaredRoot(const XercesFault& fault, StartTag& tag);
    // Corrects the diagnostic of an undeclared element that only wraps elements that are allowed in its place.
    void ExplainWrapper();
    void ExplainBadType(const XercesFault& fault, StartTag& tag);
    void ExplainQualification(const XercesFault& fault);
    void ExplainUndeclaredAttribute(const XercesFault& fault, StartTag& tag);
    void ExplainMissingAttribute(const XercesFault& fault);
    const TypeDescription& GetDescription(xercesc::DatatypeValidator& type);
    // Describes why `diagnostic.value`, the value of `owner`, is not one of the type.
    void DescribeValue(ParseDiagnostic& diagnostic, const VString& owner, xercesc::DatatypeValidator& type);
    bool ExplainAttributeValue(const XercesFault& fault, StartTag& tag);
    void ExplainContent(const XercesFault& fault, const SourceRange& endTag);
    void ExplainNilContent(const XercesFault& fault);
    void ExplainEnd(const XercesFault& fault, const SourceRange& endTag, ContentFailure failure);
    void ExplainChild(const XercesFault& fault, const TrailChild& child, ContentFailure failure);
    void ExplainValue(const XercesFault& fault);
    void ExplainOther(const XercesFault& fault);
    void ExplainFatal(const XercesFault& fault);
    // Corrects the words about an end tag if the schema knows its name, but not that of the start tag.
    void PreferEndTag(ParseDiagnostic& diagnostic, std::string_view endTag);
    void ExplainExternalDocumentType(ParseDiagnostic diagnostic, const XercesFault& fault);
    void ExplainMissingConverter(ParseDiagnostic diagnostic, const XercesFault& fault);

    // Report what SetEnableReferenceChecks describes.
    void CheckStart();
    void CheckPrefixes(StartTag& tag);
    void ExplainNamespace(const NamespaceFault& fault, StartTag& tag);
    void CheckEntities(std::string_view text);
    void AddDoubt(ParseDiagnostic diagnostic);

    const XMLAttributeToken* FindWritten(StartTag& tag, const VString& name);
    // Returns the qualified name of an attribute in a message. Xerces leaves out the prefix, or writes the namespace in
    // braces in place of it.
    VString FindReported(StartTag& tag, const VString& reported);
    // Returns the declaration of an attribute, or null.
    const xercesc::SchemaAttDef* FindDeclaration(
        const xercesc::ComplexTypeInfo& type, const xercesc::XMLAttr& attribute) const;
    // Returns the name of a declared attribute as a document would write it.
    VString GetName(const xercesc::SchemaAttDef& attribute) const;
    // Explains a fatal fault in the text of an entity.
    void ExplainEntity(ParseDiagnostic& diagnostic, const XercesFault& fault) const;
    // Sets the related place to the declaration of the entity `diagnostic.value`.
    void LocateEntity(ParseDiagnostic& diagnostic) const;
    // Returns the prefixes that the document declares up to the next start tag, including that tag.
    std::vector<VString> FindPrefixes() const;
    // Removes the prefixes of the sanitizer from texts that quote the document.
    static void RestoreQuotations(ParseDiagnostic& diagnostic);
    // Returns the message with the names that the document writes.
    VString RestoreNames(const VString& message);
    VString Restore(const VString& name) const { return XercesColonSanitizer::RestoreName(name); }
    // Returns the names as the document would write them in the innermost element.
    std::vector<VString> WriteNames(const ContentModelQuery::Names& names, const TrailElement& parent) const;

    // Keeps the locator of a parse.
    class LocatorKeeper final : public xercesc::DefaultHandler {
    public:
        void setDocumentLocator(const xercesc::Locator* locator) override { m_locator = locator; }
        // Returns the name of the encoding that Xerces reads at present; empty before the start of a document.
        std::u16string GetEncoding() const;
        // Returns the position in the text that Xerces reads; that of the reference inside an entity.
        SourcePosition GetPosition() const;

    private:
        const xercesc::Locator* m_locator = nullptr;
    };

    const XercesInputSource& m_source;
    const VString& m_id;
    DiagnosticPass::Settings m_settings;
    LocatorKeeper m_handler;
    WrittenNames m_writtenNames;
    XercesMessages m_messages;

    std::string m_decoded;
    std::string_view m_text;           // in UTF-8; empty if it could not be decoded
    std::optional<SourceTags> m_tags;  // of m_text; no value before the first event, or if the text is unknown
    bool m_isTextReady = false;
    SourcePosition m_reference;           // of the outermost open entity, behind it, in the source as given
    std::vector<VString> m_openEntities;  // the names of the entities whose text is being read, the innermost last

    ElementTrail m_trail;
    std::vector<XercesFault> m_pending;
    std::optional<XercesFault> m_fatal;
    bool m_hasDocumentType = false;
    std::set<std::string> m_entities;  // the declared ones
    NamespacePrefixes m_prefixes;
    std::vector<ParseDiagnostic> m_doubts;

    StartTag* m_tag = nullptr;  // the start tag that is being read
    KeyTracker m_keys;
    std::vector<ParseDiagnostic> m_keyFaults;    // that m_keys found
    std::vector<ParseDiagnostic> m_keyMessages;  // that Xerces reported
    std::vector<ParseDiagnostic> m_missingKeys;  // references to keys whose element is missing
    std::vector<ParseDiagnostic> m_diagnostics;
    struct Repetition {
        std::size_t first = 0;  // the index of the diagnostic
        std::size_t count = 0;
    };
    std::unordered_map<std::u16string, Repetition, TextHash> m_repetitions;
    std::size_t m_detailed = 0;                                                             // see HasDetail
    std::size_t m_contentBudget = 300000000;                                                // see ContentModelQuery
    std::unordered_map<const xercesc::DatatypeValidator*, TypeDescription> m_descriptions;  // of the types so far
    std::set<std::size_t> m_dropped;  // the indexes of diagnostics that others make superfluous
};
