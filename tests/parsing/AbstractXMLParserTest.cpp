#include "vancorexml/main/parser/AbstractXMLParser.h"

#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/XMLParseException.h"

namespace {

// Records the ids and texts of schemas instead of loading them.
class SchemaCollector : public AbstractXMLParser {
public:
    SchemaCollector(InputSource& input, std::shared_ptr<SAXInterface> handler)
        : AbstractXMLParser(input, std::move(handler))
    {}

    using AbstractXMLParser::GetHandler;
    using AbstractXMLParser::GetInput;

    void LoadXSDSource(InputSource& source) override
    {
        std::string text;
        source.GetBytes(text, 1000);
        loaded.push_back(source.Id().toStdString() + ": " + text);
    }

    std::vector<std::string> loaded;

protected:
    void DoParse() override {}
};

struct AbstractXMLParserTest : testing::Test {
    Utf8InputSource source{"<a/>", "first", false};
    std::shared_ptr<testsupport::RecordingHandler> handler = std::make_shared<testsupport::RecordingHandler>();
    SchemaCollector parser{source, handler};
};

TEST_F(AbstractXMLParserTest, StartsWithInputAndHandlerAndNoMessages)
{
    EXPECT_EQ(&parser.GetInput(), &source);
    EXPECT_EQ(parser.GetHandler(), handler);
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_FALSE(parser.HasFatallyErrored());
}

TEST_F(AbstractXMLParserTest, LoadXSDStringPassesTextAndId)
{
    parser.LoadXSDString("  <schema/>", "an id");
    EXPECT_EQ(parser.loaded, std::vector<std::string>{"an id:   <schema/>"});
}

TEST_F(AbstractXMLParserTest, LoadXSDFileUsesTheFileNameAsId)
{
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("x.xsd", "<schema/>");
    parser.LoadXSDFile(file);
    EXPECT_EQ(parser.loaded, std::vector<std::string>{file.toStdString() + ": <schema/>"});
}

TEST_F(AbstractXMLParserTest, LoadXSDFileDecodesTheDeclaredEncoding)
{
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("x.xsd", "<?xml version='1.0' encoding='iso-8859-1'?><s a='\xE4'/>");
    parser.LoadXSDFile(file);
    EXPECT_THAT(parser.loaded[0], testing::HasSubstr("<s a='\xC3\xA4'/>"));
}

TEST_F(AbstractXMLParserTest, LoadXSDFileThrowsForAMissingFile)
{
    EXPECT_THROW(parser.LoadXSDFile("no such file.xsd"), VIO::Exception);
}

TEST_F(AbstractXMLParserTest, ReloadReplacesInputAndHandler)
{
    Utf8InputSource other("<b/>", "second", false);
    auto otherHandler = std::make_shared<testsupport::RecordingHandler>();
    parser.Reload(other, otherHandler);
    EXPECT_EQ(&parser.GetInput(), &other);
    EXPECT_EQ(parser.GetHandler(), otherHandler);
    EXPECT_EQ(handler.use_count(), 1);
}

TEST_F(AbstractXMLParserTest, GetCurrentLocationLeavesItsArgumentsUnchanged)
{
    int line = -3;
    int column = -4;
    SAXFileLocation& location = parser;
    location.GetCurrentLocation(line, column);
    EXPECT_EQ(line, -3);
    EXPECT_EQ(column, -4);
}

TEST(SAXInterfaceTest, IsDoneIsFalseByDefault)
{
    struct Silent : SAXInterface {
        void StartElement(const VString&, const AttributeMap&) override {}
        void EndElement() override {}
        void Characters(const VString&) override {}
    };
    Silent handler;
    EXPECT_FALSE(handler.IsDone());
}

TEST(XMLParseExceptionTest, ConcatenatedMessagesReturnTheMessage)
{
    const XMLParseException exception("stop here");
    EXPECT_EQ(exception.GetConcatenatedMessages(), VString("stop here"));
    EXPECT_EQ(exception.GetErrorInfo(), VError::ErrorInfo::NoError);
    EXPECT_STREQ(exception.what(), "stop here");
}

TEST(XMLParseExceptionTest, KeepsItsTypeWhenClonedAndThrown)
{
    const XMLParseException exception("stop");
    const std::unique_ptr<VantoraException> clone(exception.Clone());
    EXPECT_NE(dynamic_cast<XMLParseException*>(clone.get()), nullptr);
    EXPECT_THROW(clone->Throw(), XMLParseException);
}

}  // namespace
