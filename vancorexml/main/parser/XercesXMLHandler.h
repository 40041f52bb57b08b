// From Xerces' events to the operations of a builder.
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

// Ends a parse whose fault the handler has recorded already.
struct ParseAbandoned {};

// Hands elements and texts to a builder, with sanitized attribute names restored, and
// collects what Xerces reports.
//
// Ownership: shares the builder, which may be null while nothing is parsed or loaded. Xerces refers to the handler,
// so a reader must get another before this one dies.
//
// Threads: one at a time.
class XercesXMLHandler final : public xercesc::DefaultHandler, public xercesc::XMLEntityResolver {
public:
    explicit XercesXMLHandler(std::shared_ptr<TreeBuilder> builder);
    ~XercesXMLHandler() override;

    // The next parse is for another builder.
    void SetBuilder(std::shared_ptr<TreeBuilder> builder) noexcept;
    // Discards text left by an aborted parse. Diagnostics about `id` get the names and positions of the
    // document as it was given.
    void BeginParse(const VString& id, const XercesInputSource& source);
    // Checks the entities of `document` when it declares the first one. `document` must live until the
    // parse ends.
    void CheckEntitiesOf(const xercesc::InputSource& document) noexcept;
    // Frees the caches of the parse, and discards text left by an aborted parse.
    void EndParse() noexcept;
    // While the schema `id` is loaded, external entities are refused.
    void BeginSchema(const VString& id, const XercesInputSource& source);
    // Abandons the schema if it exceeds an expansion limit. `bytes` is the content of `source`.
    void CheckSchema(const xercesc::InputSource& source, std::string_view bytes);
    void EndSchema() noexcept;
    // Call when the parse that supplied the locator is over: the locator refers to the input of that parse.
    void ForgetLocator() noexcept { m_locator = nullptr; }

    bool IsDone() const noexcept { return m_builder->IsDone(); }
    bool HasFatallyErrored() const noexcept { return m_fatallyErrored; }
    const std::vector<VString>& GetWarnings() const noexcept { return m_warnings; }
    const std::vector<VString>& GetErrors() const noexcept { return m_errors; }
    // One for each warning and error, in the order they were met, with positions in the source as given.
    std::vector<ParseDiagnostic> ReleaseDiagnostics() noexcept { return std::exchange(m_diagnostics, {}); }
    // The external entity declaration for which this parse was refused, if it was.
    const std::optional<ParseDiagnostic>& GetRefusal() const noexcept { return m_refusal; }
    // Null except between the first event of a parse and its end.
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

    // At the first declaration of a document, abandons the parse if its entities exceed a limit.
    void internalEntityDecl(const XMLCh* name, const XMLCh* value) override;
    // Refuses the document: throws XMLParseException.
    void externalEntityDecl(const XMLCh* name, const XMLCh* publicId, const XMLCh* systemId) override;

    void warning(const xercesc::SAXParseException& exception) override;
    void error(const xercesc::SAXParseException& exception) override;
    void fatalError(const xercesc::SAXParseException& exception) override;
    void resetErrors() override;
    // Records a fatal error of the document or schema `id` and throws ParseAbandoned.
    [[noreturn]] void Refuse(const VString& message, const VString& id, std::uint64_t line, std::uint64_t column);
    // Likewise for a NUL.
    [[noreturn]] void RefuseNul(const VString& id, std::uint64_t line, std::uint64_t column);

    // The schema that a schema imports or includes, if the builder finds it. Null otherwise, and
    // for everything else: the parse then leaves the entity out.
    // External entities abort the loading of a schema, because for null Xerces would fetch them
    // itself.
    xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;
    using xercesc::DefaultHandler::endElement;
    using xercesc::DefaultHandler::resolveEntity;
    using xercesc::DefaultHandler::startElement;

private:
    class Attributes;

    // Grows the buffer so that more than `length` further units fit.
    void GrowText(std::size_t length);
    // Empties the pending text. Frees its buffer when that is large.
    void ForgetText() noexcept;
    void FlushText();
    void Record(ParseDiagnostic::Severity severity, const xercesc::SAXParseException& exception);
    // `line` and `column` are the scanner's.
    void Record(ParseDiagnostic::Severity severity,
        const VString& message,
        const VString& id,
        std::uint64_t line,
        std::uint64_t column);
    // Replaces the position of the scanner.
    void MapPosition(ParseDiagnostic& diagnostic);
    // Abandons a schema that uses an external entity.
    [[noreturn]] void RefuseEntity(const xercesc::XMLResourceIdentifier& resource);

    std::shared_ptr<TreeBuilder> m_builder;
    const xercesc::Locator* m_locator = nullptr;
    // Text that was not handed on yet, followed by spare room.
    std::vector<XMLCh> m_pendingText;
    std::size_t m_pendingLength = 0;
    std::vector<VString> m_warnings;
    std::vector<VString> m_errors;
    bool m_fatallyErrored = false;

    // The document until its entities are checked, else null.
    const xercesc::InputSource* m_unchecked = nullptr;
    bool m_isLoadingSchema = false;
    // The document or schema that is read now, and its map. The map may be null.
    VString m_sourceId;
    std::shared_ptr<SourceMap> m_sourceMap;
    std::vector<ParseDiagnostic> m_diagnostics;
    std::optional<ParseDiagnostic> m_refusal;
    WrittenNames m_writtenNames;
    NameTable m_names;
    SharedTexts m_values;
    SharedTexts m_texts;
};
