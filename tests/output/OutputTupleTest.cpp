#include "vancorexml/main/parser/OutputTuple.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/output/RecordingWriter.h"
#include "vancoredata/Tuple.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

TEST(OutputTupleTest, EmptyTupleWritesAnOpenAndACloseTag)
{
    XMLStringFormatter writer;
    OutputTuple(writer, Tuple());
    EXPECT_EQ(writer.GetOutput(), VString("<tuple>\n</tuple>\n"));
}

TEST(OutputTupleTest, EachValueBecomesAnElement)
{
    XMLStringFormatter writer;
    OutputTuple(writer, Tuple{DataValue(), DataValue(true), DataValue(12), DataValue(0.5), DataValue("a<b")});
    EXPECT_EQ(writer.GetOutput(),
        VString("<tuple>\n"
                "  <value>%null%</value>\n"
                "  <value>true</value>\n"
                "  <value>12</value>\n"
                "  <value>0.5</value>\n"
                "  <value>&quot;a&lt;b&quot;</value>\n"
                "</tuple>\n"));
}

TEST(OutputTupleTest, WritesValuesWithTheThreeArgumentOutputContentTag)
{
    outputtest::RecordingWriter writer;
    OutputTuple(writer, Tuple{DataValue(1)});
    EXPECT_THAT(writer.calls, testing::Contains("OutputContentTag(value)"));
}

TEST(OutputTupleTest, XMLDomFormatterBuildsATreeOfTheValues)
{
    XMLDomFormatter writer;
    OutputTuple(writer, Tuple{DataValue(1), DataValue(2)});
    const DOMElement* tuple = writer.GetDocumentRoot();
    ASSERT_NE(tuple, nullptr);
    EXPECT_EQ(tuple->GetName(), VString("tuple"));
    ASSERT_EQ(tuple->GetChildren().size(), 2u);
    EXPECT_EQ(tuple->GetChildren()[1]->GetName(), VString("value"));
    EXPECT_EQ(tuple->GetChildren()[1]->GetText(), VString("2"));
}

// Adds a value to the tuple while it writes the first value.
class GrowingTupleWriter : public XMLStringFormatter {
public:
    explicit GrowingTupleWriter(Tuple& tuple) : m_tuple(tuple) {}

    using XMLStringFormatter::OutputContentTag;
    void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content) override
    {
        XMLStringFormatter::OutputContentTag(tag, attributes, content);
        if (m_tuple.GetSize() < 2)
            m_tuple.Append(DataValue(2));
    }

private:
    Tuple& m_tuple;
};

TEST(OutputTupleTest, ReadsTheSizeAgainAfterEachValue)
{
    Tuple tuple{DataValue(1)};
    GrowingTupleWriter writer(tuple);
    OutputTuple(writer, tuple);
    EXPECT_EQ(writer.GetOutput(), VString("<tuple>\n  <value>1</value>\n  <value>2</value>\n</tuple>\n"));
}

}  // namespace
