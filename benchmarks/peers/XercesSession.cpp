#include "benchmarks/peers/XercesSession.h"

#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace xercessession {

void Initialise()
{
    static const bool initialised = (xercesc::XMLPlatformUtils::Initialize(), true);
    (void)initialised;
}

std::unique_ptr<xercesc::SAX2XMLReader> MakeReader()
{
    Initialise();
    using xercesc::XMLUni;
    static xercesc::SecurityManager security;
    std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
    reader->setProperty(XMLUni::fgXercesSecurityManager, &security);
    reader->setExitOnFirstFatalError(true);
    reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    reader->setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    reader->setFeature(XMLUni::fgXercesLoadSchema, false);
    reader->setFeature(XMLUni::fgXercesDynamic, false);
    reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
    reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(XMLUni::fgXercesSkipDTDValidation, true);
    reader->setFeature(XMLUni::fgXercesSchemaFullChecking, false);
    reader->setFeature(XMLUni::fgXercesHandleMultipleImports, false);
    return reader;
}

void SetSchemaFeatures(xercesc::SAX2XMLReader& reader)
{
    using xercesc::XMLUni;
    reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    reader.setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    reader.setFeature(XMLUni::fgSAX2CoreValidation, true);
    reader.setFeature(XMLUni::fgXercesIdentityConstraintChecking, true);
    reader.setFeature(XMLUni::fgXercesSkipDTDValidation, false);
    reader.setFeature(XMLUni::fgXercesSchemaFullChecking, true);
    reader.setFeature(XMLUni::fgXercesHandleMultipleImports, true);
    reader.setFeature(XMLUni::fgXercesSchema, true);
    reader.setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    reader.setFeature(XMLUni::fgXercesValidationErrorAsFatal, false);
}

void ParseProgressively(xercesc::SAX2XMLReader& reader, const std::string& bytes)
{
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "memory", false);
    source.setCopyBufToStream(false);
    xercesc::XMLPScanToken token;
    if (!reader.parseFirst(source, token))
        return;
    while (reader.parseNext(token)) {
    }
}

std::string ToUtf8(const XMLCh* text)
{
    const xercesc::TranscodeToStr utf8(text, "UTF-8");
    return std::string(reinterpret_cast<const char*>(utf8.str()), utf8.length());
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace xercessession
