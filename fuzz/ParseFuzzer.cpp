// Parses arbitrary bytes. The tree is whole, its positions are in order, and a parser that has parsed other documents
// before gives the result of a new one.
#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static DOMParser used;
    used.SetEnableLineNumbersOnElements(true);
    const std::vector<unsigned char> bytes(data, data + size);
    const auto document = used.ParseXmlBytes(bytes);
    RequireLinks(*document);
    RequirePositionsInOrder(*document);

    DOMParser fresh;
    const auto expected = fresh.ParseXmlBytes(bytes);
    Require(*document == *expected, "a used parser builds the tree of a new one");
    Require(document->GetErrors() == expected->GetErrors(), "a used parser reports the errors of a new one");
    Require(used.GetDiagnostics() == fresh.GetDiagnostics(), "a used parser reports the diagnostics of a new one");
    return 0;
}
