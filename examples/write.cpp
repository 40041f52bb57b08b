#include <iostream>

#include "vancorexml/main/parser/XMLStringFormatter.h"

int main()
{
    XMLStringFormatter writer;
    writer.OutputHeader();
    writer.OutputComment("made by write.cpp");
    {
        // An Indenter writes the start tag now, and the end tag at the end of its block.
        const XMLFormatter::Indenter shop(writer, "shop", {{"currency", "EUR"}});
        writer.OutputTag("item", {{"name", "tea"}, {"price", XMLFormatter::FormatDoubleAttribute(2.5)}});
        writer.OutputContentTag("note", AttributeMap(), "Salt & sand: 2 < 3");
    }
    std::cout << writer.GetOutput();
}
