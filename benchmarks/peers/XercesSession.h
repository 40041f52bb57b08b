// Set-up of Xerces-C for the benchmarks.
#pragma once

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/util/XMLString.hpp>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace xercessession {

// Initialises Xerces-C on the first call. It is never terminated.
void Initialise();

// Makes a reader with the features that the library's driver sets if it has no schema.
std::unique_ptr<xercesc::SAX2XMLReader> MakeReader();
// Adds the features that the library's driver sets if it has a schema.
void SetSchemaFeatures(xercesc::SAX2XMLReader& reader);

// Runs the reader over the bytes step by step, as the driver does.
void ParseProgressively(xercesc::SAX2XMLReader& reader, const std::string& bytes);

std::string ToUtf8(const XMLCh* text);
std::string ReadFile(const std::string& path);

}  // namespace xercessession
