// The limit of different names that a schema does not declare.

#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

constexpr std::size_t MostNames = 20000;
const VString Excess =
    "parser has encountered more than '20000' different undeclared elements in the document; this is "
    "the limit imposed by the application (id: id)";

std::string DocumentWithElements(std::size_t count)
{
    std::string text = "<r>";
    for (std::size_t i = 0; i < count; ++i)
        text += "<a" + std::to_string(i) + "/>";
    return text + "</r>";
}

// Validates against a schema that declares only the root element, which contains any elements.
std::unique_ptr<DOM> Validate(const std::string& text)
{
    const std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='r'>"
                               "<xs:complexType><xs:sequence><xs:any processContents='skip' minOccurs='0' "
                               "maxOccurs='unbounded'/></xs:sequence></xs:complexType></xs:element></xs:schema>";
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(schema, "s.xsd", false));
    return parser.ParseXmlString(text, "id");
}

TEST(UndeclaredElementsTest, TwentyThousandDifferentNamesAreAllowed)
{
    const std::unique_ptr<DOM> document = Validate(DocumentWithElements(MostNames));
    EXPECT_FALSE(document->HasErrors()) << document->GetErrors().front();
    EXPECT_EQ(document->GetDocumentRoot()->GetChildren().size(), MostNames);
}

TEST(UndeclaredElementsTest, MoreDifferentNamesAreRefused)
{
    const std::unique_ptr<DOM> document = Validate(DocumentWithElements(MostNames + 1));
    ASSERT_EQ(document->GetErrors().size(), 1u);
    EXPECT_TRUE(document->GetErrors().front().startsWith("Fatal Error(1,")) << document->GetErrors().front();
    EXPECT_TRUE(document->GetErrors().front().endsWith(Excess)) << document->GetErrors().front();
}

TEST(UndeclaredElementsTest, OneNameManyTimesIsAllowed)
{
    std::string text = "<r>";
    for (std::size_t i = 0; i < 2 * MostNames; ++i)
        text += "<a/>";
    EXPECT_FALSE(Validate(text + "</r>")->HasErrors());
}

TEST(UndeclaredElementsTest, DifferentNamesAreAllowedWithoutASchema)
{
    EXPECT_FALSE(DOMParser().ParseXmlString(DocumentWithElements(2 * MostNames), "id")->HasErrors());
}

TEST(UndeclaredElementsTest, AHundredThousandDifferentNamesTakeLittleTime)
{
    const std::string text = DocumentWithElements(5 * MostNames);
    const testsupport::CpuTimeLimit limit(10);  // 42 seconds without the limit
    EXPECT_TRUE(Validate(text)->HasErrors());
}

}  // namespace
