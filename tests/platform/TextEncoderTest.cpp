#include <gtest/gtest.h>

#include <QTextCodec>

#include <functional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VIOException.h"

using namespace std::string_literals;

namespace {

std::string CharacterReference(char32_t character)
{
    return "&#" + std::to_string(static_cast<unsigned>(character)) + ";";
}

std::string RefuseCharacter(char32_t character)
{
    throw std::domain_error(CharacterReference(character));
}

std::string DocumentStart(const std::string& encoding)
{
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>";
}

// The codecs that write "<?xml" in ASCII, besides UTF-8.
std::set<std::string> AsciiCodecs()
{
    std::set<std::string> codecs;
    for (const QByteArray& name : QTextCodec::availableCodecs()) {
        const QTextCodec* codec = QTextCodec::codecForName(name);
        if (codec != nullptr && codec->name() != "UTF-8" && codec->name() != "x-faulty" &&
            codec->fromUnicode(QStringLiteral("<?xml")) == "<?xml")
            codecs.insert(codec->name().toStdString());
    }
    return codecs;
}

struct SampleCharacter {
    char32_t character;
    std::string utf8;
};

// All characters of the Basic Multilingual Plane and a sample of the others; with `step`, every step-th of them.
std::vector<SampleCharacter> SampleCharacters(char32_t step = 1)
{
    TextEncoder utf8({"UTF-8", false});
    std::vector<SampleCharacter> characters;
    for (char32_t character = 0; character < 0x110000; character += character < 0x10000 ? step : 0x101 * step) {
        if (character < 0xD800 || character > 0xDFFF)
            characters.push_back({character, std::string(utf8.EncodeCharacter(character))});
    }
    return characters;
}

// A codec with the faults of real ones: it writes "l" for U+0142 and "?" for other characters that it lacks, without a
// report, and it reads E4 F6 as one character. Everything else is ISO-8859-1.
class FaultyCodec : public QTextCodec {
public:
    QByteArray name() const override { return "x-faulty"; }
    int mibEnum() const override { return -1; }

protected:
    QString convertToUnicode(const char* bytes, int length, ConverterState*) const override
    {
        return QString::fromLatin1(bytes, length).replace(QStringLiteral("\u00E4\u00F6"), QStringLiteral("X"));
    }
    QByteArray convertFromUnicode(const QChar* text, int length, ConverterState*) const override
    {
        QByteArray bytes;
        for (int i = 0; i < length; ++i) {
            const char16_t unit = text[i].unicode();
            bytes += unit < 0x100 ? static_cast<char>(unit) : unit == 0x142 ? 'l' : '?';
        }
        return bytes;
    }
};

// Registers the codec. Qt owns it.
VString FaultyEncoding()
{
    static const QTextCodec* const codec = new FaultyCodec;
    return QString::fromLatin1(codec->name());
}

std::string EncodingErrorOf(const std::function<void()>& action)
{
    try {
        action();
        ADD_FAILURE() << "no exception";
    } catch (const VIO::Exception& exception) {
        return exception.what();
    }
    return {};
}

std::vector<std::size_t> OffsetsOf(
    const std::vector<std::size_t>& offsets, const std::string& text, const std::string& bytes, const VString& encoding)
{
    return FindEncodedOffsets(offsets, text, bytes, {encoding, true}, "doc.xml");
}

struct FormCase {
    const char* name;
    FileEncoding encoding;
    std::string bytes;
};

}  // namespace

class TextEncoderFormTest : public testing::TestWithParam<FormCase> {};

TEST_P(TextEncoderFormTest, EncodesAllLengthsOfCharacters)
{
    const std::string text = "aö€\U0001F600";
    EXPECT_EQ(EncodeFromUtf8(text, GetParam().encoding, RefuseCharacter), GetParam().bytes);
    EXPECT_TRUE(!GetParam().encoding.hasMark || DecodeToUtf8(std::string(GetParam().bytes), "", true).text == text);
}

INSTANTIATE_TEST_SUITE_P(Encodings,
    TextEncoderFormTest,
    testing::Values(FormCase{"Utf8", {"UTF-8", false}, "aö€\U0001F600"},
        FormCase{"Utf8WithMark", {"UTF-8", true}, "\uFEFFaö€\U0001F600"},
        FormCase{"Utf16LittleEndian", {"UTF-16LE", true}, "\xFF\xFE\x61\0\xF6\0\xAC\x20\x3D\xD8\0\xDE"s},
        FormCase{"Utf16BigEndian", {"UTF-16BE", true}, "\xFE\xFF\0a\0\xF6\x20\xAC\xD8\x3D\xDE\0"s},
        FormCase{"Utf16WithoutMark", {"UTF-16BE", false}, "\0a\0\xF6\x20\xAC\xD8\x3D\xDE\0"s},
        FormCase{"Utf32LittleEndian", {"UTF-32LE", true}, "\xFF\xFE\0\0\x61\0\0\0\xF6\0\0\0\xAC\x20\0\0\0\xF6\x01\0"s},
        FormCase{"Utf32BigEndian", {"UTF-32BE", true}, "\0\0\xFE\xFF\0\0\0a\0\0\0\xF6\0\0\x20\xAC\0\x01\xF6\0"s},
        FormCase{"Gb18030", {"GB18030", false}, "a\x81\x30\x8B\x32\xA2\xE3\x94\x39\xFC\x36"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(TextEncoderTest, ReplacesCharactersThatTheEncodingLacks)
{
    TextEncoder encoder({"ISO-8859-1", false});
    EXPECT_EQ(encoder.Encode("ö€?ł\U0001F600", CharacterReference), "\xF6&#8364;?&#322;&#128512;");
    EXPECT_THROW(encoder.Encode("€", RefuseCharacter), std::domain_error);
}

TEST(TextEncoderTest, ReplacesAllButAsciiInEncodingsWithShiftStates)
{
    for (const char* name : {"ISO-2022-JP", "UTF-7"}) {
        // Without ICU, as on Windows, Qt does not know UTF-7.
        if (QTextCodec::codecForName(name) == nullptr)
            continue;
        EXPECT_EQ(TextEncoder({name, false}).Encode("aあb", CharacterReference), "a&#12354;b") << name;
    }
}

TEST(TextEncoderTest, RejectsReplacementsThatAreNotAscii)
{
    TextEncoder encoder({"ISO-8859-1", false});
    EXPECT_EQ(EncodingErrorOf([&] { encoder.Encode("€", [](char32_t) { return "ö"s; }); }),
        "Cannot encode text in ISO-8859-1: the replacement of U+20AC has no bytes");
}

TEST(TextEncoderTest, RejectsInvalidUtf8)
{
    for (const char* name : {"UTF-8", "UTF-16LE", "ISO-8859-1"})
        EXPECT_THROW(TextEncoder({name, false}).Encode("a\xFF", RefuseCharacter), VIO::Exception) << name;
}

TEST(TextEncoderTest, RejectsUnknownEncodings)
{
    for (const char* name : {"", "no-such-encoding", "UTF-16", "IBM037"})
        EXPECT_THROW(TextEncoder({name, false}), VIO::Exception) << name;
}

TEST(TextEncoderTest, RejectsFilesThatWouldBeReadAsUtf8)
{
    EXPECT_EQ(EncodingErrorOf([] {
        EncodeFromUtf8("Ã¶", {"ISO-8859-1", false}, RefuseCharacter);
    }),
        "Cannot encode text in ISO-8859-1: the result would be read as UTF-8");
    // IBM437 writes U+007F as the byte 1C.
    EXPECT_THROW(EncodeFromUtf8("a\x7F", {"IBM437", false}, RefuseCharacter), VIO::Exception);
    EXPECT_EQ(EncodeFromUtf8("plain", {"ISO-8859-1", false}, RefuseCharacter), "plain");
}

TEST(TextEncoderTest, WritesAsciiInUtf16WithoutAMarkIfItIsEvident)
{
    EXPECT_EQ(EncodeFromUtf8("<a>", {"UTF-16LE", false}, RefuseCharacter), "<\0a\0>\0"s);
    EXPECT_THROW(EncodeFromUtf8("a", {"UTF-16LE", false}, RefuseCharacter), VIO::Exception);
}

// A document of all characters of a codec is encoded, decoded, and encoded to the same bytes.
TEST(TextEncoderTest, RestoresTheBytesInEveryCodec)
{
    const std::vector<SampleCharacter> characters = SampleCharacters();
    for (const std::string& name : AsciiCodecs()) {
        SCOPED_TRACE(name);
        const FileEncoding encoding{VString::fromStdString(name), false};
        TextEncoder encoder(encoding);
        std::string text = DocumentStart(name);
        std::string bytes = text;
        std::vector<std::size_t> textOffsets, byteOffsets;
        for (const auto& [character, utf8] : characters) {
            textOffsets.push_back(text.size());
            byteOffsets.push_back(bytes.size());
            const std::string_view encoded = encoder.EncodeCharacter(character);
            bytes += encoded;
            if (!encoded.empty())
                text += utf8;
        }
        const std::string written = EncodeFromUtf8(text, encoding, RefuseCharacter);
        EXPECT_TRUE(written == bytes);
        const DecodedText decoded = DecodeToUtf8(std::string(written), "doc.xml", true);
        EXPECT_TRUE(decoded.text == text);
        EXPECT_EQ(decoded.encoding.name, encoding.name);
        EXPECT_TRUE(FindEncodedOffsets(textOffsets, text, written, encoding, "doc.xml") == byteOffsets);
    }
}

TEST(TextEncoderTest, ReplacesEveryOtherCharacterInEveryCodec)
{
    const std::vector<SampleCharacter> characters = SampleCharacters(7);
    for (const std::string& name : AsciiCodecs()) {
        SCOPED_TRACE(name);
        TextEncoder encoder({VString::fromStdString(name), false});
        std::string text;
        std::string expected;
        for (const auto& [character, utf8] : characters) {
            const std::string_view encoded = encoder.EncodeCharacter(character);
            text += utf8;
            expected += encoded.empty() ? CharacterReference(character) : encoded;
        }
        EXPECT_TRUE(encoder.Encode(text, CharacterReference) == expected);
    }
}

// Short random texts of the characters of a codec are read as they were written, or refused.
TEST(TextEncoderTest, RestoresRandomTextsInEveryCodec)
{
    const std::vector<SampleCharacter> characters = SampleCharacters();
    std::mt19937 random(1);
    int restored = 0;
    for (const std::string& name : AsciiCodecs()) {
        SCOPED_TRACE(name);
        const FileEncoding encoding{VString::fromStdString(name), false};
        for (int i = 0; i < 20; ++i) {
            std::string text = DocumentStart(name);
            // Most codecs have only characters from the start of the list.
            for (int length = 0; length < 4; ++length)
                text += characters[random() % (i % 2 == 0 ? characters.size() : 0x180)].utf8;
            try {
                const std::string bytes = EncodeFromUtf8(text, encoding, RefuseCharacter);
                EXPECT_EQ(DecodeToUtf8(std::string(bytes), "doc.xml", true).text, text);
                ++restored;
            } catch (const VIO::Exception&) {
                continue;  // the bytes are valid UTF-8
            } catch (const std::domain_error&) {
                continue;
            }
        }
    }
    EXPECT_GT(restored, 50);
}

TEST(TextEncoderTest, FindsCharactersThatACodecReplacesWithoutAReport)
{
    TextEncoder encoder({FaultyEncoding(), false});
    EXPECT_EQ(encoder.Encode("öłl€?", CharacterReference), "\xF6&#322;l&#8364;?");
}

TEST(TextEncoderTest, RejectsCharactersThatACodecReadsAsAnother)
{
    TextEncoder encoder({FaultyEncoding(), false});
    EXPECT_EQ(encoder.Encode("öä", CharacterReference), "\xF6\xE4");
    EXPECT_EQ(EncodingErrorOf([&] { encoder.Encode("äö", CharacterReference); }),
        "Cannot encode text in x-faulty: the characters have another meaning when they follow one another");
}

// An independent list of the characters of an encoding: the characters that its single bytes mean.
TEST(TextEncoderTest, EncodesTheCharacterOfEverySingleByte)
{
    const std::set<std::string> contextual{"SCSU", "TSCII", "UTF-7"};
    for (const std::string& name : AsciiCodecs()) {
        // Qt's own codecs of ISCII do not write all characters that they read.
        if (contextual.count(name) != 0 || name.starts_with("ISO-2022") || name.starts_with("iscii"))
            continue;
        const QTextCodec* codec = QTextCodec::codecForName(name.c_str());
        TextEncoder encoder({VString::fromStdString(name), false});
        for (int byte = 0; byte < 0x100; ++byte) {
            const std::string sample{static_cast<char>(byte), 'a'};
            const QString read = codec->toUnicode(sample.data(), 2);
            const bool isCharacter =
                read.size() == 2 && read[1] == QLatin1Char('a') && read[0] != QChar(QChar::ReplacementCharacter);
            EXPECT_FALSE(isCharacter && encoder.EncodeCharacter(read[0].unicode()).empty()) << name << " " << byte;
        }
    }
}

TEST(FindEncodedOffsetsTest, AddsTheMarkOfUtf8)
{
    EXPECT_EQ(FindEncodedOffsets({0, 3, 5}, "", "", {"UTF-8", false}, ""), (std::vector<std::size_t>{0, 3, 5}));
    EXPECT_EQ(OffsetsOf({0, 3, 5}, "", "", "UTF-8"), (std::vector<std::size_t>{3, 6, 8}));
}

TEST(FindEncodedOffsetsTest, CountsTheUnitsOfUtf16)
{
    const std::string text = "aö€\U0001F600b";
    const std::string bytes = EncodeFromUtf8(text, {"UTF-16LE", true}, RefuseCharacter);
    EXPECT_EQ(
        OffsetsOf({0, 1, 3, 6, 6, 10, 11}, text, bytes, "UTF-16LE"), (std::vector<std::size_t>{2, 4, 6, 8, 8, 12, 14}));
}

TEST(FindEncodedOffsetsTest, CountsTheBytesOfACodec)
{
    EXPECT_EQ(OffsetsOf({0, 1, 4, 5}, "aあb", "a\x82\xA0\x62", "Shift_JIS"), (std::vector<std::size_t>{0, 1, 3, 4}));
}

// Shift_JIS has two codes for this character; the encoder writes 81 E6.
TEST(FindEncodedOffsetsTest, RejectsTheSecondCodeOfACharacter)
{
    // The characters that have two codes depend on how Qt was built.
    const QTextCodec* codec = QTextCodec::codecForName("Shift_JIS");
    const bool hasExtensions = codec->toUnicode("\x87\x9A") == QStringLiteral("∵");
    const std::string bytes = DocumentStart("Shift_JIS") + (hasExtensions ? "\x87\x9A" : "\x81\x7C");
    const DecodedText decoded = DecodeToUtf8(std::string(bytes), "doc.xml", true);
    EXPECT_EQ(decoded.text, DocumentStart("Shift_JIS") + (hasExtensions ? "∵" : "－"));
    EXPECT_EQ(EncodingErrorOf([&] { OffsetsOf({}, decoded.text, bytes, decoded.encoding.name); }),
        "Cannot edit \"doc.xml\": the bytes at offset 42 are not the usual ones of a character in Shift_JIS; "
        "convert the file to UTF-8 first");
}

TEST(FindEncodedOffsetsTest, RejectsShiftSequences)
{
    EXPECT_THROW(OffsetsOf({}, "aあb", "a\x1B$B$\"\x1B(Bb", "ISO-2022-JP"), VIO::Exception);
}

TEST(FindEncodedOffsetsTest, RejectsBytesOfAnotherText)
{
    EXPECT_THROW(OffsetsOf({}, "ab", "ac", "ISO-8859-1"), VIO::Exception);
    EXPECT_THROW(OffsetsOf({}, "ab", "a", "ISO-8859-1"), VIO::Exception);
    EXPECT_THROW(OffsetsOf({}, "ab", "abc", "ISO-8859-1"), VIO::Exception);
    EXPECT_THROW(OffsetsOf({}, "a", "a\0"s, "UTF-16LE"), VIO::Exception);
}

TEST(FindEncodedOffsetsTest, RejectsOffsetsThatAreNotAtACharacter)
{
    for (const std::vector<std::size_t>& offsets : {std::vector<std::size_t>{2}, {1, 0}, {4}})
        EXPECT_THROW(OffsetsOf(offsets, "aö", "a\xF6", "ISO-8859-1"), std::invalid_argument);
}
