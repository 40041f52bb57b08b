// The handler of the events of Xerces.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/NameTable.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SharedTexts.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/WrittenNames.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// An exception that ends a parse after the handler has recorded the fault.
struct ParseAbandoned {};

// Passes elements and texts to a builder and collects the messages of Xerces. Restores the attribute
// names that the colon sanitizer rewrote.
//
// Ownership: shares the builder, which must not be null when a document is parsed or a schema is loaded. A reader
// of Xerces refers to its handler, so the handler must outlive the last parse of the reader.
//
// Threads: one at a time.
class XercesXMLHandler final : public xercesc::DefaultHandler, public xercesc::XMLEntityResolver {
public:
    explicit XercesXMLHandler(std::shared_ptr<TreeBuilder> builder);
    ~XercesXMLHandler() override;

    // Replaces the builder and clears the messages.
    void SetBuilder(std::shared_ptr<TreeBuilder> builder) noexcept;
    // Discards text left by an aborted parse. From then on, diagnostics about the source `id` contain the
    // attribute names and positions of the original document instead of those in the text that Xerces reads.
    void BeginParse(const VString& id, const XercesInputSource& source);
    // Makes the parse check the entities of `document` at the first declaration of an entity. `document`
    // must live until the parse ends.
    void CheckEntitiesOf(const xercesc::InputSource& document) noexcept;
    // Frees the caches of the parse, and discards text left by an aborted parse.
    void EndParse() noexcept;
    // From this call to EndSchema, an external entity abandons the loading of the schema `id`. The streams of the
    // schemas that it includes come from `memory`, because Xerces loses a stream if memory runs out.
    void BeginSchema(const VString& id, const XercesInputSource& source, xercesc::MemoryManager& memory);
    // Abandons the schema if it exceeds an expansion limit, or if Xerces would need too much call stack for the
    // parentheses of a pattern. `bytes` is the content of `source`.
    void CheckSchema(const xercesc::InputSource& source, std::string_view bytes);
    void EndSchema() noexcept;
    // Call at the end of each parse, because the locator refers to the input of the parse.
    void ForgetLocator() noexcept { m_locator = nullptr; }

    // Returns a message in the form of Parser::GetErrors().
    static VString FormatMessage(
        ParseDiagnostic::Severity severity, const VString& message, const VString& id, SourcePosition position);

    bool IsDone() const noexcept { return m_builder->IsDone(); }
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }
    const std::vector<VString>& GetWarnings() const noexcept { return m_warnings; }
    const std::vector<VString>& GetErrors() const noexcept { return m_errors; }
    // Returns a diagnostic for each warning and error, in the order in which they were recorded, with
    // positions in the source as given and the messages of Xerces.
    std::vector<ParseDiagnostic> ReleaseDiagnostics() noexcept { return std::exchange(m_diagnostics, {}); }
    // Returns the diagnostic of the external entity declaration that ended this parse, if one did.
    const std::optional<ParseDiagnostic>& GetRefusal() const noexcept { return m_refusal; }
    // Sets the place of this diagnostic to the name in the declaration, if `text`, which Xerces has read, is UTF-8.
    void LocateRefusal(std::string_view text);
    // Returns null before the first event of a parse and after its end.
    const xercesc::Locator* GetLocator() const noexcept { return m_locator; }

    void setDocumentLocator(const xercesc::Locator* locator) override;
    void startElement(const XMLCh* qname, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count);
    void endElement();
    void characters(const XMLCh* text, XMLSize_t length) override
    {
        if (length >= m_pendingText.size() - m_pendingLength)
            GrowText(length);
        std::memcpy(m_pendingText.data() + m_pendingLength, text, length * sizeof(XMLCh));
        m_pendingLength += length;
    }

    // Records a fatal error with that message and abandons the parse.
    [[noreturn]] void AbandonExpansion(const VString& message);

    // On the first call of a parse, checks the entities of the document (see CheckEntitiesOf) and abandons
    // the parse if they exceed a limit.
    void internalEntityDecl(const XMLCh* name, const XMLCh* value) override;
    // Throws XMLParseException, which ends the parse.
    void externalEntityDecl(const XMLCh* name, const XMLCh* publicId, const XMLCh* systemId) override;

    void warning(const xercesc::SAXParseException& exception) override;
    void error(const xercesc::SAXParseException& exception) override;
    void fatalError(const xercesc::SAXParseException& exception) override;
    void resetErrors() override;
    // Records a fatal error of the document or schema `id` and throws ParseAbandoned.
    [[noreturn]] void Refuse(DiagnosticCode code, const VString& message, const VString& id, SourcePosition position);
    // Refuses a document or schema that would exhaust the call stack of the thread.
    [[noreturn]] void RefuseDeepStack();
    // Refuses a document or schema that contains a NUL.
    [[noreturn]] void RefuseNul(const VString& id, SourcePosition position);

    // Returns the schema that another schema imports or includes, if the builder finds it. Otherwise returns
    // null, and Xerces omits the resource. An external entity of a schema is an exception: for null, Xerces
    // would fetch the entity itself, so this operation abandons the loading of the schema.
    xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;
    using xercesc::DefaultHandler::endElement;
    using xercesc::DefaultHandler::resolveEntity;
    using xercesc::DefaultHandler::startElement;

private:
    class Attributes;

    // Grows the buffer so that more than `length` further units fit.
    void GrowText(std::size_t length);
    // Discards the pending text. Frees its buffer if the buffer is large.
    void ForgetText() noexcept;
    // Returns a text or a value as the document writes it. The sanitizer also rewrites a colon in a text that looks
    // like an attribute, as in "a :b='c'>". The result is valid until the next call.
    std::u16string_view RestoreText(std::u16string_view text);
    // Passes the pending text to the builder.
    void FlushText();
    void Record(ParseDiagnostic::Severity severity, const xercesc::SAXParseException& exception);
    // `position` is one in the text that Xerces reads.
    void Record(ParseDiagnostic::Severity severity,
        DiagnosticCode code,
        const VString& message,
        const VString& id,
        SourcePosition position);
    // Returns the position in the source as given for one in the text that Xerces reads.
    SourcePosition MapPosition(SourcePosition scanned);
    // Abandons a schema that uses an external entity.
    [[noreturn]] void RefuseEntity(const xercesc::XMLResourceIdentifier& resource);

    std::shared_ptr<TreeBuilder> m_builder;
    const xercesc::Locator* m_locator = nullptr;
    // The text since the last tag, followed by spare capacity.
    std::vector<XMLCh> m_pendingText;
    std::size_t m_pendingLength = 0;
    std::vector<VString> m_warnings;
    std::vector<VString> m_errors;
    bool m_fatallyErrored = false;

    // The document whose entities are not checked yet, or null.
    const xercesc::InputSource* m_unchecked = nullptr;
    xercesc::MemoryManager* m_schemaMemory = nullptr;  // null while no schema is loaded, see BeginSchema
    // The id and the map of the document or schema that is being read. The map may be null.
    VString m_sourceId;
    std::shared_ptr<SourceMap> m_sourceMap;
    std::vector<ParseDiagnostic> m_diagnostics;
    std::optional<ParseDiagnostic> m_refusal;
    WrittenNames m_writtenNames;
    bool m_restoresTexts = false;  // see RestoreText
    std::u16string m_restored;
    NameTable m_names;
    SharedTexts m_values;
    SharedTexts m_texts;
};
