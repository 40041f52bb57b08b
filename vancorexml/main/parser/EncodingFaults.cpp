#include "vancorexml/main/parser/EncodingFaults.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancoreplatform/NearestName.h"
#include "vancorexml/main/parser/ForeignFormat.h"
#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/XercesBuffer.h"

namespace {

VString ToVString(std::string_view utf8)
{
    return VString::fromUtf8(utf8.data(), utf8.size());
}

// Returns "E9" or "E2 82".
VString FormatBytes(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += text.empty() ? "" : " ";
        text += digits[value >> 4];
        text += digits[value & 0xF];
    }
    return VString::fromStdString(text);
}

// Returns "the byte E9" or "the bytes E2 82".
VString NameBytes(std::string_view bytes)
{
    return (bytes.size() == 1 ? "the byte " : "the bytes ") + FormatBytes(bytes);
}

// The usual encodings of documents that are not in Unicode.
std::vector<VString> ListEncodings()
{
    return {"ISO-8859-1",
        "ISO-8859-2",
        "ISO-8859-15",
        "windows-1250",
        "windows-1251",
        "windows-1252",
        "Shift_JIS",
        "EUC-JP",
        "EUC-KR",
        "GB18030",
        "Big5",
        "KOI8-R"};
}

// Windows-1252 has characters where ISO-8859-1 has control characters.
const char* GuessEncoding(std::string_view bytes)
{
    const auto first = static_cast<unsigned char>(bytes.front());
    return first >= 0x80 && first < 0xA0 ? "windows-1252" : "ISO-8859-1";
}

VString DescribeBytes(const VIO::BadBytes& bad)
{
    const VString sentence = NameBytes(bad.bytes) + (bad.bytes.size() == 1 ? " is" : " are");
    if (bad.isAtEnd)
        return sentence + " only the start of a character; the end of the document is missing";
    if (bad.encoding == "UTF-8") {
        return sentence + " not UTF-8; save the document as UTF-8, or declare its encoding, such as " +
            GuessEncoding(bad.bytes);
    }
    if (bad.encoding.startsWith("UTF-"))
        return sentence + " not " + bad.encoding + "; the file is damaged, so save the document again";
    return sentence + " not " + bad.encoding + "; save the document as UTF-8, or declare its true encoding";
}

// Sets the range of the bytes from `start` to before `end` in the text.
void SetRange(ParseDiagnostic& diagnostic, std::string_view text, std::size_t start, std::size_t end)
{
    PositionCounter counter(text);
    diagnostic.start = counter.At(start);
    diagnostic.end = counter.At(end);
}

// Makes a diagnostic about the name of the encoding in the XML declaration of `text`.
ParseDiagnostic DescribeName(std::string_view text, std::string_view name, DiagnosticCode code)
{
    ParseDiagnostic diagnostic;
    diagnostic.code = code;
    diagnostic.value = ToVString(name);
    const auto start = static_cast<std::size_t>(name.data() - text.data());
    SetRange(diagnostic, text, start, start + name.size());
    return diagnostic;
}

ParseDiagnostic DescribeUnknown(std::string_view text, std::string_view name)
{
    ParseDiagnostic diagnostic = DescribeName(text, name, DiagnosticCode::UnknownEncoding);
    diagnostic.message = "the encoding '" + diagnostic.value + "' is unknown";
    return diagnostic;
}

// The name of the encoding to declare.
VString NameToDeclare(const FileEncoding& encoding)
{
    for (const char* family : {"UTF-16", "UTF-32"}) {
        if (encoding.name.startsWith(family))
            return family;
    }
    return encoding.name;
}

}  // namespace

ParseDiagnostic EncodingFaults::Describe(const VIO::BadBytes& badBytes)
{
    ParseDiagnostic diagnostic;
    const SourcePosition place = PositionCounter(badBytes.text).At(badBytes.textOffset);
    diagnostic.code = DiagnosticCode::BadBytes;
    diagnostic.message = DescribeBytes(badBytes);
    // Each bad byte counts as a column, unless one character stands for all of them.
    const bool isReplaced = badBytes.text.substr(badBytes.textOffset, badBytes.shownLength) != badBytes.bytes;
    diagnostic.start = place;
    diagnostic.end = {place.line, place.column + (isReplaced ? 1 : badBytes.bytes.size())};

    const std::string_view before = std::string_view(badBytes.text).substr(0, badBytes.textOffset);
    const std::optional<std::string_view> name = FindDeclaredEncoding(before);
    if (name && badBytes.encoding == "UTF-8" &&
        CheckEncodingDeclaration(before, {badBytes.encoding, false}) == EncodingDeclaration::Unknown) {
        diagnostic = DescribeUnknown(before, *name);
        diagnostic.suggestion = FindNearestName(diagnostic.value, ListEncodings());
        diagnostic.message += diagnostic.suggestion.IsEmpty()
            ? "; save the document as UTF-8, or declare its encoding, such as " + VString(GuessEncoding(badBytes.bytes))
            : "; did you mean '" + diagnostic.suggestion + "'?";
        const bool isOne = badBytes.bytes.size() == 1;
        diagnostic.related = {
            NameBytes(badBytes.bytes) + (isOne ? ", which is not UTF-8, stands" : ", which are not UTF-8, stand"),
            place};
    }
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    const std::string format = RecognizeForeignFormat(badBytes.text);
    if (!format.empty()) {
        diagnostic = ParseDiagnostic();
        diagnostic.severity = ParseDiagnostic::Severity::FatalError;
        diagnostic.code = DiagnosticCode::NotXml;
        diagnostic.message = "the file is " + VString::fromStdString(format) + ", not XML";
        diagnostic.start = {1, 1};
    }
    return diagnostic;
}

std::optional<ParseDiagnostic> EncodingFaults::CheckDeclaration(std::string_view utf8, const FileEncoding& encoding)
{
    constexpr std::string_view Mark = "\xEF\xBB\xBF";
    if (utf8.starts_with(Mark)) {
        ParseDiagnostic diagnostic;
        diagnostic.severity = ParseDiagnostic::Severity::Warning;
        diagnostic.code = DiagnosticCode::TextOutsideRoot;
        diagnostic.message = "a second byte order mark (U+FEFF) stands at the start of the document; remove it";
        SetRange(diagnostic, utf8, 0, Mark.size());
        return diagnostic;
    }
    const EncodingDeclaration declaration = CheckEncodingDeclaration(utf8, encoding);
    if (declaration == EncodingDeclaration::Right)
        return std::nullopt;
    const std::string_view name = FindDeclaredEncoding(utf8).value();
    const VString actual = NameToDeclare(encoding);
    if (declaration == EncodingDeclaration::Unknown) {
        ParseDiagnostic diagnostic = DescribeUnknown(utf8, name);
        diagnostic.suggestion = actual;
        diagnostic.message += "; the document is " + actual + ", so write '" + actual + "'";
        return diagnostic;
    }
    ParseDiagnostic diagnostic = DescribeName(utf8, name, DiagnosticCode::WrongEncoding);
    if (IsUtf8(encoding))
        diagnostic.severity = ParseDiagnostic::Severity::Warning;
    diagnostic.suggestion = actual;
    diagnostic.message = "the document declares the encoding '" + diagnostic.value + "', but it is " + actual +
        "; write '" + actual + "'";
    return diagnostic;
}

std::optional<ParseDiagnostic> EncodingFaults::Find(const XercesInputSource& source)
{
    const bool usesDeclaration =
        !xercesc::XMLString::equals(source.Get().getEncoding(), xercesc::XMLUni::fgUTF8EncodingString);
    std::optional<ParseDiagnostic> found;
    try {
        const DecodedText decoded = DecodeToUtf8(std::string(source.View()), VString(), usesDeclaration);
        if (usesDeclaration)
            found = CheckDeclaration(decoded.text, decoded.encoding);
    } catch (const VIO::DecodingException& exception) {
        found = Describe(exception.GetBadBytes());
    } catch (const VIO::Exception&) {
        return std::nullopt;  // the text is too long
    }
    if (!found)
        return found;
    found->severity = ParseDiagnostic::Severity::FatalError;
    if (const std::shared_ptr<SourceMap>& map = source.GetSourceMap()) {
        found->start = map->Map(found->start);
        found->end = map->Map(found->end);
        if (found->related)
            found->related->start = map->Map(found->related->start);
    }
    return found;
}

bool EncodingFaults::EndsWithinCharacter(std::string_view bytes)
{
    using namespace std::string_view_literals;
    const auto startsWithOneOf = [bytes](std::initializer_list<std::string_view> starts) {
        return std::any_of(
            starts.begin(), starts.end(), [&](std::string_view start) { return bytes.starts_with(start); });
    };
    // The byte order mark, or "<". The mark of UTF-32LE begins with the mark of UTF-16LE.
    if (startsWithOneOf({"\0\0\xFE\xFF"sv, "\xFF\xFE\0\0"sv, "\0\0\0<"sv, "<\0\0\0"sv}))
        return bytes.size() % 4 != 0;
    if (startsWithOneOf({"\xFE\xFF"sv, "\xFF\xFE"sv}) || FindUnmarkedUtf16(bytes))
        return bytes.size() % 2 != 0;
    // A document ends with ">" or white space. Encodings that write "<" in another byte, such as EBCDIC, have no
    // incomplete characters.
    const bool isEnd = bytes.empty() || std::string_view("> \t\r\n").find(bytes.back()) != std::string_view::npos;
    if (isEnd || !bytes.starts_with('<'))
        return false;
    try {
        DecodeToUtf8(std::string(bytes), VString(), true);
    } catch (const VIO::DecodingException& exception) {
        return exception.GetBadBytes().isAtEnd;
    } catch (const VIO::Exception&) {
        // The text is too long for the decoder.
    }
    return false;
}
