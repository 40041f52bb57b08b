#include "vancorexml/main/parser/XercesXMLParser.h"

#include <utility>

#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/SAXAdapter.h"
#include "vancorexml/main/parser/XercesXMLParserImpl.h"

XercesXMLParser::XercesXMLParser(InputSource& input, std::shared_ptr<SAXInterface> handler)
    : AbstractXMLParser(input, std::move(handler))
{}

XercesXMLParser::~XercesXMLParser() = default;

std::unique_ptr<XercesXMLParser> XercesXMLParser::Create(InputSource& input, std::shared_ptr<SAXInterface> handler)
{
    auto builder = std::make_shared<SAXAdapter>(handler);
    return std::make_unique<XercesXMLParserImpl>(input, std::move(handler), std::move(builder));
}

void XercesXMLParser::LoadXSDResource(const VString& resourceName)
{
    LoadXSDString(UTF8StringVResource(resourceName).GetString(), resourceName);
}
