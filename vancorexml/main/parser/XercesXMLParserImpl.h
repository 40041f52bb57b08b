// The parser behind XercesXMLParser and XercesTreeParser.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/EntityExpansionGuard.h"
#include "vancorexml/main/parser/NamespacePrefixes.h"
#include "vancorexml/main/parser/SchemaCache.h"
#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vancorexml/main/parser/XercesMemory.h"
#include "vancorexml/main/parser/XercesPlatform.h"
#include "vancorexml/main/parser/XercesReader.h"
#include "vancorexml/main/parser/XercesTreeParser.h"
#include "vancorexml/main/parser/XercesXMLHandler.h"

// The SAX2 reader of Xerces with four changes. It records whether the document declared XML 1.1. It
// counts the default attributes of document type declarations. It passes elements and text straight to
// the handler: SAX2's prefix tables, which nothing here uses, would cost as much as the handler itself. At the
// end of a document, it refuses a NUL behind the root element and a text that ends within a character.
class DocumentReader : public XercesReader {
public:
    using XercesReader::XercesReader;

    bool HasReadVersion11() const noexcept { return m_hasReadVersion11; }
    // True if a validation met an element that no schema declares. Xerces keeps the name, and treats an element of this
    // name differently in later documents: it ignores its xsi:type.
    bool HasReadUndeclared() const noexcept { return m_hasReadUndeclared; }
    // `handler` must outlive all later parses.
    void SetHandler(XercesXMLHandler& handler);
    // Makes the next parse refuse a document that ends within a character, because Xerces does not report this
    // fault. `text` is the document, or empty if all its bytes are known to be well-formed UTF-8.
    void SetUncheckedEnd(std::string_view text) noexcept { m_uncheckedEnd = text; }

    // Makes the next parse find out whether the document may have doubtful references.
    void SetFindsDoubtfulReferences(bool finds) noexcept { m_findsReferences = finds; }
    // Makes the next parse pass elements and text to the handler, or only messages.
    void SetReportsContent(bool reports) noexcept { m_reportsContent = reports; }
    // True if the document has a document type, or a name that breaks the rules of namespaces.
    bool MayHaveDoubtfulReferences() const noexcept { return m_mayHaveReferences; }

    void resetDocument() override;
    void endDocument() override;

    void XMLDecl(
        const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone, const XMLCh* actualEncoding) override;
    void doctypeDecl(const xercesc::DTDElementDecl& element,
        const XMLCh* publicId,
        const XMLCh* systemId,
        bool hasInternalSubset,
        bool hasExternalSubset) override;
    void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute, bool isIgnored) override;
    void startElement(const xercesc::XMLElementDecl& element,
        unsigned int uri,
        const XMLCh* prefix,
        const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
        XMLSize_t count,
        bool isEmpty,
        bool isRoot) override;
    void endElement(
        const xercesc::XMLElementDecl& element, unsigned int uri, bool isRoot, const XMLCh* prefix) override;
    void docCharacters(const XMLCh* text, XMLSize_t length, bool isCData) override;
    void ignorableWhitespace(const XMLCh* text, XMLSize_t length, bool isCData) override;

private:
    // A validation looks up each element that the schema does not declare in a table of Xerces with 29 buckets, which
    // never grows. So the time grows with the square of the number of different names: 20,000 take 0.7 seconds,
    // 100,000 took 42 seconds. Xerces numbers these names from 1.
    static constexpr XMLSize_t MostUndeclaredElements = 20000;

    [[noreturn]] void RefuseUndeclaredElements();
    void EndElement();
    // Returns the qualified name as the document writes it. `element` alone does not have the prefix if
    // it was declared in a schema.
    const XMLCh* GetQName(const xercesc::XMLElementDecl& element, const XMLCh* prefix);

    XercesXMLHandler* m_handler = nullptr;
    std::string_view m_uncheckedEnd;
    bool m_hasReadVersion11 = false;
    bool m_hasReadUndeclared = false;
    bool m_hasDefaults = false;
    DefaultAttributeCounter m_defaults;
    bool m_hasNamespaces = false;
    XMLSize_t m_depth = 0;
    std::u16string m_qname;
    bool m_reportsContent = true;
    bool m_findsReferences = false;
    bool m_mayHaveReferences = false;
    NamespacePrefixes m_prefixes;
};

// Drives a DocumentReader. The next parse reuses the reader, unless the document had an error, declared XML 1.1, or had
// elements that its schemas do not declare: these leave state in the reader that would affect the next document. The
// next parse also gets a new reader if the document made the reader large. The schemas are not part of the reader and
// stay loaded.
class XercesXMLParserImpl : public XercesTreeParser {
public:
    // `handler` is the caller's handler that `builder` calls, or null for a builder of the library.
    XercesXMLParserImpl(
        InputSource& input, std::shared_ptr<SAXInterface> handler, std::shared_ptr<TreeBuilder> builder);
    ~XercesXMLParserImpl() override;

    void LoadXSDSource(InputSource& xsdSource) override;
    void LoadSchemas(const std::vector<std::unique_ptr<InputSource>>& schemas) override;
    void Reload(InputSource& input, std::shared_ptr<SAXInterface> handler) override;
    void Reload(InputSource& input, std::shared_ptr<TreeBuilder> builder) override;
    std::vector<VString> GetLoadedXSDs() const override { return m_loadedXSDs; }
    void SetEnableReferenceChecks(bool enable) override { m_checksReferences = enable; }
    void SetEnableContent(bool enable) override { m_reportsContent = enable; }
    void GetCurrentLocation(int& line, int& column) override;

protected:
    void DoParse() override;

private:
    void RequireReader();
    void RequireLoader();
    void DiscardReader() noexcept;
    void InstallResolver(xercesc::SAX2XMLReader& reader);
    void PrepareParserState();
    // Loads the schemas of the library before the first other schema. If this fails, the parser has no schemas.
    void PrepareSchemas();
    // Returns the schemas of the library and `schemas`. Raises a LogicException for a schema that LoadSchema refuses.
    std::vector<SchemaCache::Wanted> ReadSchemas(const std::vector<std::unique_ptr<InputSource>>& schemas);
    void LoadSchema(InputSource& schema);
    // Raises a LogicException if the schema has no id or does not offer its text to Xerces.
    static IXercesInputSourceProvider& RequireProvider(InputSource& schema);
    void LoadSchemaResource(const VString& name);
    // True if m_schemas came from the cache and contains the schema that is loaded next.
    bool IsNextSchemaCompiled() const { return m_loadedXSDs.size() < m_compiledCount; }
    void LoadSchema(const VString& id, const XercesInputSource& source);
    void CompileSchema(const VString& id, const XercesInputSource& source);
    void LoadGrammar(const XercesInputSource& source, const VString& id);
    // Reads the input to its end, or until the handler or a fault stops it.
    void ReadInput();
    // `uncheckedEnd`: see DocumentReader::SetUncheckedEnd.
    void ReadDocument(const xercesc::InputSource& source, std::string_view uncheckedEnd = {});
    // Records the messages of the handler. Returns its diagnostics.
    std::vector<ParseDiagnostic> MoveMessagesFromHandler();
    // Reads a document with errors again. Returns its diagnostics.
    std::vector<ParseDiagnostic> Explain(const XercesInputSource& source);
    // Records an exception that has ended the parse. The diagnostic tells the reason, or the message if there is none.
    void RecordException(
        const VString& message, const VString& reason = VString(), DiagnosticCode code = DiagnosticCode::Other);
    // Records an XMLParseException that has ended the parse: as an error and as a fatal error.
    void RecordParseException(const VString& message);
    // Records that the sanitizer has refused the source. The diagnostic tells why it is not a document.
    void RecordMissingElement(const XercesInputSource& source);
    ParseDiagnostic DescribeException(const VString& message);

    // Declared before all members that use Xerces, so that it is destroyed after them.
    XercesInitializer m_xerces;
    // Null before the first schema. Compiled schemas from the cache may have texts that are not loaded yet.
    std::unique_ptr<CompiledSchemas> m_schemas;
    bool m_isPrepared = false;        // see PrepareSchemas
    bool m_usesCache = false;         // puts m_schemas into the cache in the end
    std::size_t m_compiledCount = 0;  // of the schemas that came from the cache
    // Null after DiscardReader, which is called when a parse leaves the reader unfit for reuse, and when a schema is
    // loaded. RequireReader makes a new one.
    std::unique_ptr<DocumentReader> m_reader;
    std::unique_ptr<xercesc::SecurityManager> m_securityManager;
    std::unique_ptr<XercesXMLHandler> m_handler;
    std::vector<VString> m_loadedXSDs;
    bool m_checksReferences = false;
    bool m_reportsContent = true;
};
