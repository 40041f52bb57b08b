// Formats a document. Formatting again changes nothing, and Qt reads the same content before and after. Comments,
// processing instructions and CDATA sections keep all bytes.
// Input: a document, and the options as a second part.
#include <optional>
#include <string_view>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "tests/editing/IndependentReading.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"

namespace {

bool IsBlank(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

// Returns the markup that the formatter keeps: comments, processing instructions and CDATA sections, found by their
// spelling alone. Returns nothing of a document with a document type, where they may stand in quotes.
std::vector<std::string_view> FindKeptMarkup(std::string_view text)
{
    std::vector<std::string_view> found;
    if (text.find("<!DOCTYPE") != std::string_view::npos)
        return found;
    constexpr std::string_view Kinds[][2] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    // No attribute value of a well-formed document contains "<".
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string_view::npos; ++at) {
        for (const auto& [begin, end] : Kinds) {
            if (text.substr(at, begin.size()) != begin)
                continue;
            const std::size_t length = text.find(end, at + begin.size()) + end.size() - at;
            const bool isDeclaration = text.substr(at, 5) == "<?xml" && IsBlank(text[at + 5]);
            if (!isDeclaration)  // the declaration changes
                found.push_back(text.substr(at, length));
            at += length - 1;
            break;
        }
    }
    return found;
}

bool IsSubsequence(const std::vector<std::string_view>& part, const std::vector<std::string_view>& whole)
{
    auto next = part.begin();
    for (const std::string_view i : whole)
        next += next != part.end() && *next == i ? 1 : 0;
    return next == part.end();
}

}  // namespace

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
    // A long text may become another CDATA section.
    Require(IsSubsequence(FindKeptMarkup(text), FindKeptMarkup(*formatted)), "the bytes of kept markup stay");
    // Qt does not read some documents, such as those of XML 1.1 and those with colons in front of names.
    const IndependentReading before = ReadIndependently(text);
    if (!before.error.empty())
        return 0;
    const IndependentReading after = ReadIndependently(*formatted);
    Require(after.error.empty(), "Qt reads the formatted document");
    Require(before.content == after.content, "Qt finds the same content in the formatted document");
    return 0;
}
