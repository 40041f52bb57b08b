#include "vancorexml/main/parser/AbstractXMLParser.h"

#include <utility>

#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

AbstractXMLParser::AbstractXMLParser(InputSource& input, std::shared_ptr<SAXInterface> handler)
    : m_handler(std::move(handler)),
      m_input(&input)
{}

AbstractXMLParser::~AbstractXMLParser() = default;

void AbstractXMLParser::LoadXSDString(const VString& xsdText, const VString& id)
{
    RequireIdle();
    StringInputSource source(xsdText, id, false);
    LoadXSDSource(source);
}

void AbstractXMLParser::LoadXSDFile(const VString& fileName)
{
    RequireIdle();
    LoadXSDString(VFile::LoadTextFile(fileName, true), fileName);
}

void AbstractXMLParser::Reload(InputSource& input, std::shared_ptr<SAXInterface> handler)
{
    RequireIdle();
    m_input = &input;
    m_handler = std::move(handler);
}

void AbstractXMLParser::GetCurrentLocation(int&, int&) {}
