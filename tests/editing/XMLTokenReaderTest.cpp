#include "vancorexml/main/parser/XMLTokenReader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Kind = XMLToken::Kind;

std::vector<XMLToken> ReadTokens(std::string_view text)
{
    std::vector<XMLToken> tokens;
    XMLTokenReader reader(text);
    XMLToken token;
    while (reader.Next(token))
        tokens.push_back(token);
    return tokens;
}

struct AttributeText {
    std::string name;
    std::string value;
    char quote;

    bool operator==(const AttributeText&) const = default;
};

void PrintTo(const AttributeText& attribute, std::ostream* out)
{
    *out << attribute.name << '=' << attribute.quote << attribute.value << attribute.quote;
}

std::vector<AttributeText> ReadAttributes(std::string_view tag)
{
    std::vector<AttributeText> attributes;
    XMLAttributeReader reader(ReadTokens(tag).at(0));
    XMLAttributeToken attribute;
    while (reader.Next(attribute))
        attributes.push_back({std::string(attribute.name), std::string(attribute.value), attribute.quote});
    return attributes;
}

struct TokenCase {
    const char* description;
    std::string_view text;
    Kind kind;
    std::string_view name = {};
    bool isEmpty = false;
};

// Each text is one token. The test puts it between two tags, except for declarations.
const TokenCase TokenCases[] = {
    {"text", "x > 'y \" ]]", Kind::Text},
    {"references", "&lt;&e;&#10;", Kind::Text},
    {"comment", "<!-- > <b> -- \" ' -->", Kind::Comment},
    {"empty comment", "<!---->", Kind::Comment},
    {"comment that begins with an angle bracket", "<!-->x-->", Kind::Comment},
    {"CDATA section", "<![CDATA[ <b> ]] > ]]>", Kind::CData},
    {"empty CDATA section", "<![CDATA[]]>", Kind::CData},
    {"processing instruction", "<?p > <b> ' ?>", Kind::ProcessingInstruction},
    {"processing instruction without data", "<?p?>", Kind::ProcessingInstruction},
    {"processing instruction whose name begins with xml", "<?xml-stylesheet href='x'?>", Kind::ProcessingInstruction},
    {"start tag", "<b>", Kind::StartTag, "b"},
    {"start tag with white space", "<b\r\n\t >", Kind::StartTag, "b"},
    {"start tag with angle brackets in values", "<b c='/>' d=\">'\">", Kind::StartTag, "b"},
    {"start tag that ends with a slash in a value", "<b c='/'>", Kind::StartTag, "b"},
    {"empty tag", "<b/>", Kind::StartTag, "b", true},
    {"empty tag with an attribute", "<b c='>' />", Kind::StartTag, "b", true},
    {"name with a colon", "<:b:c/>", Kind::StartTag, ":b:c", true},
    {"name with characters that share bytes with line ends",
        "<\u00E2\u0084\u2029x/>",
        Kind::StartTag,
        "\u00E2\u0084\u2029x",
        true},
    {"name before U+0085", "<b\u0085c='1'>", Kind::StartTag, "b"},
    {"name before U+2028", "<b\u2028/>", Kind::StartTag, "b", true},
    {"end tag", "</b>", Kind::EndTag, "b"},
    {"end tag with white space", "</b\n\t>", Kind::EndTag, "b"},
    {"end tag with U+0085", "</b\u0085>", Kind::EndTag, "b"},
};

TEST(XMLTokenReaderTest, RecognizesEachKindBetweenTags)
{
    for (const TokenCase& row : TokenCases) {
        SCOPED_TRACE(row.description);
        const std::string text = "<a>" + std::string(row.text) + "</a>";
        const std::vector<XMLToken> tokens = ReadTokens(text);
        ASSERT_EQ(tokens.size(), 3u);
        EXPECT_EQ(tokens[1].kind, row.kind);
        EXPECT_EQ(tokens[1].text, row.text);
        EXPECT_EQ(tokens[1].name, row.name);
        EXPECT_EQ(tokens[1].isEmpty, row.isEmpty);
    }
}

struct DocumentTypeCase {
    const char* description;
    std::string_view text;
};

const DocumentTypeCase DocumentTypeCases[] = {
    {"only a name", "<!DOCTYPE a>"},
    {"an angle bracket in a system identifier", "<!DOCTYPE a SYSTEM 'x>y'>"},
    {"brackets in identifiers", "<!DOCTYPE a PUBLIC \"[>'\" '\"]>'>"},
    {"an empty subset", "<!DOCTYPE a []>"},
    {"white space behind the subset", "<!DOCTYPE a [ ]\r\n>"},
    {"declarations", "<!DOCTYPE a [<!ELEMENT a (b|c)*><!ATTLIST a b CDATA 'x'>]>"},
    {"brackets in an entity", "<!DOCTYPE a [<!ENTITY e ']>\"<!--'>]>"},
    {"brackets and quotes in a comment", "<!DOCTYPE a [<!-- ]> ' \" -->]>"},
    {"brackets and quotes in a processing instruction", "<!DOCTYPE a [<?p ]> ' \" ?>]>"},
    {"a comment before a quote", "<!DOCTYPE a [<!-- it's --><!ENTITY e 'x'>]>"},
};

TEST(XMLTokenReaderTest, FindsTheEndOfTheDocumentType)
{
    for (const DocumentTypeCase& row : DocumentTypeCases) {
        SCOPED_TRACE(row.description);
        const std::string text = std::string(row.text) + "<a/>";
        const std::vector<XMLToken> tokens = ReadTokens(text);
        ASSERT_EQ(tokens.size(), 2u);
        EXPECT_EQ(tokens[0].kind, Kind::DocumentType);
        EXPECT_EQ(tokens[0].text, row.text);
    }
}

TEST(XMLTokenReaderTest, DeclarationEndsBehindItsQuotes)
{
    EXPECT_EQ(ReadTokens("<?xml version='1.0?>' encoding = \"UTF-8\" ?><a/>")[0].text,
        "<?xml version='1.0?>' encoding = \"UTF-8\" ?>");
    EXPECT_EQ(ReadTokens("<?xml version='1.0?><a b='?>'/>")[0].text, "<?xml version='1.0?><a b='?>");
    EXPECT_EQ(ReadTokens("<?xml version='1.0?><a/>")[0].text, "<?xml version='1.0?>");
    EXPECT_EQ(ReadTokens("<?xml?><a/>")[0].text, "<?xml?>");
    EXPECT_EQ(ReadTokens("<?xml version?><a b='?>'/>")[0].text, "<?xml version?>");
}

TEST(XMLTokenReaderTest, RecognizesOnlyTheFirstMarkupAsDeclaration)
{
    EXPECT_EQ(ReadTokens("<?xml version='1.0'?><a/>")[0].kind, Kind::Declaration);
    EXPECT_EQ(ReadTokens(" \n<?xml version='1.0'?><a/>")[1].kind, Kind::Declaration);
    EXPECT_EQ(ReadTokens("<!--x--><?xml version='1.0'?><a/>")[1].kind, Kind::ProcessingInstruction);
    EXPECT_EQ(ReadTokens("<?xmlx version='1.0'?><a/>")[0].kind, Kind::ProcessingInstruction);
}

TEST(XMLTokenReaderTest, ReturnsNoTokenForAnEmptyText)
{
    EXPECT_TRUE(ReadTokens("").empty());
}

TEST(XMLTokenReaderTest, LeavesTheTokenUnchangedAtTheEnd)
{
    XMLTokenReader reader("<a>");
    XMLToken token;
    ASSERT_TRUE(reader.Next(token));
    EXPECT_FALSE(reader.Next(token));
    EXPECT_FALSE(reader.Next(token));
    EXPECT_EQ(token.text, "<a>");
}

TEST(XMLTokenReaderTest, ReturnsTheOffsetOfAPart)
{
    const std::string text = "<a><b c='d'/></a>";
    XMLTokenReader reader(text);
    XMLToken token;
    ASSERT_TRUE(reader.Next(token));
    ASSERT_TRUE(reader.Next(token));
    EXPECT_EQ(reader.OffsetOf(token.text), 3u);
    EXPECT_EQ(reader.OffsetOf(token.name), 4u);
}

TEST(XMLTokenReaderTest, EndsAnOpenTokenWithTheText)
{
    for (const char* text : {"<",
             "<!",
             "<!-",
             "<!--",
             "<!--->",
             "<![CDATA[",
             "<![CDATA[]]",
             "<?",
             "<?xml",
             "<?p?",
             "</",
             "</a",
             "<a",
             "<a b",
             "<a b='>",
             "<a b=\"'>",
             "<!DOCTYPE a [",
             "<!DOCTYPE a [<!--",
             "<!DOCTYPE a [']>",
             "<!DOCTYPE a [<?p ]>"}) {
        SCOPED_TRACE(text);
        const std::vector<XMLToken> tokens = ReadTokens(text);
        ASSERT_EQ(tokens.size(), 1u);
        EXPECT_EQ(tokens[0].text, text);
    }
}

// Joins pieces that matter to the reader with random bytes.
std::string MakeRandomText(std::mt19937& random)
{
    static constexpr std::string_view Pieces[] = {"<",
        ">",
        "/",
        "</",
        "/>",
        "<!--",
        "-->",
        "<![CDATA[",
        "]]>",
        "<!",
        "<!DOCTYPE",
        "[",
        "]",
        "<?",
        "?>",
        "<?xml",
        "'",
        "\"",
        "=",
        " ",
        "\r\n",
        "&",
        ";",
        "a",
        ":",
        "\xC2\x85",
        "\xE2\x80\xA8",
        "\xC2",
        "\xE2\x80"};
    std::string text;
    for (auto count = random() % 30; count > 0; --count) {
        const std::size_t choice = random() % (std::size(Pieces) + 1);
        if (choice == std::size(Pieces))
            text += static_cast<char>(random() % 256);
        else
            text += Pieces[choice];
    }
    return text;
}

TEST(XMLTokenReaderTest, TokensCoverRandomBytesWithoutGaps)
{
    std::mt19937 random(12);
    for (int i = 0; i < 50000; ++i) {
        const std::string text = MakeRandomText(random);
        std::size_t end = 0;
        for (const XMLToken& token : ReadTokens(text)) {
            ASSERT_FALSE(token.text.empty()) << text;
            ASSERT_EQ(static_cast<std::size_t>(token.text.data() - text.data()), end) << text;
            end += token.text.size();
        }
        ASSERT_EQ(end, text.size()) << text;
    }
}

TEST(XMLAttributeReaderTest, StaysWithinTheTokenForRandomBytes)
{
    std::mt19937 random(13);
    for (int i = 0; i < 50000; ++i) {
        const std::string text = "<a " + MakeRandomText(random);
        const XMLToken tag = ReadTokens(text).at(0);
        XMLAttributeReader reader(tag);
        XMLAttributeToken attribute;
        const char* end = tag.text.data();
        while (reader.Next(attribute)) {
            ASSERT_FALSE(attribute.name.empty()) << text;
            ASSERT_GE(attribute.text.data(), end) << text;
            end = attribute.text.data() + attribute.text.size();
            ASSERT_LE(end, tag.text.data() + tag.text.size()) << text;
        }
    }
}

TEST(XMLAttributeReaderTest, ReadsAttributesInTheOrderOfTheTag)
{
    using Attributes = std::vector<AttributeText>;
    EXPECT_EQ(ReadAttributes("<a>"), Attributes{});
    EXPECT_EQ(ReadAttributes("<a/>"), Attributes{});
    EXPECT_EQ(ReadAttributes("<a />"), Attributes{});
    EXPECT_EQ(ReadAttributes("<a c='1' b=\"2\"/>"), (Attributes{{"c", "1", '\''}, {"b", "2", '"'}}));
    EXPECT_EQ(ReadAttributes("<a :b='' x:y='\">'>"), (Attributes{{":b", "", '\''}, {"x:y", "\">", '\''}}));
    EXPECT_EQ(ReadAttributes("<a\n b\t=\r\n' 1 '\n>"), (Attributes{{"b", " 1 ", '\''}}));
    EXPECT_EQ(ReadAttributes("<a b='&lt;&e;'>"), (Attributes{{"b", "&lt;&e;", '\''}}));
    EXPECT_EQ(ReadAttributes("<\u00E9 \u00E2\u0084='1'>"), (Attributes{{"\u00E2\u0084", "1", '\''}}));
    EXPECT_EQ(ReadAttributes("<a\u0085b\u2028=\u0085'\u2028'>"), (Attributes{{"b", "\u2028", '\''}}));
}

TEST(XMLAttributeReaderTest, ReadsThePartsOfTheDeclaration)
{
    EXPECT_EQ(ReadAttributes("<?xml version='1.0' encoding=\"utf-8\"?>"),
        (std::vector<AttributeText>{{"version", "1.0", '\''}, {"encoding", "utf-8", '"'}}));
}

TEST(XMLAttributeReaderTest, EndsAtTextThatIsNoAttribute)
{
    EXPECT_EQ(ReadAttributes("<a b='1' c d='2'>"), (std::vector<AttributeText>{{"b", "1", '\''}}));
    EXPECT_EQ(ReadAttributes("<a b=1>"), std::vector<AttributeText>{});
    EXPECT_EQ(ReadAttributes("<a b='1"), std::vector<AttributeText>{});
}

TEST(XMLAttributeReaderTest, ReturnsTheBytesFromTheNameToTheQuote)
{
    const std::string text = "<a  b = '1'  />";
    XMLAttributeReader reader(ReadTokens(text).at(0));
    XMLAttributeToken attribute;
    ASSERT_TRUE(reader.Next(attribute));
    EXPECT_EQ(attribute.text, "b = '1'");
}

}  // namespace
