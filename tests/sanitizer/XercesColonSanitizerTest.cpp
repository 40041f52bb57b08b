#include "vancorexml/main/parser/XercesColonSanitizer.h"

#include <memory>
#include <string>

#include "metrics2/Metrics.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"

namespace {

const std::string Declared = " xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'";

struct SanitizeRow {
    const char* name;
    std::string input;
    std::string output;
};

class SanitizeRows : public testing::TestWithParam<SanitizeRow> {};
class UntouchedRows : public testing::TestWithParam<SanitizeRow> {};

}  // namespace

TEST_P(SanitizeRows, Rewritten)
{
    EXPECT_EQ(*XercesColonSanitizer::Sanitize(std::make_shared<std::string>(GetParam().input)), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(XercesColonSanitizerTest,
    SanitizeRows,
    testing::Values(SanitizeRow{"EmptyElement", "<a :b='1'/>", "<a" + Declared + " IllegalColon:b='1'/>"},
        SanitizeRow{"SeveralInOneTag",
            "<a :b='1' c='2' :d='3'/>",
            "<a" + Declared + " IllegalColon:b='1' c='2' IllegalColon:d='3'/>"},
        SanitizeRow{"InAChild", "<a><b :c='1'/></a>", "<a" + Declared + "><b IllegalColon:c='1'/></a>"},
        SanitizeRow{"NonAsciiName", "<a :größe='1'/>", "<a" + Declared + " IllegalColon:größe='1'/>"},
        SanitizeRow{"NonAsciiElement", "<größe :b='1'/>", "<größe" + Declared + " IllegalColon:b='1'/>"},
        SanitizeRow{"BlanksBeforeTheSign", "<a :b \n= '1'/>", "<a" + Declared + " IllegalColon:b \n= '1'/>"},
        SanitizeRow{"LineBreakBeforeTheColon", "<a\n:b='1'/>", "<a" + Declared + "\nIllegalColon:b='1'/>"},
        SanitizeRow{"ColonAlone", "<a :='1'/>", "<a" + Declared + " IllegalColon:='1'/>"},
        SanitizeRow{"NameWithColons", "<a :b:c='1'/>", "<a" + Declared + " IllegalColon:b:c='1'/>"},
        SanitizeRow{"BehindADeclaration",
            "<?xml version='1.0'?><!-- c --><a :b='1'/>",
            "<?xml version='1.0'?><!-- c --><a" + Declared + " IllegalColon:b='1'/>"},
        SanitizeRow{"BlankBeforeTheElementName", "< a :b='1'/>", "< a" + Declared + " IllegalColon:b='1'/>"},
        SanitizeRow{"LooksLikeAnAttributeInText", "<a> :b='1'></a>", "<a" + Declared + "> IllegalColon:b='1'></a>"},
        SanitizeRow{
            "InAnInstructionBeforeTheElement", "<?p :b='1'?><a/>", "<?p IllegalColon:b='1'?><a" + Declared + "/>"},
        SanitizeRow{"BeforeAndInTheElement",
            "<?p :b='1'?><a :c='1'/>",
            "<?p IllegalColon:b='1'?><a" + Declared + " IllegalColon:c='1'/>"}),
    [](const auto& row) { return row.param.name; });

TEST_P(UntouchedRows, TheSameObjectComesBack)
{
    const auto input = std::make_shared<std::string>(GetParam().input);
    EXPECT_EQ(XercesColonSanitizer::Sanitize(input), input);
}

INSTANTIATE_TEST_SUITE_P(XercesColonSanitizerTest,
    UntouchedRows,
    testing::Values(SanitizeRow{"Empty", "", ""},
        SanitizeRow{"NoColon", "<a b='1'/>", ""},
        SanitizeRow{"ColonAtTheStart", ":a='1'/>", ""},
        SanitizeRow{"PrefixedAttribute", "<a b:c='1'/>", ""},
        SanitizeRow{"PrefixedElement", "<a:b/>", ""},
        SanitizeRow{"InAValue", "<a b=' :c=1 '/>", ""},
        SanitizeRow{"InAComment", "<a><!-- :b='1' --><c/></a>", ""},
        SanitizeRow{"InCData", "<a><![CDATA[ :b='1' ]]><c/></a>", ""},
        SanitizeRow{"InADeclaration", "<!DOCTYPE a [ :b='1' ]><a/>", ""},
        SanitizeRow{"InTextBeforeATag", "<a> :b='1'</a>", ""},
        SanitizeRow{"NoSign", "<a :b '1'/>", ""},
        SanitizeRow{"NoCloseAtAll", "<a :b='1'", ""},
        SanitizeRow{"OpenBeforeTheClose", "<a :b='1' <c/>", ""},
        SanitizeRow{"QuotesDoNotMatch", "<a :b='1/>", ""},
        SanitizeRow{"LastTagThatIsNotEmpty", "<a :b='1'>", ""}),
    [](const auto& row) { return row.param.name; });

TEST(XercesColonSanitizerTest, TextWithoutAnElementRaises)
{
    testsupport::ExpectLogicException(
        [] { XercesColonSanitizer::Sanitize(std::make_shared<std::string>("<?p :b='1'/>")); },
        "vancorexml\\main\\parser\\XercesColonSanitizer",
        188,
        "range.start != string::npos",
        0x6FFE1D79);
}

TEST(XercesColonSanitizerTest, TheInputStaysAsItIs)
{
    const auto input = std::make_shared<std::string>("<a :b='1'/>");
    XercesColonSanitizer::Sanitize(input);
    EXPECT_EQ(*input, "<a :b='1'/>");
}

TEST(XercesColonSanitizerTest, ModesHaveTheirValues)
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

TEST(XercesColonSanitizerTest, TheParsedAttributeHasItsNameBack)
{
    DOMParser parser;
    const auto document = parser.ParseXmlString("<a :b='1' c='2'/>", "colon");
    ASSERT_FALSE(document->HasErrors());
    const AttributeMap expected{{":b", "1"}, {"c", "2"}};
    EXPECT_EQ(document->GetDocumentRoot()->GetAttributes(), expected);
}

TEST(XercesColonSanitizerTest, RunsInAScopeOfItsOwn)
{
    std::vector<std::string> names;
    Metrics::SetSink([&names](const Metrics::ScopeRecord& record) { names.emplace_back(record.name); });
    XercesColonSanitizer::Sanitize(std::make_shared<std::string>("<a/>"));
    Metrics::SetSink({});
    EXPECT_EQ(names, std::vector<std::string>{"XercesColonSanitizer"});
}
