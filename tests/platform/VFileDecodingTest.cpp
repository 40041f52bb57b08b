#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"

using testing::HasSubstr;
using namespace std::string_literals;

namespace {

VString Decode(const std::string& bytes, bool useXmlDeclaration = true)
{
    return VFile::DecodeText(bytes.data(), bytes.size(), "doc.xml", useXmlDeclaration);
}

std::string FailureOf(const std::string& bytes, bool useXmlDeclaration = true)
{
    try {
        const VString text = Decode(bytes, useXmlDeclaration);
        ADD_FAILURE() << "decoded as " << text;
    } catch (const VIO::Exception& exception) {
        return exception.what();
    }
    return {};
}

std::string Declared(const std::string& encoding)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>";
}

struct DecodedCase {
    const char* name;
    std::string bytes;
    VString text;
};

struct BadCase {
    const char* name;
    std::string bytes;
    const char* encoding;
    std::size_t offset;
};

}  // namespace

class VFileDecodedTest : public testing::TestWithParam<DecodedCase> {};

TEST_P(VFileDecodedTest, DecodesTheText)
{
    EXPECT_EQ(Decode(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Encodings,
    VFileDecodedTest,
    testing::Values(DecodedCase{"Empty", "", ""},
        DecodedCase{"Utf8", "gr\xC3\xB6\xC3\x9F", "größ"},
        DecodedCase{"Utf8Mark", "\xEF\xBB\xBFgr\xC3\xB6", "grö"},
        DecodedCase{"Utf8MarkAlone", "\xEF\xBB\xBF", ""},
        DecodedCase{"SecondMarkIsACharacter", "\xEF\xBB\xBF\xEF\xBB\xBFx", u"\uFEFFx"},
        DecodedCase{"Utf16LittleEndian", "\xFF\xFEg\0\xF6\0\x3D\xD8\0\xDE"s, u"gö\U0001F600"},
        DecodedCase{"Utf16BigEndian", "\xFE\xFF\0g\0\xF6\xD8\x3D\xDE\0"s, u"gö\U0001F600"},
        DecodedCase{"Utf16MarkAlone", "\xFF\xFE", ""},
        DecodedCase{"Utf32LittleEndian", "\xFF\xFE\0\0\xF6\0\0\0\0\xF6\x01\0"s, u"ö\U0001F600"},
        DecodedCase{"Utf32BigEndian", "\0\0\xFE\xFF\0\0\0\xF6\0\x01\xF6\0"s, u"ö\U0001F600"},
        DecodedCase{"NulIsACharacter", "a\0b"s, VString(u"a\0b", 3)},
        DecodedCase{"Utf8DespiteAnotherDeclaration",
            Declared("iso-8859-1") + "\xC3\xB6",
            "<?xml version='1.0' encoding='iso-8859-1'?>ö"},
        DecodedCase{"MarkDespiteADeclaration",
            "\xEF\xBB\xBF" + Declared("utf-16") + "\xC3\xB6",
            "<?xml version='1.0' encoding='utf-16'?>ö"},
        DecodedCase{
            "Latin1", Declared("iso-8859-1") + "\xF6\x80", u"<?xml version='1.0' encoding='iso-8859-1'?>ö\u0080"},
        DecodedCase{
            "Windows1252", Declared("windows-1252") + "\x80", u"<?xml version='1.0' encoding='windows-1252'?>€"},
        DecodedCase{"ShiftJis", Declared("Shift_JIS") + "\x82\xA0", u"<?xml version='1.0' encoding='Shift_JIS'?>あ"},
        DecodedCase{"EucJp", Declared("EUC-JP") + "\xA4\xA2", u"<?xml version='1.0' encoding='EUC-JP'?>あ"},
        DecodedCase{
            "Gb18030", Declared("GB18030") + "\x94\x39\xFC\x36", u"<?xml version='1.0' encoding='GB18030'?>\U0001F600"},
        DecodedCase{"Gb18030Mixed",
            Declared("GB18030") + "\x81\x30\x8B\x32\x90\x30\x81\x30\xA2\xE3\x94\x39\xFC\x36\xE3\x32\x9A\x35z",
            u"<?xml version='1.0' encoding='GB18030'?>ö\U00010000€\U0001F600\U0010FFFFz"},
        DecodedCase{"DoubleQuotesAndBlanks",
            "<?xml\n version = \"1.0\"\tencoding\r\n= \"latin1\" ?>\xF6",
            u"<?xml\n version = \"1.0\"\tencoding\r\n= \"latin1\" ?>ö"},
        DecodedCase{"DeclarationWithoutVersion", "<?xml encoding='latin1'?>\xF6", u"<?xml encoding='latin1'?>ö"}),
    [](const auto& test) { return std::string(test.param.name); });

class VFileBadByteTest : public testing::TestWithParam<BadCase> {};

TEST_P(VFileBadByteTest, NamesTheFileTheEncodingAndTheOffset)
{
    const std::string failure = FailureOf(GetParam().bytes);
    const std::string start =
        "Cannot read \"doc.xml\": not valid "s + GetParam().encoding + ", the first bad byte is at line 1, column ";
    EXPECT_THAT(failure, testing::StartsWith(start));
    EXPECT_THAT(failure, testing::EndsWith(" (offset " + std::to_string(GetParam().offset) + ")"));
}

INSTANTIATE_TEST_SUITE_P(Bytes,
    VFileBadByteTest,
    testing::Values(BadCase{"NoUtf8", "ab\xF6 ", "UTF-8", 2},
        BadCase{"CutInsideACharacter", "ab\xE2\x82", "UTF-8", 2},
        BadCase{"BehindAUtf8Mark", "\uFEFFa\xFF", "UTF-8", 4},
        BadCase{"MarkedUtf8IgnoresTheDeclaration", "\xEF\xBB\xBF" + Declared("latin1") + "\xF6", "UTF-8", 42},
        BadCase{"Utf16OddByte", "\377\376a\0b"s, "UTF-16", 4},
        BadCase{"Utf16LoneHighHalf", "\377\376\075\330a\0"s, "UTF-16", 2},
        BadCase{"Utf16HighHalfAtTheEnd", "\xFE\xFF\0a\xD8\x3D"s, "UTF-16", 4},
        BadCase{"Utf16HighHalfBeforeAnOddByte", "\xFE\xFF\xD8\x3D\xDE"s, "UTF-16", 2},
        BadCase{"Utf16LoneLowHalf", "\xFE\xFF\0a\xDE\0"s, "UTF-16", 4},
        BadCase{"Utf16TwoHighHalves", "\xFE\xFF\xD8\x3D\xD8\x3D\xDE\0"s, "UTF-16", 2},
        BadCase{"Utf32Surrogate", "\0\0\xFE\xFF\0\0\xD8\0"s, "UTF-32", 4},
        BadCase{"Utf32BeyondTheLast", "\xFF\xFE\0\0a\0\0\0\0\0\x11\0"s, "UTF-32", 8},
        BadCase{"Utf32Cut", "\xFF\xFE\0\0a\0\0"s, "UTF-32", 4},
        BadCase{"DeclaredUtf8", Declared("utf-8") + "\xF6", "UTF-8", 38},
        BadCase{"DeclaredUnknown", Declared("no-such-encoding") + "\xF6", "UTF-8", 49},
        BadCase{"DeclaredUtf16", Declared("utf-16") + "\xF6", "UTF-8", 39},
        BadCase{"DeclaredEbcdic", Declared("IBM037") + "\xF6", "UTF-8", 39},
        BadCase{"DeclarationBehindABlank", " " + Declared("latin1") + "\xF6", "UTF-8", 40},
        BadCase{"DeclarationOfAnotherInstruction", "<?xmlx encoding='latin1'?>\xF6", "UTF-8", 26},
        BadCase{"EncodingOutsideTheDeclaration", "<?xml version='1.0'?><a encoding='latin1'>\xF6", "UTF-8", 42},
        BadCase{"ShiftJisStrayByte", Declared("Shift_JIS") + "ab\xFF", "Shift_JIS", 44},
        BadCase{"ShiftJisCutAtTheEnd", Declared("Shift_JIS") + "\x82\xA0\x82", "Shift_JIS", 44},
        BadCase{"Gb18030Incomplete", Declared("GB18030") + "\x94\x39\xFC", "GB18030", 40},
        BadCase{"Gb18030BadLastByte", Declared("GB18030") + "\x94\x39\xFC\x20", "GB18030", 40},
        BadCase{"Gb18030AboveUnicode", Declared("GB18030") + "\xE3\x32\x9A\x36", "GB18030", 40},
        BadCase{"Gb18030BehindThePlanes", Declared("GB18030") + "\xFD\x30\x81\x30", "GB18030", 40},
        BadCase{"Gb18030BelowThePlanes", Declared("GB18030") + "\x85\x30\x81\x30", "GB18030", 40},
        BadCase{"AsciiOnly", Declared("US-ASCII") + "\xF6", "US-ASCII", 41}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(VFileDecodingTest, IgnoresTheDeclarationWithoutTheFlag)
{
    EXPECT_THAT(FailureOf(Declared("iso-8859-1") + "\xF6", false), HasSubstr("not valid UTF-8"));
}

TEST(VFileDecodingTest, DecodesLongTextsInADeclaredEncoding)
{
    // Each round adds seven bytes. So the pieces of a read end at different positions, some of them inside a character.
    std::string bytes = Declared("Shift_JIS");
    VString text = VString::fromStdString(bytes);
    for (int i = 0; i < 30000; ++i) {
        bytes += "abc\x82\xA0\x82\xA0";
        text += u"abcああ";
    }
    EXPECT_EQ(Decode(bytes), text);
}

TEST(VFileDecodingTest, NamesTheOffsetOfABadByteInALongText)
{
    std::string bytes = Declared("Shift_JIS");
    for (int i = 0; i < 30000; ++i)
        bytes += "abc\x82\xA0\x82\xA0";
    const std::size_t offset = bytes.size();
    bytes += "\xFFmore";
    EXPECT_THAT(FailureOf(bytes), HasSubstr("offset " + std::to_string(offset)));
}

TEST(VFileDecodingTest, NamesTheStartOfABadCharacterThatCrossesPieces)
{
    constexpr std::size_t pieceBytes = 0x10000;
    std::string bytes = Declared("Shift_JIS");
    bytes += std::string(pieceBytes - 1 - bytes.size(), 'a') + "\202\377aaa";
    EXPECT_THAT(FailureOf(bytes), HasSubstr("offset " + std::to_string(pieceBytes - 1)));
}
