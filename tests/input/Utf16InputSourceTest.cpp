#include "vancorexml/main/parser/Utf16InputSource.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesInputSource.h"

namespace {

using namespace std::string_view_literals;

class Utf16InputSourceTest : public testing::Test {
protected:
    std::unique_ptr<xercesc::InputSource> Plain(std::string_view text, const XMLCh* encoding = nullptr) const
    {
        auto source = std::make_unique<xercesc::MemBufInputSource>(
            reinterpret_cast<const XMLByte*>(text.data()), text.size(), u"id");
        source->setEncoding(encoding);
        return source;
    }

    bool IsWellFormed(std::string_view text, const XMLCh* encoding = nullptr) const
    {
        return Utf16InputSource::IsWellFormed(*Plain(text, encoding), text);
    }

    // Reads the whole stream, `count` bytes at a time.
    std::u16string Read(std::string_view text, std::size_t count) const
    {
        const Utf16InputSource source(*Plain(text), text);
        const std::unique_ptr<xercesc::BinInputStream> stream(source.makeStream());
        std::vector<XMLByte> buffer(count);
        std::u16string units;
        while (const XMLSize_t read = stream->readBytes(buffer.data(), count)) {
            EXPECT_EQ(read % 2, 0u);
            units.append(reinterpret_cast<const char16_t*>(buffer.data()), read / 2);
        }
        EXPECT_EQ(stream->curPos(), text.size());
        return units;
    }

private:
    // The first XercesInputSource initializes Xerces.
    const XercesInputSource m_first{
        std::make_shared<std::string>(), 0, VString(), ColonProcessingNone, TextEncoding::Detected};
};

// Returns runs of 0 to 39 ASCII characters between characters of two, three and four bytes.
std::string MixedText()
{
    std::string text;
    for (int run = 0; run < 40; ++run) {
        text.append(static_cast<std::size_t>(run), static_cast<char>('a' + run % 26));
        text += "\xC2\x80\xDF\xBF";                      // U+0080, U+07FF
        text += "\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBD";  // U+0800, U+D7FF, U+FFFD
        text += "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";      // U+10000, U+10FFFF
    }
    return text;
}

TEST_F(Utf16InputSourceTest, TextDoesNotDependOnTheSizeOfTheReads)
{
    const std::string text = MixedText();
    const std::u16string expected(VString::fromStdString(text).View());
    for (std::size_t count = 2; count < 100; ++count)
        EXPECT_EQ(Read(text, count), expected) << count;
    EXPECT_EQ(Read(text, 49152), expected);
}

TEST_F(Utf16InputSourceTest, SurrogatePairMaySpanTwoReads)
{
    EXPECT_EQ(Read("a\360\237\230\200b", 2), u"a\U0001F600b");
}

TEST_F(Utf16InputSourceTest, EmptyTextHasNoBytes)
{
    EXPECT_EQ(Read("", 16), u"");
}

TEST_F(Utf16InputSourceTest, KeepsTheSystemIdAndNamesItsEncoding)
{
    const Utf16InputSource source(*Plain("<a/>"), "<a/>");
    EXPECT_EQ(VString(source.getSystemId()), VString("id"));
    EXPECT_TRUE(VString(source.getEncoding()).startsWith("UTF-16"));
}

TEST_F(Utf16InputSourceTest, AcceptsWellFormedText)
{
    const std::string_view texts[] = {
        "<abcd/>",
        "<?xml version=\"1.0\"?><a/>",
        "<?xml version='1.0' encoding='UTF-8'?><a/>",
        "<?xml version='1.0' encoding = \"utf-8\" ?><a/>",
        "<?xmlish x?><a/>",
        "<!-- encoding='latin1' --><a/>",
        "<abcd>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</abcd>",
    };
    for (const std::string_view text : texts)
        EXPECT_TRUE(IsWellFormed(text)) << text;
}

TEST_F(Utf16InputSourceTest, LeavesOtherEncodingsToXerces)
{
    const std::string_view texts[] = {
        ""sv,
        "<a/>"sv,
        "\xEF\xBB\xBF<abcd/>"sv,
        " <abcd/>"sv,
        "<\0a\0b\0/\0>\0"sv,
        "\0<\0a\0/\0>"sv,
        "\xFE\xFF\0<\0a\0/\0>"sv,
        "<?xml version='1.0' encoding='ISO-8859-1'?><a/>"sv,
        "<?xml version='1.0' encoding='UTF-16'?><a/>"sv,
        "<?xml version='1.0' encoding?><a/>"sv,
        "<?xml version='1.0' encoding='UTF-8'"sv,
    };
    for (const std::string_view text : texts)
        EXPECT_FALSE(IsWellFormed(text)) << text;
}

TEST_F(Utf16InputSourceTest, LeavesOverlongDeclarationsToXerces)
{
    EXPECT_FALSE(IsWellFormed("<?xml version='1.0'" + std::string(1000, ' ') + "encoding='ISO-8859-1'?><a/>"));
}

TEST_F(Utf16InputSourceTest, EncodingOfTheSourceOverridesTheDeclaration)
{
    EXPECT_TRUE(IsWellFormed("<?xml version='1.0' encoding='UTF-16'?><a/>", xercesc::XMLUni::fgUTF8EncodingString));
    EXPECT_TRUE(IsWellFormed("", xercesc::XMLUni::fgUTF8EncodingString));
    EXPECT_FALSE(IsWellFormed("\xEF\xBB\xBF<a/>", xercesc::XMLUni::fgUTF8EncodingString));
}

TEST_F(Utf16InputSourceTest, LeavesIllFormedBytesToXerces)
{
    const std::string texts[] = {"\x80", "\xC3", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFF"};
    for (const std::string& bytes : texts) {
        EXPECT_FALSE(IsWellFormed("<abcd>" + bytes + "</abcd>"));
        EXPECT_FALSE(IsWellFormed("<abcd>" + bytes, xercesc::XMLUni::fgUTF8EncodingString));
    }
}

}  // namespace
