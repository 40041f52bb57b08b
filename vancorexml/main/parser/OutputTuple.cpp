#include "vancorexml/main/parser/OutputTuple.h"

#include <cstddef>

#include "vancoredata/Tuple.h"
#include "vancorexml/main/parser/XMLFormatter.h"

void OutputTuple(XMLFormatter& formatter, const Tuple& tuple)
{
    const AttributeMap noAttributes;
    const XMLFormatter::Indenter indenter(formatter, u"tuple", noAttributes);
    for (std::size_t i = 0; i != tuple.GetSize(); ++i) {
        formatter.OutputContentTag(
            u"value", noAttributes, XMLFormatter::FormatDataValueAttribute(tuple.GetDataValue(i)));
    }
}
