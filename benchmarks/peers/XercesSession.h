// The use of Xerces-C in this program.
#pragma once

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/util/XMLString.hpp>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace xercessession {

// Initialised once, never terminated while the program runs.
void Initialise();

// A reader with the features of the library's driver while no schema is loaded.
std::unique_ptr<xercesc::SAX2XMLReader> MakeReader();
// The features of the library's driver once a schema is loaded, set on such a reader.
void SetSchemaFeatures(xercesc::SAX2XMLReader& reader);

// Runs the reader over the bytes step by step, as the driver does.
void ParseProgressively(xercesc::SAX2XMLReader& reader, const std::string& bytes);

std::string ToUtf8(const XMLCh* text);
std::string ReadFile(const std::string& path);

}  // namespace xercessession
