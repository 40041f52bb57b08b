#include "vancorexml/main/parser/XercesReaderSetup.h"

#include <xercesc/util/XMLUni.hpp>

using xercesc::XMLUni;

void XercesReaderSetup::Begin(xercesc::SAX2XMLReaderImpl& reader, xercesc::SecurityManager& limits)
{
    reader.setProperty(XMLUni::fgXercesSecurityManager, &limits);
#ifdef VANCOREXML_FUZZING
    // An expansion takes so long with the address sanitizer that the usual limit looks like an endless loop.
    limits.setEntityExpansionLimit(1000);
#endif
    reader.setExitOnFirstFatalError(true);
    reader.setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    reader.setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    reader.setFeature(XMLUni::fgXercesLoadSchema, false);
    reader.setFeature(XMLUni::fgXercesDynamic, false);
}

void XercesReaderSetup::SetValidation(xercesc::SAX2XMLReaderImpl& reader, bool validate)
{
    reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, validate);
    reader.setFeature(XMLUni::fgSAX2CoreValidation, validate);
    reader.setFeature(XMLUni::fgXercesSkipDTDValidation, !validate);
    reader.setFeature(XMLUni::fgXercesSchemaFullChecking, validate);
    reader.setFeature(XMLUni::fgXercesHandleMultipleImports, validate);
    if (!validate)
        return;
    reader.setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    reader.setFeature(XMLUni::fgXercesIdentityConstraintChecking, true);
    reader.setFeature(XMLUni::fgXercesSchema, true);
    reader.setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    reader.setFeature(XMLUni::fgXercesValidationErrorAsFatal, false);
}
