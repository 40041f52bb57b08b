#include "vancorexml/main/parser/XercesTreeParser.h"

#include <utility>

#include "vancorexml/main/parser/XercesXMLParserImpl.h"

XercesTreeParser::~XercesTreeParser() = default;

std::unique_ptr<XercesTreeParser> XercesTreeParser::Create(InputSource& input, std::shared_ptr<TreeBuilder> builder)
{
    return std::make_unique<XercesXMLParserImpl>(input, nullptr, std::move(builder));
}
