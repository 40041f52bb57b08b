// Formats a document. Formatting again changes nothing, and Qt reads the same content before and after.
// Input: a document, and the options as a second part.
#include <optional>

#include "fuzz/FuzzSupport.h"
#include "tests/editing/IndependentReading.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const std::string text = parts.Next();
    const std::string flags = parts.Next();
    XMLSourceFormatter::Options options;
    options.isStrict = flags.find('s') != std::string::npos;
    options.hasAllCharacters = flags.find('c') == std::string::npos;

    XMLSourceFormatter formatter(options);
    const std::optional<std::string> formatted = formatter.Format(text, "input");
    if (!formatted)
        return 0;
    Require(formatter.Format(*formatted, "formatted") == formatted, "formatting is idempotent");
    Require(XMLComparison::AreEqual(text, *formatted), "the formatted document has the same content");
    // Qt does not read some documents, such as those of XML 1.1 and those with colons in front of names.
    const IndependentReading before = ReadIndependently(text);
    if (!before.error.empty())
        return 0;
    const IndependentReading after = ReadIndependently(*formatted);
    Require(after.error.empty(), "Qt reads the formatted document");
    Require(before.content == after.content, "Qt finds the same content in the formatted document");
    return 0;
}
