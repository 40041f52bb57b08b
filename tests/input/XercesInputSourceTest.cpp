#include "vancorexml/main/parser/XercesInputSource.h"

#include <xercesc/util/BinInputStream.hpp>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/XercesBuffer.h"

namespace {

std::string Read(const XercesInputSource& source)
{
    const std::unique_ptr<xercesc::BinInputStream> stream(source.Get().makeStream());
    std::string bytes(1000, '\0');
    bytes.resize(stream->readBytes(reinterpret_cast<XMLByte*>(bytes.data()), bytes.size()));
    return bytes;
}

XercesInputSource View(
    const std::shared_ptr<std::string>& bytes, std::size_t start, ColonProcessingMode mode = ColonProcessingNone)
{
    return XercesInputSource(bytes, start, "id", mode, TextEncoding::Detected);
}

TEST(XercesInputSourceTest, ReadsFromTheStartOffsetToTheEnd)
{
    const auto bytes = std::make_shared<std::string>("  <a/>");
    EXPECT_EQ(Read(View(bytes, 2)), "<a/>");
    EXPECT_EQ(Read(View(bytes, 6)), "");
}

TEST(XercesInputSourceTest, SharesTheBytes)
{
    const auto bytes = std::make_shared<std::string>("<a/>");
    const XercesInputSource source = View(bytes, 0, ColonProcessingSanitize);
    EXPECT_EQ(source.Bytes(), bytes);
}

TEST(XercesInputSourceTest, MovedSourceKeepsTheBytesAlive)
{
    auto bytes = std::make_shared<std::string>("<a/>");
    XercesInputSource source = View(bytes, 0);
    bytes.reset();
    const XercesInputSource moved = std::move(source);
    EXPECT_EQ(Read(moved), "<a/>");
}

TEST(XercesInputSourceTest, StreamReadsTheOriginalBytes)
{
    const auto bytes = std::make_shared<std::string>("<a/>");
    const XercesInputSource source = View(bytes, 0);
    const std::unique_ptr<xercesc::BinInputStream> stream(source.Get().makeStream());
    (*bytes)[1] = 'b';
    XMLByte read[4];
    stream->readBytes(read, 4);
    EXPECT_EQ(read[1], 'b');
}

TEST(XercesInputSourceTest, SanitizesACopy)
{
    const auto bytes = std::make_shared<std::string>(" <a :b='1'/>");
    const XercesInputSource source = View(bytes, 1, ColonProcessingSanitize);
    EXPECT_EQ(*bytes, " <a :b='1'/>");
    EXPECT_NE(source.Bytes(), bytes);
    EXPECT_THAT(Read(source), testing::AllOf(testing::StartsWith("<a "), testing::HasSubstr("IllegalColon:b='1'")));
}

TEST(XercesInputSourceTest, DoesNotSanitizeUnlessAsked)
{
    const auto bytes = std::make_shared<std::string>("<a :b='1'/>");
    EXPECT_EQ(View(bytes, 0, ColonProcessingNone).Bytes(), bytes);
}

TEST(XercesInputSourceTest, SystemIdIsTheId)
{
    const auto bytes = std::make_shared<std::string>("<a/>");
    for (const char* id : {"", "a b%20{}<>\xC3\xA4\\:?#.xml", "C:\\x\\y.xml"}) {
        const XercesInputSource source(bytes, 0, id, ColonProcessingNone, TextEncoding::Detected);
        EXPECT_EQ(VString(source.Get().getSystemId()), VString(id));
    }
}

TEST(XercesInputSourceTest, NamesTheEncodingOfDecodedTextOnly)
{
    const auto bytes = std::make_shared<std::string>("<a/>");
    EXPECT_EQ(View(bytes, 0).Get().getEncoding(), nullptr);
    const XercesInputSource decoded(bytes, 0, "id", ColonProcessingNone, TextEncoding::Utf8);
    EXPECT_EQ(VString(decoded.Get().getEncoding()), VString("UTF-8"));
}

TEST(XercesInputSourceTest, MemorySourcesShareTheirBytesWithXerces)
{
    Utf8InputSource source("  <a/>", "id", true);
    std::string bytes;
    source.GetBytes(bytes, 2);
    EXPECT_EQ(Read(source.GetXercesInputSource(ColonProcessingNone)), "<a/>");
    EXPECT_EQ(source.GetXercesInputSource(ColonProcessingNone).Bytes(),
        source.GetXercesInputSource(ColonProcessingSanitize).Bytes());
}

}  // namespace
