#include "vancorexml/main/parser/ReferenceSyntax.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "vancoreplatform/NearestName.h"
#include "vancorexml/main/parser/XMLCharacters.h"
#include "vansys/TextHash.h"

namespace {

struct HtmlEntity {
    std::string_view name;
    std::uint32_t character;
};

// The entities that HTML 4 declares and XML does not, sorted by name.
constexpr HtmlEntity htmlEntities[] = {
    {"AElig", 198},
    {"Aacute", 193},
    {"Acirc", 194},
    {"Agrave", 192},
    {"Alpha", 913},
    {"Aring", 197},
    {"Atilde", 195},
    {"Auml", 196},
    {"Beta", 914},
    {"Ccedil", 199},
    {"Chi", 935},
    {"Dagger", 8225},
    {"Delta", 916},
    {"ETH", 208},
    {"Eacute", 201},
    {"Ecirc", 202},
    {"Egrave", 200},
    {"Epsilon", 917},
    {"Eta", 919},
    {"Euml", 203},
    {"Gamma", 915},
    {"Iacute", 205},
    {"Icirc", 206},
    {"Igrave", 204},
    {"Iota", 921},
    {"Iuml", 207},
    {"Kappa", 922},
    {"Lambda", 923},
    {"Mu", 924},
    {"Ntilde", 209},
    {"Nu", 925},
    {"OElig", 338},
    {"Oacute", 211},
    {"Ocirc", 212},
    {"Ograve", 210},
    {"Omega", 937},
    {"Omicron", 927},
    {"Oslash", 216},
    {"Otilde", 213},
    {"Ouml", 214},
    {"Phi", 934},
    {"Pi", 928},
    {"Prime", 8243},
    {"Psi", 936},
    {"Rho", 929},
    {"Scaron", 352},
    {"Sigma", 931},
    {"THORN", 222},
    {"Tau", 932},
    {"Theta", 920},
    {"Uacute", 218},
    {"Ucirc", 219},
    {"Ugrave", 217},
    {"Upsilon", 933},
    {"Uuml", 220},
    {"Xi", 926},
    {"Yacute", 221},
    {"Yuml", 376},
    {"Zeta", 918},
    {"aacute", 225},
    {"acirc", 226},
    {"acute", 180},
    {"aelig", 230},
    {"agrave", 224},
    {"alefsym", 8501},
    {"alpha", 945},
    {"and", 8743},
    {"ang", 8736},
    {"aring", 229},
    {"asymp", 8776},
    {"atilde", 227},
    {"auml", 228},
    {"bdquo", 8222},
    {"beta", 946},
    {"brvbar", 166},
    {"bull", 8226},
    {"cap", 8745},
    {"ccedil", 231},
    {"cedil", 184},
    {"cent", 162},
    {"chi", 967},
    {"circ", 710},
    {"clubs", 9827},
    {"cong", 8773},
    {"copy", 169},
    {"crarr", 8629},
    {"cup", 8746},
    {"curren", 164},
    {"dArr", 8659},
    {"dagger", 8224},
    {"darr", 8595},
    {"deg", 176},
    {"delta", 948},
    {"diams", 9830},
    {"divide", 247},
    {"eacute", 233},
    {"ecirc", 234},
    {"egrave", 232},
    {"empty", 8709},
    {"emsp", 8195},
    {"ensp", 8194},
    {"epsilon", 949},
    {"equiv", 8801},
    {"eta", 951},
    {"eth", 240},
    {"euml", 235},
    {"euro", 8364},
    {"exist", 8707},
    {"fnof", 402},
    {"forall", 8704},
    {"frac12", 189},
    {"frac14", 188},
    {"frac34", 190},
    {"frasl", 8260},
    {"gamma", 947},
    {"ge", 8805},
    {"hArr", 8660},
    {"harr", 8596},
    {"hearts", 9829},
    {"hellip", 8230},
    {"iacute", 237},
    {"icirc", 238},
    {"iexcl", 161},
    {"igrave", 236},
    {"image", 8465},
    {"infin", 8734},
    {"int", 8747},
    {"iota", 953},
    {"iquest", 191},
    {"isin", 8712},
    {"iuml", 239},
    {"kappa", 954},
    {"lArr", 8656},
    {"lambda", 955},
    {"lang", 9001},
    {"laquo", 171},
    {"larr", 8592},
    {"lceil", 8968},
    {"ldquo", 8220},
    {"le", 8804},
    {"lfloor", 8970},
    {"lowast", 8727},
    {"loz", 9674},
    {"lrm", 8206},
    {"lsaquo", 8249},
    {"lsquo", 8216},
    {"macr", 175},
    {"mdash", 8212},
    {"micro", 181},
    {"middot", 183},
    {"minus", 8722},
    {"mu", 956},
    {"nabla", 8711},
    {"nbsp", 160},
    {"ndash", 8211},
    {"ne", 8800},
    {"ni", 8715},
    {"not", 172},
    {"notin", 8713},
    {"nsub", 8836},
    {"ntilde", 241},
    {"nu", 957},
    {"oacute", 243},
    {"ocirc", 244},
    {"oelig", 339},
    {"ograve", 242},
    {"oline", 8254},
    {"omega", 969},
    {"omicron", 959},
    {"oplus", 8853},
    {"or", 8744},
    {"ordf", 170},
    {"ordm", 186},
    {"oslash", 248},
    {"otilde", 245},
    {"otimes", 8855},
    {"ouml", 246},
    {"para", 182},
    {"part", 8706},
    {"permil", 8240},
    {"perp", 8869},
    {"phi", 966},
    {"pi", 960},
    {"piv", 982},
    {"plusmn", 177},
    {"pound", 163},
    {"prime", 8242},
    {"prod", 8719},
    {"prop", 8733},
    {"psi", 968},
    {"rArr", 8658},
    {"radic", 8730},
    {"rang", 9002},
    {"raquo", 187},
    {"rarr", 8594},
    {"rceil", 8969},
    {"rdquo", 8221},
    {"real", 8476},
    {"reg", 174},
    {"rfloor", 8971},
    {"rho", 961},
    {"rlm", 8207},
    {"rsaquo", 8250},
    {"rsquo", 8217},
    {"sbquo", 8218},
    {"scaron", 353},
    {"sdot", 8901},
    {"sect", 167},
    {"shy", 173},
    {"sigma", 963},
    {"sigmaf", 962},
    {"sim", 8764},
    {"spades", 9824},
    {"sub", 8834},
    {"sube", 8838},
    {"sum", 8721},
    {"sup", 8835},
    {"sup1", 185},
    {"sup2", 178},
    {"sup3", 179},
    {"supe", 8839},
    {"szlig", 223},
    {"tau", 964},
    {"there4", 8756},
    {"theta", 952},
    {"thetasym", 977},
    {"thinsp", 8201},
    {"thorn", 254},
    {"tilde", 732},
    {"times", 215},
    {"trade", 8482},
    {"uArr", 8657},
    {"uacute", 250},
    {"uarr", 8593},
    {"ucirc", 251},
    {"ugrave", 249},
    {"uml", 168},
    {"upsih", 978},
    {"upsilon", 965},
    {"uuml", 252},
    {"weierp", 8472},
    {"xi", 958},
    {"yacute", 253},
    {"yen", 165},
    {"yuml", 255},
    {"zeta", 950},
    {"zwj", 8205},
    {"zwnj", 8204},
};
static_assert(std::is_sorted(std::begin(htmlEntities),
    std::end(htmlEntities),
    [](const HtmlEntity& a, const HtmlEntity& b) { return a.name < b.name; }));

constexpr std::string_view predefinedNames[] = {"lt", "gt", "amp", "apos", "quot"};

constexpr std::uint32_t BeyondUnicode = 0x110000;

bool IsPredefined(std::string_view name)
{
    return std::find(std::begin(predefinedNames), std::end(predefinedNames), name) != std::end(predefinedNames);
}

// Returns null if HTML does not declare the entity.
const HtmlEntity* FindHtmlEntity(std::string_view name)
{
    const HtmlEntity* const found = std::lower_bound(std::begin(htmlEntities),
        std::end(htmlEntities),
        name,
        [](const HtmlEntity& entity, std::string_view searched) { return entity.name < searched; });
    return found != std::end(htmlEntities) && found->name == name ? found : nullptr;
}

std::string ReferenceTo(std::uint32_t character)
{
    return "&#" + std::to_string(character) + ";";
}

bool IsDigit(char byte, bool isHexadecimal)
{
    const bool isDecimal = byte >= '0' && byte <= '9';
    return isDecimal || (isHexadecimal && ((byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F')));
}

bool IsAlphanumeric(char byte)
{
    return IsDigit(byte, true) || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

// Reads the digits of a reference to a character. Numbers that are too large become BeyondUnicode.
std::uint32_t ReadNumber(std::string_view digits, bool isHexadecimal)
{
    std::uint32_t number = 0;
    const std::from_chars_result result =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, isHexadecimal ? 16 : 10);
    return result.ec == std::errc() ? std::min(number, BeyondUnicode) : BeyondUnicode;
}

std::size_t FailNumber(SyntaxText& text, TextRange range, const std::string& message)
{
    text.Fail(DiagnosticCode::BadCharacterReference, range, message).value =
        VString::fromStdString(std::string(text.Get(range)));
    return SyntaxText::Stop;
}

// `range` is a reference to the first half of a surrogate pair or to the second half.
std::size_t FailSurrogate(SyntaxText& text, TextRange range, std::uint32_t half)
{
    std::string message =
        text.Quote(range) + " is only one half of a character; write the number of the whole character";
    std::string suggestion;
    const std::string_view next = text.From(range.end);
    const bool isHexadecimal = next.starts_with("&#x");
    const std::size_t begin = isHexadecimal ? 3 : 2;
    const std::size_t end = next.substr(0, 20).find(';');
    if (half < 0xDC00 && next.starts_with("&#") && end != std::string_view::npos) {
        const std::uint32_t second = ReadNumber(next.substr(begin, end - begin), isHexadecimal);
        if (second >= 0xDC00 && second <= 0xDFFF) {
            suggestion = ReferenceTo(0x10000 + ((half - 0xD800) << 10) + (second - 0xDC00));
            range.end += end + 1;
            message = text.Quote(range) + " must be written as one reference, " + Quoted(suggestion);
        }
    }
    FailNumber(text, range, message);
    text.Fault()->suggestion = VString::fromStdString(suggestion);
    return SyntaxText::Stop;
}

std::size_t FailBareAmpersand(SyntaxText& text, std::size_t at)
{
    text.Fail(DiagnosticCode::BareAmpersand, {at, at + 1}, "the text '&' must be written as '&amp;'").value = "&";
    return SyntaxText::Stop;
}

// `range` is the reference from "&" to ";".
std::size_t FailUnknownEntity(SyntaxText& text, const DeclaredEntities& entities, TextRange range)
{
    const std::string name(text.Get({range.start + 1, range.end - 1}));
    std::vector<VString> known;
    for (const std::string_view predefined : predefinedNames)
        known.push_back(VString::fromStdString(std::string(predefined)));
    for (const auto& declared : entities.declarations)
        known.push_back(VString::fromStdString(std::string(declared.first)));
    const VString nearest = FindNearestName(VString::fromStdString(name), known);
    std::string message = "the entity " + text.Quote({range.start + 1, range.end - 1});
    std::string suggestion;
    if (const HtmlEntity* const html = FindHtmlEntity(name)) {
        suggestion = ReferenceTo(html->character);
        message += " exists only in HTML; write " + Quoted(suggestion);
    } else if (!nearest.IsEmpty()) {
        suggestion = "&" + nearest.toStdString() + ";";
        message += " is not declared; did you mean " + Quoted(suggestion) + "?";
    } else {
        message += " is not declared; declare it, or write '&amp;' if '&' is text";
    }
    SyntaxFault& fault = text.Fail(DiagnosticCode::UnknownEntity, range, message);
    fault.value = VString::fromStdString(std::string(text.Get(range)));
    fault.suggestion = VString::fromStdString(suggestion);
    return SyntaxText::Stop;
}

// `range` is the reference from "&" to the end of its name.
std::size_t FailUnclosedReference(SyntaxText& text, TextRange range)
{
    const std::string_view written = text.Get(range);
    std::string suggestion = std::string(written) + ";";
    std::string message = "the reference " + text.Quote(range) + " must end with ';'";
    if (const HtmlEntity* const html = FindHtmlEntity(written.substr(1))) {
        suggestion = ReferenceTo(html->character);
        message = "the reference " + text.Quote(range) + " exists only in HTML; write " + Quoted(suggestion);
    }
    SyntaxFault& fault = text.Fail(DiagnosticCode::UnclosedReference, range, message);
    fault.value = VString::fromStdString(std::string(written));
    fault.suggestion = VString::fromStdString(suggestion);
    return SyntaxText::Stop;
}

// Returns the name in the first reference to an entity at or after `at` in the text of an entity, and moves `at` behind
// it. Returns an empty name at the end.
std::string_view NextEntity(const SyntaxText& text, std::size_t& at, std::size_t end)
{
    static constexpr ByteSet Ampersand("&");
    for (at = text.FindAny(Ampersand, at, end); at < end; at = text.FindAny(Ampersand, at, end)) {
        const std::size_t start = ++at;
        if (!text.IsNameStart(start))
            continue;
        at = text.SkipName(start);
        if (text.At(at) == ';')
            return text.Get({start, at});
    }
    return std::string_view();
}

// Names the entities of a cycle: "'b', which contains 'c', which contains 'a'".
std::string NameCycle(const SyntaxText& text, const DeclaredEntities& entities, std::string_view first)
{
    constexpr int MostNames = 4;
    std::string names;
    int count = 0;
    for (std::string_view name = first;; ++count) {
        name = entities.declarations.at(name).recursion;
        if (name == first)
            break;
        if (count < MostNames)
            names += text.Quote(entities.declarations.at(name).name) + ", which contains ";
    }
    if (count > MostNames)
        names += "others, and so on to ";
    return count == 0 ? "itself" : names + text.Quote(entities.declarations.at(first).name);
}

// `range` is the reference from "&" to ";". It leads to an entity that contains itself.
std::size_t FailRecursion(SyntaxText& text, const DeclaredEntities& entities, TextRange range)
{
    std::unordered_set<std::string_view, TextHash> passed;
    std::string_view first = text.Get({range.start + 1, range.end - 1});
    while (passed.insert(first).second)
        first = entities.declarations.at(first).recursion;
    const DeclaredEntity& entity = entities.declarations.at(first);
    SyntaxFault& fault = text.Fail(DiagnosticCode::RecursiveEntity,
        entity.name,
        "entity " + text.Quote(entity.name) + " contains " + NameCycle(text, entities, first));
    fault.value = VString::fromStdString(std::string(first));
    fault.relatedStart = range.start;
    fault.relatedMessage = VString::fromStdString("the reference " + text.Quote(range) + " stands");
    return SyntaxText::Stop;
}

std::size_t ScanCharacterReference(SyntaxText& text, std::size_t at)
{
    const bool isHexadecimal = text.Has("&#x", at);
    const std::size_t start = at + (isHexadecimal || text.Has("&#X", at) ? 3 : 2);
    std::size_t digitsEnd = start;
    while (IsDigit(text.At(digitsEnd), isHexadecimal))
        ++digitsEnd;
    std::size_t end = digitsEnd;
    while (IsAlphanumeric(text.At(end)))
        ++end;
    const bool isClosed = text.At(end) == ';';
    const TextRange range{at, isClosed ? end + 1 : end};
    if (text.Has("&#X", at))
        return FailNumber(text, range, "the 'x' in " + text.Quote(range) + " must be a small letter");
    if (start == end) {
        return FailNumber(text,
            range,
            text.Quote(range) + " has no number; write '&amp;#' if it is text, or a number such as '&#65;'");
    }
    if (digitsEnd < end) {
        const std::string kind =
            isHexadecimal ? "hexadecimal digits (0-9, a-f)" : "digits; write '&#x' before hexadecimal digits";
        return FailNumber(text, range, text.Quote(range) + " is not a number: only " + kind);
    }
    if (!isClosed)
        return FailUnclosedReference(text, range);
    const std::uint32_t number = ReadNumber(text.Get({start, end}), isHexadecimal);
    if (number >= BeyondUnicode)
        return FailNumber(text, range, text.Quote(range) + " is not a character; the last one is '&#x10FFFF;'");
    if (number >= 0xD800 && number <= 0xDFFF)
        return FailSurrogate(text, range, number);
    if (!text.Allows(number, true)) {
        return FailNumber(text,
            range,
            "the character " + DescribeCharacter(number).toStdString() + " (" + text.Quote(range) +
                ") is not allowed in XML; remove it");
    }
    return range.end;
}

}  // namespace

void FindRecursion(const SyntaxText& text, DeclaredEntities& entities)
{
    struct Step {
        DeclaredEntity& entity;
        std::size_t at;  // in its text
    };
    std::unordered_set<std::string_view, TextHash> visited;
    std::unordered_set<std::string_view, TextHash> active;
    for (auto& [firstName, first] : entities.declarations) {
        std::vector<Step> path;
        const auto enter = [&](std::string_view name, DeclaredEntity& entity) {
            // In a comment or another section, "&" begins no reference.
            const std::string_view content = text.Get(entity.text);
            const bool hasSections =
                content.find("<!") != std::string_view::npos || content.find("<?") != std::string_view::npos;
            visited.insert(name);
            active.insert(name);
            path.push_back({entity, hasSections ? entity.text.end : entity.text.start});
        };
        if (!visited.contains(firstName))
            enter(firstName, first);
        while (!path.empty()) {
            Step& step = path.back();
            const std::string_view name = NextEntity(text, step.at, step.entity.text.end);
            const auto next = entities.declarations.find(name);
            if (name.empty()) {
                active.erase(text.Get(step.entity.name));
                path.pop_back();
            } else if (next == entities.declarations.end()) {
                continue;
            } else if (active.contains(name) || !next->second.recursion.empty()) {
                step.entity.recursion = next->first;
                for (std::size_t i = 0; i + 1 < path.size(); ++i)
                    path[i].entity.recursion = text.Get(path[i + 1].entity.name);
                path.clear();
                active.clear();
            } else if (!visited.contains(name)) {
                enter(next->first, next->second);
            }
        }
    }
}

std::size_t ScanReference(SyntaxText& text, const DeclaredEntities& entities, std::size_t at)
{
    if (text.Has("&#", at))
        return ScanCharacterReference(text, at);
    const std::size_t end = text.IsNameStart(at + 1) ? text.SkipName(at + 1) : at + 1;
    const std::string_view name = text.Get({at + 1, end});
    if (name.empty())
        return FailBareAmpersand(text, at);
    const auto declared = entities.declarations.find(name);
    const bool isDeclared = declared != entities.declarations.end();
    const bool isKnown = isDeclared || IsPredefined(name);
    if (text.At(end) != ';') {
        // In "?a=1&lt=2" the "&" is part of an address, although "lt" is an entity.
        const bool isReference = (isKnown || FindHtmlEntity(name)) && text.At(end) != '=';
        return isReference ? FailUnclosedReference(text, {at, end}) : FailBareAmpersand(text, at);
    }
    if (isDeclared && !declared->second.recursion.empty())
        return FailRecursion(text, entities, {at, end + 1});
    return isKnown || entities.mayBeIncomplete ? end + 1 : FailUnknownEntity(text, entities, {at, end + 1});
}
