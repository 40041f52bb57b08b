#include "vancorexml/main/parser/SAXAdapter.h"

#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VIOException.h"

namespace {

using testsupport::RecordingHandler;
using Events = std::vector<std::string>;

// Attributes that a test passes to StartElement without a parser.
class GivenAttributes final : public TagAttributes {
public:
    explicit GivenAttributes(AttributeMap attributes = {}) : m_attributes(std::move(attributes)) {}
    void AddTo(AttributeMap& map) const override { map = m_attributes; }

private:
    AttributeMap m_attributes;
};

struct SAXAdapterTest : testing::Test {
    std::shared_ptr<RecordingHandler> handler = std::make_shared<RecordingHandler>();
    SAXAdapter adapter{handler};
};

TEST_F(SAXAdapterTest, PassesElementsAndTextsOn)
{
    adapter.StartElement("a", GivenAttributes({{"x", "1"}, {"y", "2"}}));
    adapter.Characters("text");
    adapter.StartElement("b", GivenAttributes());
    adapter.EndElement();
    adapter.EndElement();
    EXPECT_EQ(handler->events, (Events{"<a x='1' y='2'>", "text", "<b>", "</>", "</>"}));
}

TEST_F(SAXAdapterTest, WantsBlankText)
{
    EXPECT_TRUE(adapter.WantsText(u" \n\t"));
}

TEST_F(SAXAdapterTest, AddToMayChangeTheName)
{
    // Changes the name of the element in AddTo. A parser may do so too, when it looks up the names of the attributes.
    struct Overwriting final : TagAttributes {
        explicit Overwriting(VString& text) : name(text) {}
        void AddTo(AttributeMap&) const override { name = "overwritten"; }
        VString& name;
    };
    VString name = "a";
    adapter.StartElement(name, Overwriting(name));
    EXPECT_EQ(handler->events, Events{"<a>"});
}

TEST_F(SAXAdapterTest, IsDoneAfterTheHandlerIsDone)
{
    handler->doneAfter = 2;
    adapter.StartElement("a", GivenAttributes());
    EXPECT_FALSE(adapter.IsDone());
    adapter.EndElement();
    EXPECT_TRUE(adapter.IsDone());
    handler->events.clear();
    adapter.StartElement("b", GivenAttributes());
    EXPECT_TRUE(adapter.IsDone());
}

TEST_F(SAXAdapterTest, FindSchemaLoadsAndPreprocessesTheFileOfTheExtension)
{
    const testsupport::TemporaryFolder folder;
    handler->schemaPath = folder.Write("found.xsd", "type @TYPE@");
    const std::optional<FoundSchema> schema = adapter.FindSchema("main.xsd", "types.xsd");
    ASSERT_TRUE(schema);
    EXPECT_EQ(schema->path, handler->schemaPath);
    EXPECT_EQ(schema->text, VString("type xs:int"));
    EXPECT_EQ(handler->resolved, Events{"main.xsd|types.xsd"});
    EXPECT_EQ(handler->preprocessed, Events{"types.xsd|" + handler->schemaPath.toStdString()});
}

TEST_F(SAXAdapterTest, FindSchemaReturnsNothingForAnEmptyPath)
{
    EXPECT_FALSE(adapter.FindSchema("main.xsd", "types.xsd"));
    EXPECT_EQ(handler->preprocessed, Events{});
}

TEST_F(SAXAdapterTest, FindSchemaThrowsForAMissingFile)
{
    handler->schemaPath = "no such file.xsd";
    EXPECT_THROW(adapter.FindSchema("main.xsd", "types.xsd"), VIO::Exception);
}

TEST(SAXAdapterWithoutExtensionTest, FindSchemaReturnsNothing)
{
    EXPECT_FALSE(SAXAdapter(std::make_shared<testsupport::MeasuringHandler>()).FindSchema("main.xsd", "types.xsd"));
}

TEST(SAXAdapterWithoutExtensionTest, FindSchemaReturnsNothingForANullHandler)
{
    EXPECT_FALSE(SAXAdapter(nullptr).FindSchema("main.xsd", "types.xsd"));
}

}  // namespace
