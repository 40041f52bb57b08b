#include "vancorexml/main/parser/XercesColonSanitizer.h"

#include <memory>
#include <string>

#include "tests/common/SinkCaptures.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"

namespace {

const std::string Declaration = " xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'";

struct SanitizeRow {
    const char* name;
    std::string input;
    std::string output;
};

class SanitizeRows : public testing::TestWithParam<SanitizeRow> {};
class UntouchedRows : public testing::TestWithParam<SanitizeRow> {};

}  // namespace

TEST_P(SanitizeRows, RewritesColonAttributes)
{
    EXPECT_EQ(*XercesColonSanitizer::Sanitize(std::make_shared<std::string>(GetParam().input)), GetParam().output);
}

const SanitizeRow RewrittenTexts[] = {
    {"EmptyElement", "<a :b='1'/>", "<a" + Declaration + " IllegalColon:b='1'/>"},
    {"SeveralAttributesInOneTag",
        "<a :b='1' c='2' :d='3'/>",
        "<a" + Declaration + " IllegalColon:b='1' c='2' IllegalColon:d='3'/>"},
    {"AttributeOfAChild", "<a><b :c='1'/></a>", "<a" + Declaration + "><b IllegalColon:c='1'/></a>"},
    {"NonAsciiAttribute", "<a :größe='1'/>", "<a" + Declaration + " IllegalColon:größe='1'/>"},
    {"NonAsciiElement", "<größe :b='1'/>", "<größe" + Declaration + " IllegalColon:b='1'/>"},
    {"BlanksBeforeTheEqualsSign", "<a :b \n= '1'/>", "<a" + Declaration + " IllegalColon:b \n= '1'/>"},
    {"LineBreakBeforeTheColon", "<a\n:b='1'/>", "<a" + Declaration + "\nIllegalColon:b='1'/>"},
    {"ColonAlone", "<a :='1'/>", "<a" + Declaration + " IllegalColon:='1'/>"},
    {"NameWithColons", "<a :b:c='1'/>", "<a" + Declaration + " IllegalColon:b:c='1'/>"},
    {"AfterADeclarationAndAComment",
        "<?xml version='1.0'?><!-- c --><a :b='1'/>",
        "<?xml version='1.0'?><!-- c --><a" + Declaration + " IllegalColon:b='1'/>"},
    {"BlankBeforeTheElementName", "< a :b='1'/>", "< a" + Declaration + " IllegalColon:b='1'/>"},
    {"TextThatLooksLikeAnAttribute", "<a> :b='1'></a>", "<a" + Declaration + "> IllegalColon:b='1'></a>"},
    {"InstructionBeforeTheElement", "<?p :b='1'?><a/>", "<?p IllegalColon:b='1'?><a" + Declaration + "/>"},
    {"InstructionAndElement",
        "<?p :b='1'?><a :c='1'/>",
        "<?p IllegalColon:b='1'?><a" + Declaration + " IllegalColon:c='1'/>"},
};

INSTANTIATE_TEST_SUITE_P(
    XercesColonSanitizerTest, SanitizeRows, testing::ValuesIn(RewrittenTexts), [](const auto& row) {
        return row.param.name;
    });

TEST_P(UntouchedRows, ReturnsTheInputObject)
{
    const auto input = std::make_shared<std::string>(GetParam().input);
    EXPECT_EQ(XercesColonSanitizer::Sanitize(input), input);
}

const SanitizeRow UntouchedTexts[] = {
    {"Empty", "", ""},
    {"NoColon", "<a b='1'/>", ""},
    {"ColonAtTheStart", ":a='1'/>", ""},
    {"PrefixedAttribute", "<a b:c='1'/>", ""},
    {"PrefixedElement", "<a:b/>", ""},
    {"ColonInAValue", "<a b=' :c=1 '/>", ""},
    {"ColonInAComment", "<a><!-- :b='1' --><c/></a>", ""},
    {"ColonInCData", "<a><![CDATA[ :b='1' ]]><c/></a>", ""},
    {"ColonInADeclaration", "<!DOCTYPE a [ :b='1' ]><a/>", ""},
    {"ColonInText", "<a> :b='1'</a>", ""},
    {"NoEqualsSign", "<a :b '1'/>", ""},
    {"NoGreaterThan", "<a :b='1'", ""},
    {"LessThanBeforeGreaterThan", "<a :b='1' <c/>", ""},
    {"UnterminatedQuote", "<a :b='1/>", ""},
    {"LastTagIsAnOpenTag", "<a :b='1'>", ""},
};

INSTANTIATE_TEST_SUITE_P(
    XercesColonSanitizerTest, UntouchedRows, testing::ValuesIn(UntouchedTexts), [](const auto& row) {
        return row.param.name;
    });

TEST(XercesColonSanitizerTest, TextWithoutAnElementRaises)
{
    const char* const file = "vancorexml\\main\\parser\\XercesColonSanitizer";
    const auto sanitize = [] { XercesColonSanitizer::Sanitize(std::make_shared<std::string>("<?p :b='1'/>")); };
    testsupport::ExpectLogicException(sanitize, file, 188, "range.start != string::npos", 0x6FFE1D79);
}

TEST(XercesColonSanitizerTest, InputIsNotModified)
{
    const auto input = std::make_shared<std::string>("<a :b='1'/>");
    XercesColonSanitizer::Sanitize(input);
    EXPECT_EQ(*input, "<a :b='1'/>");
}

TEST(XercesColonSanitizerTest, ModesHaveFixedValues)
{
    EXPECT_EQ(ColonProcessingNone, 0);
    EXPECT_EQ(ColonProcessingSanitize, 1);
}

TEST(XercesColonSanitizerTest, RestoreNameUndoesTheRewriting)
{
    EXPECT_EQ(XercesColonSanitizer::RestoreName("IllegalColon:b"), VString(":b"));
    EXPECT_EQ(XercesColonSanitizer::RestoreName("IllegalColon:"), VString(":"));
    EXPECT_EQ(XercesColonSanitizer::RestoreName("xmlns:IllegalColon"), VString());
    EXPECT_EQ(XercesColonSanitizer::RestoreName("xmlns:IllegalColony"), VString());
    EXPECT_EQ(XercesColonSanitizer::RestoreName("illegalcolon:b"), VString("illegalcolon:b"));
    EXPECT_EQ(XercesColonSanitizer::RestoreName("xmlns:illegalColon"), VString("xmlns:illegalColon"));
    EXPECT_EQ(XercesColonSanitizer::RestoreName("IllegalColon"), VString("IllegalColon"));
    EXPECT_EQ(XercesColonSanitizer::RestoreName(""), VString());
}

TEST(XercesColonSanitizerTest, ParserRestoresTheAttributeName)
{
    DOMParser parser;
    const auto document = parser.ParseXmlString("<a :b='1' c='2'/>", "colon");
    ASSERT_FALSE(document->HasErrors());
    const AttributeMap expected{{":b", "1"}, {"c", "2"}};
    EXPECT_EQ(document->GetDocumentRoot()->GetAttributes(), expected);
}

TEST(XercesColonSanitizerTest, RecordsAMetricsScope)
{
    const testsupport::MetricsCapture metrics;
    XercesColonSanitizer::Sanitize(std::make_shared<std::string>("<a/>"));
    EXPECT_EQ(metrics.Names(), std::vector<std::string>{"XercesColonSanitizer"});
}
