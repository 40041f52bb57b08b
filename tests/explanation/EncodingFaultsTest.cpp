// The diagnostics of bytes that the parser cannot read.
#include <memory>
#include <string>
#include <vector>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

using namespace std::string_literals;

namespace {

struct UnreadableRow {
    const char* name;
    std::string bytes;
    const char* expected;
};

std::string FormatPlace(SourcePosition position)
{
    return std::to_string(position.line) + ":" + std::to_string(position.column);
}

std::string DeclareEncoding(const std::string& encoding)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>\n";
}

// Returns one line for each diagnostic: "2:3-2:4 code: message (related on 1:2)".
std::string DiagnoseBytes(const std::string& bytes)
{
    DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    EXPECT_EQ(document->HasErrors(), !parser.GetDiagnostics().empty());
    std::string text;
    for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
        EXPECT_EQ(diagnostic.severity, ParseDiagnostic::Severity::FatalError);
        text += FormatPlace(diagnostic.start) + "-" + FormatPlace(diagnostic.end) + " " +
            GetDiagnosticName(diagnostic.code) + ": " + diagnostic.message.toStdString();
        if (diagnostic.related)
            text += " (" + diagnostic.related->message.toStdString() + " on " + FormatPlace(diagnostic.related->start) +
                ")";
        text += "\n";
    }
    return text;
}

#define SAVE_OR_DECLARE "; save the document as UTF-8, or declare its encoding, such as "

const UnreadableRow unreadableRows[] = {
    {"Latin1",
        "<a>\n" + std::string(100, 'x') + "\n<b>Andr\xE9</b></a>",
        "3:8-3:9 bad-bytes: the byte E9 is not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"FarBehindTheStart",
        "<a>\n" + std::string(100000, 'x') + "\nö\xE9</a>",
        "3:2-3:3 bad-bytes: the byte E9 is not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"Windows1252", "<a>\x96</a>", "1:4-1:5 bad-bytes: the byte 96 is not UTF-8" SAVE_OR_DECLARE "windows-1252\n"},
    {"InATagName", "<\xE9t\xE9/>", "1:2-1:3 bad-bytes: the byte E9 is not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"BehindAMark", "\uFEFF<a>\xE9</a>", "1:4-1:5 bad-bytes: the byte E9 is not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"BehindAColonName",
        "<a :b='1'>\xE9</a>",
        "1:11-1:12 bad-bytes: the byte E9 is not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"PartOfACharacter",
        "<a>\xE2\x82</a>",
        "1:4-1:6 bad-bytes: the bytes E2 82 are not UTF-8" SAVE_OR_DECLARE "ISO-8859-1\n"},
    {"CutOffBehindTheRoot",
        "<a/>\n\xC3",
        "2:1-2:2 bad-bytes: the byte C3 is only the start of a character; the end of the document is missing\n"},
    {"Ascii",
        DeclareEncoding("US-ASCII") + "<a>\xEB</a>",
        "2:4-2:5 bad-bytes: the byte EB is not US-ASCII; save the document as UTF-8, or declare its true encoding\n"},
    {"UnknownEncoding",
        DeclareEncoding("UFT-8") + "<a/>",
        "1:31-1:36 unknown-encoding: the encoding 'UFT-8' is unknown; the document is UTF-8, so write 'UTF-8'\n"},
    {"UnknownEncodingAndBadBytes",
        DeclareEncoding("Shift_JSI") + "<a>\n\xE9</a>",
        "1:31-1:40 unknown-encoding: the encoding 'Shift_JSI' is unknown; did you mean 'Shift_JIS'? (the byte E9, "
        "which is not UTF-8, stands on 3:1)\n"},
    // Qt has a converter for it, and Xerces has none.
    {"EncodingWithoutAConverter",
        DeclareEncoding("TSCII") + "<a/>",
        "1:31-1:36 unknown-encoding: the parser cannot read the encoding 'TSCII'; save the document as UTF-8\n"},
};

}  // namespace

class UnreadableBytesTest : public testing::TestWithParam<UnreadableRow> {};

TEST_P(UnreadableBytesTest, AreReportedWithTheirPlace)
{
    EXPECT_EQ(DiagnoseBytes(GetParam().bytes), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Documents, UnreadableBytesTest, testing::ValuesIn(unreadableRows), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(UnreadableBytesTest, FaultInFrontOfTheBytesIsReportedFirst)
{
    const std::string diagnostics = DiagnoseBytes("<a><b></c>" + std::string(100000, ' ') + "\xE9</a>");
    EXPECT_EQ(diagnostics.find("bad-bytes"), std::string::npos) << diagnostics;
}

TEST(UnmarkedUtf16Test, IsReadWithAndWithoutAnXmlDeclaration)
{
    for (const std::string& bytes : {"<\0a\0>\0\xF6\0<\0/\0a\0>\0"s,
             "\0<\0a\0>\0\xF6\0<\0/\0a\0>"s,
             "\n\0<\0a\0>\0\xF6\0<\0/\0a\0>\0"s,
             "<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0"
             "1\0.\0"
             "0\0'\0?\0>\0<\0a\0>\0\xF6\0<\0/\0a\0>\0"s}) {
        DOMParser parser;
        const std::unique_ptr<DOM> document =
            parser.ParseXmlBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()));
        ASSERT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
        EXPECT_EQ(document->GetDocumentRoot()->GetText(), VString(u"ö"));
    }
}
