// The settings of the readers of Xerces.
#pragma once

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>

// All readers that read a document for the library have the same settings, so that they report the same errors.
namespace XercesReaderSetup {

// Makes the reader end at the first fatal error and load nothing from elsewhere. The manager must outlive the reader.
void Begin(xercesc::SAX2XMLReaderImpl& reader, xercesc::SecurityManager& limits);
// Turns validation against the schemas of the grammar pool on or off.
void SetValidation(xercesc::SAX2XMLReaderImpl& reader, bool validate);

}  // namespace XercesReaderSetup
