// Messages name attributes as the document spells them, even names that begin with a colon.

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

// Declares <a> with an optional <b> and an attribute k whose only value is "1".
constexpr const char* Schema = R"(
    <xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>
      <xs:element name='a'>
        <xs:complexType>
          <xs:sequence><xs:element name='b' minOccurs='0'><xs:complexType/></xs:element></xs:sequence>
          <xs:attribute name='k'>
            <xs:simpleType><xs:restriction base='xs:string'><xs:enumeration value='1'/></xs:restriction></xs:simpleType>
          </xs:attribute>
        </xs:complexType>
      </xs:element>
    </xs:schema>)";

// Returns the errors without their positions and ids.
Texts Messages(InputSource& source, const char* schema)
{
    const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::RecordingHandler>());
    if (schema)
        parser->LoadXSDString(schema, "schema");
    parser->Parse();
    Texts messages;
    for (const VString& error : parser->GetErrors()) {
        const std::string text = error.toStdString();
        const std::size_t start = text.find("): ") + 3;
        messages.push_back(text.substr(start, text.rfind(" (id: ") - start));
    }
    return messages;
}

Texts Messages(const std::string& text, const char* schema)
{
    StringInputSource source(VString::fromStdString(text), "id", false);
    return Messages(source, schema);
}

struct Row {
    const char* name;
    std::string text;
    Texts messages;
};

const Row WellFormednessRows[] = {
    {"an attribute that comes twice", "<a :x='1' :x='2'/>", {"attribute ':x' is already specified for element 'a'"}},
    {"a character that is not allowed", "<a :x='\x01'/>", {"invalid character 0x1 in attribute value ':x'"}},
    {"a name outside of ASCII", "<a :\xC3\xA9='\x01'/>", {"invalid character 0x1 in attribute value ':\xC3\xA9'"}},
    {"the internal prefix in the document",
        "<IllegalColon:a IllegalColon:x='\x01'/>",
        {"invalid character 0x1 in attribute value 'IllegalColon:x'"}},
    {"the internal prefix beside a rewritten name",
        "<a :y='1' IllegalColon:x='\x01'/>",
        {"invalid character 0x1 in attribute value 'IllegalColon:x'"}},
    {"an element with the internal prefix",
        "<IllegalColon:x :y='1'>",
        {"input ended before all started tags were ended; last tag started is 'IllegalColon:x'"}},
};

const Row ValidityRows[] = {
    {"an attribute that is not declared", "<a :x='1'/>", {"attribute ':x' is not declared for element 'a'"}},
    {"several attributes that are not declared",
        "<a :x='1'><b :y='1'/></a>",
        {"attribute ':x' is not declared for element 'a'", "attribute ':y' is not declared for element 'b'"}},
    {"an attribute that comes twice",
        "<a :x='1' :x='1'/>",
        {"attribute ':x' is not declared for element 'a'", "attribute ':x' is already specified for element 'a'"}},
    {"a name that is not valid", "<a ::x='1'/>", {"invalid attribute name ':'"}},
    {"an element that is not declared",
        "<c :x='1'/>",
        {"no declaration found for element 'c'", "attribute ':x' is not declared for element 'c'"}},
    {"the internal prefix in the document",
        "<a :x='1'><b IllegalColon:y='1'/></a>",
        {"attribute ':x' is not declared for element 'a'",
            "attribute 'IllegalColon:y' is not declared for element 'b'"}},
    {"an element with the internal prefix",
        "<a :x='1'><IllegalColon:x/></a>",
        {"attribute ':x' is not declared for element 'a'",
            "no declaration found for element 'IllegalColon:x'",
            "element 'IllegalColon:x' is not allowed for content model '(b?)'"}},
    {"a value with the internal prefix",
        "<a k='IllegalColon:x' :x='1'/>",
        {"value 'IllegalColon:x' not in enumeration", "attribute ':x' is not declared for element 'a'"}},
    {"a value like a message",
        "<a k=\"attribute 'IllegalColon:x'\" :x='1'/>",
        {"value 'attribute 'IllegalColon:x'' not in enumeration", "attribute ':x' is not declared for element 'a'"}},
    {"the internal prefix declared, without a rewritten name",
        "<a xmlns:IllegalColon='u' IllegalColon:x='1'/>",
        {"attribute '{u}x' is not declared for element 'a'"}},
    {"the internal namespace, without a rewritten name",
        "<a xmlns:n='http://vancorexml.invalid/xml/ThisShouldNotAppear' n:x='1'/>",
        {"attribute '{http://vancorexml.invalid/xml/ThisShouldNotAppear}x' is not declared for element 'a'"}},
    {"the internal namespace beside a rewritten name",
        "<a :y='1'><b xmlns:n='http://vancorexml.invalid/xml/ThisShouldNotAppear' n:x='1'/></a>",
        {"attribute ':y' is not declared for element 'a'",
            "attribute '{http://vancorexml.invalid/xml/ThisShouldNotAppear}x' is not declared for element 'b'"}},
};

TEST(WrittenNamesTest, WellFormednessErrorsUseTheNamesOfTheDocument)
{
    for (const Row& row : WellFormednessRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Messages(row.text, nullptr), row.messages);
    }
}

TEST(WrittenNamesTest, ValidationErrorsUseTheNamesOfTheDocument)
{
    for (const Row& row : ValidityRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Messages(row.text, Schema), row.messages);
    }
}

TEST(WrittenNamesTest, SourceIdIsNotChanged)
{
    StringInputSource source("<a :x='1' :x='1'/>", "attribute 'IllegalColon:x'", false);
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    ASSERT_EQ(testsupport::Errors(*document).size(), 1u);
    EXPECT_THAT(testsupport::Errors(*document)[0].toStdString(),
        testing::EndsWith("attribute ':x' is already specified for element 'a' (id: attribute 'IllegalColon:x')"));
}

TEST(WrittenNamesTest, SchemaErrorsUseTheNamesOfTheSchema)
{
    StringInputSource source("<a :x='1'/>", "id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::RecordingHandler>());
    parser->Parse();
    parser->LoadXSDString("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:IllegalColon='u' "
                          "IllegalColon:x='1' IllegalColon:x='2'/>",
        "schema");
    ASSERT_FALSE(parser->GetErrors().empty());
    EXPECT_THAT(
        parser->GetErrors().front().toStdString(), HasSubstr("attribute 'IllegalColon:x' is already specified"));
}

TEST(WrittenNamesTest, EveryKindOfSourceRestoresNames)
{
    const testsupport::TemporaryFolder folder;
    const std::string text = "<a :x='1' IllegalColon:y='\x01'/>";
    FileInputSource file(folder.Write("a.xml", "<a :x='1' :x='1'/>"));
    BorrowedInputSource borrowed(text, "id", false);
    Utf8InputSource bytes(text, "id", false);
    EXPECT_EQ(Messages(file, nullptr), Texts{"attribute ':x' is already specified for element 'a'"});
    EXPECT_EQ(Messages(borrowed, nullptr), Texts{"invalid character 0x1 in attribute value 'IllegalColon:y'"});
    EXPECT_EQ(Messages(bytes, nullptr), Texts{"invalid character 0x1 in attribute value 'IllegalColon:y'"});
}

TEST(WrittenNamesTest, BothDomParsersRestoreNamesInMessages)
{
    const std::string text = "<a :x='1' :x='1'/>";
    const StandaloneDOMParser standalone;
    EXPECT_THAT(
        testsupport::Errors(*DOMParser().ParseXmlString(text, "id"))[0].toStdString(), HasSubstr("attribute ':x'"));
    EXPECT_THAT(standalone.ParseXmlString(text, "id").second[0].toStdString(), HasSubstr("attribute ':x'"));
}

// The sanitizer takes these colons for the beginning of an attribute.
TEST(WrittenNamesTest, TextsAndValuesThatLookLikeAttributesStay)
{
    const std::pair<const char*, const char*> documents[] = {
        {"<a> :b='1'></a>", "<a> :b='1'></a>"},
        {"<a>x :b='1' :c='2'> y</a>", "<a>x :b='1' :c='2'> y</a>"},
        {"<a> :b='1'>:<b/> :c='2'></a>", "<a> :b='1'>: :c='2'><b></b></a>"},
        {"<a :x='1' b=\" :c='1' >\"></a>", "<a :x='1' b=' :c='1' >'></a>"},
        {"<a b=' IllegalColon:x'> :b='1'></a>", "<a b=' IllegalColon:x'> IllegalColon:b='1'></a>"},
    };
    for (const auto& [text, tree] : documents)
        EXPECT_EQ(testsupport::TreeText(*DOMParser().ParseXmlString(text, "id")), tree);
}

TEST(WrittenNamesTest, RestoringNamesInManyErrorsTakesLinearTime)
{
    std::string text = "<a>";
    for (int i = 0; i < 20'000; ++i)
        text += "<b :x='1' IllegalColon:y='1'/>";
    const Texts messages = Messages(text + "</a>", Schema);
    EXPECT_GE(messages.size(), 40'000u);
    for (const std::string& message : messages)
        ASSERT_THAT(message, Not(HasSubstr("ThisShouldNotAppear")));
}

}  // namespace
