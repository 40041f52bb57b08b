#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VIOException.h"

using namespace std::string_literals;

namespace {

DecodedText DecodeFile(std::string bytes, bool useXmlDeclaration = true)
{
    return DecodeToUtf8(std::move(bytes), "doc.xml", useXmlDeclaration);
}

std::string XmlDeclarationOf(const std::string& encoding)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>";
}

struct EncodingCase {
    const char* name;
    std::string bytes;
    std::string text;
    FileEncoding encoding;
};

struct BadBytesCase {
    const char* name;
    std::string bytes;
    std::string badBytes;
    std::string textBefore;
    std::string textBehind;
    bool isAtEnd = false;
};

struct DeclaredCase {
    const char* name;
    std::string bytes;
    EncodingDeclaration declaration;
};

struct DeclarationCase {
    const char* name;
    std::string_view text;
    std::optional<std::string_view> encoding;
};

}  // namespace

class TextEncodingDecodedTest : public testing::TestWithParam<EncodingCase> {};

TEST_P(TextEncodingDecodedTest, ReturnsTheTextAndTheEncoding)
{
    const DecodedText decoded = DecodeFile(GetParam().bytes);
    EXPECT_EQ(decoded.text, GetParam().text);
    EXPECT_EQ(decoded.encoding.name, GetParam().encoding.name);
    EXPECT_EQ(decoded.encoding.hasMark, GetParam().encoding.hasMark);
}

INSTANTIATE_TEST_SUITE_P(Bytes,
    TextEncodingDecodedTest,
    testing::Values(EncodingCase{"Empty", "", "", {"UTF-8", false}},
        EncodingCase{"Utf8", "gr\xC3\xB6", "grö", {"UTF-8", false}},
        EncodingCase{"Utf8Mark", "\xEF\xBB\xBFgr\xC3\xB6", "grö", {"UTF-8", true}},
        EncodingCase{"SecondMark", "\uFEFF\uFEFFx", "\uFEFFx", {"UTF-8", true}},
        EncodingCase{"Utf16LittleEndian", "\xFF\xFEg\0\x3D\xD8\0\xDE"s, "g\U0001F600", {"UTF-16LE", true}},
        EncodingCase{"Utf16BigEndian", "\xFE\xFF\0g\0\xF6"s, "gö", {"UTF-16BE", true}},
        EncodingCase{"Utf32LittleEndian", "\xFF\xFE\0\0\xF6\0\0\0"s, "ö", {"UTF-32LE", true}},
        EncodingCase{"Utf32BigEndian", "\0\0\xFE\xFF\0\0\0\xF6"s, "ö", {"UTF-32BE", true}},
        EncodingCase{
            "Latin1", XmlDeclarationOf("latin1") + "\xF6", XmlDeclarationOf("latin1") + "ö", {"ISO-8859-1", false}},
        EncodingCase{"ShiftJis",
            XmlDeclarationOf("shift_jis") + "\x82\xA0",
            XmlDeclarationOf("shift_jis") + "あ",
            {"Shift_JIS", false}},
        EncodingCase{"Utf8DespiteADeclaration",
            XmlDeclarationOf("latin1") + "\xC3\xB6",
            XmlDeclarationOf("latin1") + "ö",
            {"UTF-8", false}},
        EncodingCase{"MarkDespiteADeclaration",
            "\xEF\xBB\xBF" + XmlDeclarationOf("latin1"),
            XmlDeclarationOf("latin1"),
            {"UTF-8", true}},
        EncodingCase{
            "AsciiDeclaredAsLatin1", XmlDeclarationOf("latin1"), XmlDeclarationOf("latin1"), {"ISO-8859-1", false}},
        EncodingCase{
            "AsciiDeclaredAsAscii", XmlDeclarationOf("US-ASCII"), XmlDeclarationOf("US-ASCII"), {"US-ASCII", false}},
        EncodingCase{"AsciiDeclaredAsUtf8", XmlDeclarationOf("utf-8"), XmlDeclarationOf("utf-8"), {"UTF-8", false}},
        EncodingCase{"AsciiDeclaredAsUtf16", XmlDeclarationOf("UTF-16"), XmlDeclarationOf("UTF-16"), {"UTF-8", false}},
        EncodingCase{
            "AsciiDeclaredAsUnknown", XmlDeclarationOf("x-none"), XmlDeclarationOf("x-none"), {"UTF-8", false}},
        EncodingCase{"EscapeSequences",
            XmlDeclarationOf("ISO-2022-JP") + "\x1B$B$\"\x1B(B",
            XmlDeclarationOf("ISO-2022-JP") + "\x1B$B$\"\x1B(B",
            {"UTF-8", false}},
        EncodingCase{"UnmarkedUtf16LittleEndian", "<\0a\0/\0>\0"s, "<a/>", {"UTF-16LE", false}},
        EncodingCase{"UnmarkedUtf16BigEndian", "\0<\0?\0\xF6"s, "<?ö", {"UTF-16BE", false}},
        EncodingCase{"UnmarkedUtf16BehindBlanks", "\0\n\0\t\0<\0a"s, "\n\t<a", {"UTF-16BE", false}},
        EncodingCase{"NulsInUtf8", "<\0ab"s, "<\0ab"s, {"UTF-8", false}},
        EncodingCase{"NulsInATextWithoutTags", "a\0b\0"s, "a\0b\0"s, {"UTF-8", false}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FileEncodingTest, ExpectsUtf16WithoutAMarkOnlyInXml)
{
    EXPECT_EQ(DecodeFile("<\0a\0"s, false).encoding.name, "UTF-8");
}

TEST(FileEncodingTest, IgnoresTheDeclarationWithoutTheFlag)
{
    EXPECT_EQ(DecodeFile(XmlDeclarationOf("latin1"), false).encoding.name, "UTF-8");
    EXPECT_THROW(DecodeFile(XmlDeclarationOf("latin1") + "\xF6", false), VIO::Exception);
}

TEST(FileEncodingTest, MovesUtf8)
{
    std::string bytes(1000, 'x');
    const char* const address = bytes.data();
    EXPECT_EQ(DecodeToUtf8(std::move(bytes), "doc.xml", true).text.data(), address);
}

TEST(FileEncodingTest, NamesTheFirstBadByte)
{
    try {
        DecodeFile("\xEF\xBB\xBF\x61\xFF");
        FAIL() << "no exception";
    } catch (const VIO::Exception& exception) {
        EXPECT_STREQ(exception.what(),
            "Cannot read \"doc.xml\": not valid UTF-8, the first bad byte is at line 1, column 2 (offset 4)");
    }
}

// Lines end at "\n", "\r" and "\r\n". Columns count UTF-16 code units.
TEST(FileEncodingTest, TheMessageHasTheLineAndTheColumnOfTheFirstBadByte)
{
    const std::pair<std::string, std::string> places[] = {
        {"\xFF", "line 1, column 1 (offset 0)"},
        {"<a>\n\xFF\n\xFF", "line 2, column 1 (offset 4)"},
        {"a\nb\rc\r\nd\n\n\rxy\xFF", "line 7, column 3 (offset 13)"},
        {"a\r\xFF", "line 2, column 1 (offset 2)"},
        {"\n\tä€\U0001F600\xFF", "line 2, column 6 (offset 11)"},
        {"\xFF\xFE<\0\n\0\xE4\0\x3D\xD8\x00\xDE\x3D\xD8<\0"s, "line 2, column 4 (offset 12)"},
    };
    for (const auto& [bytes, place] : places) {
        try {
            DecodeFile(bytes);
            ADD_FAILURE() << "no exception for " << place;
        } catch (const VIO::DecodingException& exception) {
            EXPECT_THAT(exception.what(), testing::EndsWith(" the first bad byte is at " + place));
        }
    }
}

class TextEncodingBadBytesTest : public testing::TestWithParam<BadBytesCase> {};

TEST_P(TextEncodingBadBytesTest, ReturnsTheBytesAndTheirLine)
{
    try {
        DecodeFile(GetParam().bytes);
        FAIL() << "no exception";
    } catch (const VIO::DecodingException& exception) {
        const VIO::BadBytes& bad = exception.GetBadBytes();
        EXPECT_EQ(bad.bytes, GetParam().badBytes);
        EXPECT_EQ(bad.bytes, GetParam().bytes.substr(bad.offset, bad.bytes.size()));
        EXPECT_EQ(bad.text.substr(0, bad.textOffset), GetParam().textBefore);
        EXPECT_EQ(bad.text.substr(bad.textOffset + bad.shownLength), GetParam().textBehind);
        EXPECT_EQ(bad.isAtEnd, GetParam().isAtEnd);
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes,
    TextEncodingBadBytesTest,
    testing::Values(BadBytesCase{"Latin1", "<a>\n\xE9t\xE9\n</a>", "\xE9", "<a>\n", "t\xE9"},
        BadBytesCase{"BehindAMark", "\uFEFFa\xFFz", "\xFF", "a", "z"},
        BadBytesCase{"Utf8CutAtTheEnd", "a\xE2\x82", "\xE2\x82", "a", "", true},
        BadBytesCase{"BadByteAtTheEnd", "a\xFF", "\xFF", "a", ""},
        BadBytesCase{"Utf16LowHalf", "\xFE\xFF\0a\xDE\0\0b\0\n\0c"s, "\xDE\0"s, "a", "b"},
        BadBytesCase{"Utf16HighHalf", "\377\376a\0\075\330b\0"s, "\075\330", "a", "b"},
        BadBytesCase{"Utf16OddByte", "\377\376a\0b"s, "b", "a", "", true},
        BadBytesCase{"Utf16HighHalfAtTheEnd", "\xFE\xFF\0a\xD8\x3D"s, "\xD8\x3D", "a", "", true},
        BadBytesCase{"UnmarkedUtf16OddByte", "<\0a\0b"s, "b", "<a", "", true},
        BadBytesCase{"Utf32Surrogate", "\0\0\xFE\xFF\0\0\xD8\0\0\0\0a"s, "\0\0\xD8\0"s, "", "a"},
        BadBytesCase{"Ascii", XmlDeclarationOf("US-ASCII") + "\xF6z", "\xF6", XmlDeclarationOf("US-ASCII"), "z"},
        BadBytesCase{"ShiftJisCutAtTheEnd",
            XmlDeclarationOf("Shift_JIS") + "\x82\xA0\x82",
            "\x82",
            XmlDeclarationOf("Shift_JIS") + "あ",
            "",
            true}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FileEncodingTest, FindsBadBytesBehindManyPiecesOfACodec)
{
    const std::string start = XmlDeclarationOf("Shift_JIS") + std::string(200000, 'x') + "\n";
    try {
        DecodeFile(start + "\x82\xA0\xFF");
        FAIL() << "no exception";
    } catch (const VIO::DecodingException& exception) {
        EXPECT_EQ(exception.GetBadBytes().text.substr(0, exception.GetBadBytes().textOffset), start + "あ");
        EXPECT_EQ(exception.GetBadBytes().bytes, "\xFF");
    }
}

class EncodingDeclarationTest : public testing::TestWithParam<DeclaredCase> {};

TEST_P(EncodingDeclarationTest, ComparesTheNameWithTheBytes)
{
    const DecodedText decoded = DecodeFile(GetParam().bytes);
    EXPECT_EQ(CheckEncodingDeclaration(decoded.text, decoded.encoding), GetParam().declaration);
}

namespace {

std::string Utf16Of(std::string_view ascii, bool isBigEndian)
{
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char character : ascii)
        bytes += isBigEndian ? std::string{'\0', character} : std::string{character, '\0'};
    return bytes;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Names,
    EncodingDeclarationTest,
    testing::Values(DeclaredCase{"None", "<a/>", EncodingDeclaration::Right},
        DeclaredCase{"Utf8", XmlDeclarationOf("utf-8") + "ö", EncodingDeclaration::Right},
        DeclaredCase{"OtherNameOfUtf8", XmlDeclarationOf("utf8") + "ö", EncodingDeclaration::Right},
        DeclaredCase{"Latin1", XmlDeclarationOf("latin1") + "\xF6", EncodingDeclaration::Right},
        DeclaredCase{"AsciiAsLatin1", XmlDeclarationOf("latin1"), EncodingDeclaration::Right},
        DeclaredCase{"Utf16", Utf16Of(XmlDeclarationOf("utf-16"), true), EncodingDeclaration::Right},
        DeclaredCase{"Utf16WithByteOrder", Utf16Of(XmlDeclarationOf("UTF-16LE"), false), EncodingDeclaration::Right},
        DeclaredCase{"OldNameOfUtf16", Utf16Of(XmlDeclarationOf("ISO-10646-UCS-2"), false), EncodingDeclaration::Right},
        DeclaredCase{"OtherByteOrder", Utf16Of(XmlDeclarationOf("UTF-16LE"), true), EncodingDeclaration::Wrong},
        DeclaredCase{"Utf16AsUtf8", Utf16Of(XmlDeclarationOf("UTF-8"), false), EncodingDeclaration::Wrong},
        DeclaredCase{"Utf16AsUtf32", Utf16Of(XmlDeclarationOf("UTF-32"), false), EncodingDeclaration::Wrong},
        DeclaredCase{"Utf8AsUtf16", XmlDeclarationOf("UTF-16") + "ö", EncodingDeclaration::Wrong},
        DeclaredCase{"AsciiAsUtf16", XmlDeclarationOf("UTF-16"), EncodingDeclaration::Wrong},
        DeclaredCase{"Utf8AsLatin1", XmlDeclarationOf("latin1") + "ö", EncodingDeclaration::Wrong},
        DeclaredCase{"MarkedUtf8AsLatin1", "\uFEFF" + XmlDeclarationOf("latin1"), EncodingDeclaration::Wrong},
        DeclaredCase{"Misspelt", XmlDeclarationOf("UFT-8"), EncodingDeclaration::Unknown},
        DeclaredCase{"UnknownInUtf16", Utf16Of(XmlDeclarationOf("no-such"), true), EncodingDeclaration::Unknown}),
    [](const auto& test) { return std::string(test.param.name); });

class TextEncodingDeclarationTest : public testing::TestWithParam<DeclarationCase> {};

TEST_P(TextEncodingDeclarationTest, FindsTheDeclaredEncoding)
{
    EXPECT_EQ(FindDeclaredEncoding(GetParam().text), GetParam().encoding);
}

INSTANTIATE_TEST_SUITE_P(Texts,
    TextEncodingDeclarationTest,
    testing::Values(DeclarationCase{"SingleQuotes", "<?xml version='1.0' encoding='UTF-8'?>", "UTF-8"},
        DeclarationCase{"DoubleQuotes", "<?xml version=\"1.0\" encoding=\"latin1\"?>", "latin1"},
        DeclarationCase{"MixedQuotes", "<?xml version=\"1.0\" encoding='latin1'?>", "latin1"},
        DeclarationCase{"Blanks", "<?xml\n\tversion \r=\n'1.0'\tencoding =  'a.b_c-1'  ?>", "a.b_c-1"},
        DeclarationCase{"BeforeStandalone", "<?xml version='1.0' encoding='x' standalone='no'?>", "x"},
        DeclarationCase{"WithoutVersion", "<?xml encoding='x'?>", "x"},
        DeclarationCase{"Absent", "<?xml version='1.0'?>", std::nullopt},
        DeclarationCase{"StandaloneOnly", "<?xml version='1.0' standalone='yes'?>", std::nullopt},
        DeclarationCase{"Empty", "", std::nullopt},
        DeclarationCase{"OpeningOnly", "<?xml", std::nullopt},
        DeclarationCase{"CutInTheName", "<?xml version='1.0' encod", std::nullopt},
        DeclarationCase{"CutBeforeTheQuote", "<?xml version='1.0' encoding=", std::nullopt},
        DeclarationCase{"CutInTheValue", "<?xml version='1.0' encoding='UTF", std::nullopt},
        DeclarationCase{"NoBlankBeforeVersion", "<?xmlversion='1.0' encoding='x'?>", std::nullopt},
        DeclarationCase{"NoBlankBeforeEncoding", "<?xml version='1.0'encoding='x'?>", std::nullopt},
        DeclarationCase{"NoEqualsSign", "<?xml version='1.0' encoding 'x'?>", std::nullopt},
        DeclarationCase{"NoQuotes", "<?xml version='1.0' encoding=x?>", std::nullopt},
        DeclarationCase{"OtherQuoteAtTheEnd", "<?xml version='1.0' encoding='x\"?>", std::nullopt},
        DeclarationCase{"EmptyName", "<?xml version='1.0' encoding=''?>", std::nullopt},
        DeclarationCase{"NameBeginsWithADigit", "<?xml version='1.0' encoding='8859'?>", std::nullopt},
        DeclarationCase{"NameWithABlank", "<?xml version='1.0' encoding='a b'?>", std::nullopt},
        DeclarationCase{"OtherInstruction", "<?xmlx version='1.0' encoding='x'?>", std::nullopt},
        DeclarationCase{"BlankBefore", " <?xml version='1.0' encoding='x'?>", std::nullopt},
        DeclarationCase{"InAnElement", "<?xml version='1.0'?><a encoding='x'/>", std::nullopt},
        DeclarationCase{"InTheVersion", "<?xml version=' encoding=\"x\"'?>", std::nullopt},
        DeclarationCase{"AfterStandalone", "<?xml version='1.0' standalone='no' encoding='x'?>", std::nullopt}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FileEncodingTest, ReturnsThePlaceOfTheDeclaredEncoding)
{
    std::string text = XmlDeclarationOf("latin1");
    const std::string_view name = FindDeclaredEncoding(text).value();
    text.replace(static_cast<std::size_t>(name.data() - text.data()), name.size(), "UTF-8");
    EXPECT_EQ(text, XmlDeclarationOf("UTF-8"));
}
