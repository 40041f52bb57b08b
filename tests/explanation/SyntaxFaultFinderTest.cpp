#include "vancorexml/main/parser/SyntaxFaultFinder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <QDirIterator>
#include <QFile>

#include "tests/common/TestSupport.h"
#include "tests/editing/RandomDocument.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

struct Row {
    const char* name;
    std::string document;
    const char* fault;  // see Describe
};

// Returns the fault with all its parts, such as:
//     bad-value at 10 [text from start to end]
//     message
//     attribute: name
//     at 3: related message
std::string Describe(const std::string& text)
{
    const std::optional<SyntaxFault> fault = FindSyntaxFault(text);
    if (!fault)
        return "nothing";
    std::string description = std::string(GetDiagnosticName(fault->code)) + " at " + std::to_string(fault->start) +
        " [" + text.substr(fault->start, fault->end - fault->start) + "]\n" + fault->message.toStdString();
    const auto append = [&](const char* label, const VString& part) {
        if (!part.IsEmpty())
            description += std::string("\n") + label + ": " + part.toStdString();
    };
    append("attribute", fault->attribute);
    append("value", fault->value);
    append("suggestion", fault->suggestion);
    if (fault->relatedStart != std::string_view::npos) {
        description += "\nat " + std::to_string(fault->relatedStart) + ": " + fault->relatedMessage.toStdString();
    }
    return description;
}

void ExpectFaults(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Describe(row.document), row.fault);
    }
}

class IgnoringHandler : public SAXInterface {
public:
    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}
};

// True if the parser refuses the document. It skips white space in front of the document.
bool IsRefused(const std::string& text)
{
    Utf8InputSource source(text, "test", true);
    const std::unique_ptr<XercesXMLParser> parser =
        XercesXMLParser::Create(source, std::make_shared<IgnoringHandler>());
    parser->Parse();
    return parser->HasErrors();
}

std::vector<std::string> ReadFiles(const char* folder)
{
    std::vector<std::string> texts;
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        texts.push_back(file.readAll().toStdString());
    }
    return texts;
}

std::string Repeat(const std::string& text, std::size_t count)
{
    std::string repeated;
    repeated.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

// Returns a document with entities of which each contains the next. `last` is the text of the last one.
std::string MakeEntityChain(std::size_t count, const std::string& last)
{
    std::string document = "<!DOCTYPE a [";
    for (std::size_t i = 0; i < count; ++i) {
        document += "<!ENTITY e" + std::to_string(i) + " '" +
            (i + 1 == count ? last : "&e" + std::to_string(i + 1) + ";") + "'>";
    }
    return document + "]><a>&e0;</a>";
}

// Documents with the parts that the scanner must tell apart.
const std::vector<std::string>& Seeds()
{
    static const std::vector<std::string> seeds{
        "<?xml version=\"1.0\" encoding='UTF-8'?>\n<!-- c --><?p data?>\n"
        "<a k=\"1\" j='2'>text &amp; &#65;&#x42;<b c=\"x &lt; y\" d = 'z>'/><c :e=\"f\"/>\n"
        "<![CDATA[ <x> ]] > ]]><!-- x - y --><?p q?>\n<c><d>t</d><d >u</d></c ></a>\n<!-- end -->\n",
        "<!DOCTYPE a [<!ENTITY x \"plain\"><!ENTITY y '<b/>'><!-- ' -->]><a>&x;&y;<b>&x;</b></a>",
        "<?xml version='1.0' standalone='yes'?><ä ö=\"€\">ß<b c=\"d>e\" f=\"g=\">h</b><b c=\"i j=\" k=\"l\"/></ä>",
        "<a/>",
    };
    return seeds;
}

}  // namespace

TEST(SyntaxFaultFinderTest, DescribesDocumentsWithoutRoot)
{
    ExpectFaults({
        {"empty",
            "",
            "empty-document at 0 []\n"
            "the file is empty; an XML document needs a root element"},
        {"blank",
            "  \n",
            "empty-document at 0 []\n"
            "the file contains only white space; an XML document needs a root element"},
        {"only comments",
            "<!-- a -->\n<?p?>\n",
            "empty-document at 16 []\n"
            "the document has no root element; add one"},
        {"only a declaration",
            R"(<?xml version="1.0"?>)",
            "empty-document at 21 []\n"
            "the document has no root element; add one"},
        {"only a document type",
            "<!DOCTYPE a>",
            "empty-document at 12 []\n"
            "the document has no root element; add one"},
    });
}

TEST(SyntaxFaultFinderTest, RecognizesOtherFormats)
{
    ExpectFaults({
        {"ZIP archive",
            "PK\x03\x04"
            "abc",
            "not-xml at 0 [P]\n"
            "the file is a ZIP archive, not XML; unpack it first"},
        {"empty ZIP archive",
            "PK\x05\x06",
            "not-xml at 0 [P]\n"
            "the file is a ZIP archive, not XML; unpack it first"},
        {"gzip archive",
            "\x1F\x8B\x08",
            "not-xml at 0 [\x1F]\n"
            "the file is a gzip archive, not XML; unpack it first"},
        {"PDF",
            "%PDF-1.7\n",
            "not-xml at 0 [%]\n"
            "the file is a PDF document, not XML"},
        {"RTF",
            "{\\rtf1 text}",
            "not-xml at 0 [{]\n"
            "the file is an RTF document, not XML"},
        {"PNG",
            "\x89PNG\r\n",
            "not-xml at 0 [\x89]\n"
            "the file is a PNG image, not XML"},
        {"binary data",
            "a\x01"
            "b",
            "not-xml at 0 [a]\n"
            "the file is binary data, not XML"},
        {"JSON object",
            "\n"
            R"( {"a": "<b/>"})",
            "not-xml at 2 [{]\n"
            "the file is JSON, not XML"},
        {"JSON array",
            "[1, 2]",
            "not-xml at 0 [[]\n"
            "the file is JSON, not XML"},
        {"JSON list of names",
            "[true]",
            "not-xml at 0 [[]\n"
            "the file is JSON, not XML"},
        {"INI",
            "[general]\nname=a\n",
            "not-xml at 0 [[]\n"
            "the file is an INI file, not XML"},
        {"YAML",
            "name: a\nsize: 1\n",
            "not-xml at 0 [n]\n"
            "the file is YAML, not XML"},
        {"YAML document",
            "---\n- a\n",
            "not-xml at 0 [-]\n"
            "the file is YAML, not XML"},
        {"table",
            "id;name\n1;a\n",
            "not-xml at 0 [i]\n"
            "the file is a table of values (CSV), not XML"},
        {"plain text",
            "Hello world",
            "not-xml at 0 [H]\n"
            "the file is plain text, not XML"},
        {"text with a comparison",
            "a < b",
            "not-xml at 0 [a]\n"
            "the file is plain text, not XML"},
        {"HTML",
            "<!doctype html>\n<html><body></body></html>",
            "not-xml at 0 [<!doctype]\n"
            "the file is HTML, which is not XML; convert it to XHTML"},
        {"HTML with a type in capitals",
            "<!DOCTYPE html>\n<html><head><meta charset=utf-8></head></html>",
            "not-xml at 0 [<!DOCTYPE html>]\n"
            "the file is HTML, which is not XML; convert it to XHTML\n"
            "at 42: the first part that XML does not allow is"},
        {"HTML without a type",
            "<html>\n<body>a<br>b</body></html>",
            "not-xml at 0 [<html]\n"
            "the file is HTML, which is not XML; convert it to XHTML\n"
            "at 14: the first part that XML does not allow is"},
        {"HTML of version 4",
            "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\">\n<html></html>",
            "not-xml at 0 [<!DOCTYPE]\n"
            "the file is HTML, which is not XML; convert it to XHTML\n"
            "at 15: the first part that XML does not allow is"},
        {"XHTML is XML",
            "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" \"x.dtd\">\n<html><br></html>",
            "unclosed-element at 72 [<br>]\n"
            "element 'br' is not closed; XML needs '<br/>' where HTML has '<br>'\n"
            "at 76: '</html>' stands"},
        {"HTML in the namespace of XHTML is XML",
            R"(<html xmlns="http://www.w3.org/1999/xhtml"><br></html>)",
            "unclosed-element at 43 [<br>]\n"
            "element 'br' is not closed; XML needs '<br/>' where HTML has '<br>'\n"
            "at 47: '</html>' stands"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesTextOutsideOfTheRoot)
{
    ExpectFaults({
        {"before the root",
            "text <a></a>",
            "text-outside-root at 0 [text]\n"
            "the text 'text' is not allowed before the root element; remove it"},
        {"before the declaration",
            "x\n"
            R"(<?xml version="1.0"?><a/>)",
            "text-outside-root at 0 [x]\n"
            "the document begins with other output, 'x'; remove it, because '<?xml' must stand at the very start"},
        {"invisible text before the root",
            "\uFEFF<a/>",
            "text-outside-root at 0 [\uFEFF]\n"
            "the invisible character U+FEFF is not allowed before the root element; remove it"},
        {"after the root",
            "<a>\n</a>\n text \n<!-- -->",
            "text-outside-root at 10 [text]\n"
            "the text 'text' is not allowed after the root element; remove it, or move it before '</a>'\n"
            "at 4: element 'a' was closed"},
        {"reference after the root",
            "<a/>&amp;",
            "text-outside-root at 4 [&amp;]\n"
            "the text '&amp;' is not allowed after the root element; remove it, or move it before '</a>'\n"
            "at 0: element 'a' was closed"},
        {"CDATA before the root",
            "<![CDATA[x]]><a/>",
            "text-outside-root at 0 [<![CDATA[]\n"
            "a CDATA section is allowed only inside an element"},
        {"CDATA after the root",
            "<a/><![CDATA[x]]>",
            "text-outside-root at 4 [<![CDATA[]\n"
            "a CDATA section is allowed only inside an element"},
        {"second root",
            "<a></a>\n"
            R"(<b x="1"/>)",
            "second-root at 8 [<b]\n"
            "a document has only one root element; put 'b' into 'a', or both into a new element\n"
            "at 3: element 'a' was closed"},
        {"second root after an empty one",
            "<a/><a/>",
            "second-root at 4 [<a]\n"
            "a document has only one root element; put 'a' into 'a', or both into a new element\n"
            "at 0: element 'a' was closed"},
        {"second root with a fault of its own",
            "<a/><b c=d>",
            "second-root at 4 [<b]\n"
            "a document has only one root element; put 'b' into 'a', or both into a new element\n"
            "at 0: element 'a' was closed"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesXmlDeclarations)
{
    ExpectFaults({
        {"behind a comment",
            R"(<!-- --><?xml version="1.0"?><a/>)",
            "misplaced-declaration at 8 [<?xml]\n"
            "the XML declaration must stand at the very start of the document; move it there or remove it"},
        {"inside an element",
            R"(<a><?xml version="1.0"?></a>)",
            "misplaced-declaration at 3 [<?xml]\n"
            "the XML declaration must stand at the very start of the document; move it there or remove it"},
        {"second one",
            "<?xml version=\"1.0\"?>\n"
            R"(<?xml version="1.0"?><a/>)",
            "misplaced-declaration at 22 [<?xml]\n"
            "a second XML declaration is not allowed; remove it\n"
            "at 0: the first one stands"},
        {"of a second document",
            "<?xml version=\"1.0\"?><a/>\n"
            R"(<?xml version="1.0"?><a/>)",
            "misplaced-declaration at 26 [<?xml]\n"
            "a second XML declaration: the file contains two documents; split it\n"
            "at 0: the first one stands"},
        {"in capitals",
            R"(<?XML version="1.0"?><a/>)",
            "bad-declaration at 0 [<?XML]\n"
            "the XML declaration must begin with '<?xml', in small letters"},
        {"no parts",
            "<?xml?><a/>",
            "bad-declaration at 0 [<?xml?>]\n"
            R"(the XML declaration must begin with the version: write '<?xml version="1.0"?>')"},
        {"no version",
            R"(<?xml encoding="UTF-8"?><a/>)",
            "bad-declaration at 6 [encoding]\n"
            R"(the XML declaration must begin with the version: write version="1.0" before 'encoding')"},
        {"wrong order",
            R"(<?xml version="1.0" standalone="yes" encoding="UTF-8"?><a/>)",
            "bad-declaration at 37 [encoding]\n"
            "'encoding' stands at the wrong place in the XML declaration; the order is version, encoding, "
            "standalone"},
        {"part twice",
            R"(<?xml version="1.0" version="1.0"?><a/>)",
            "bad-declaration at 20 [version]\n"
            "'version' appears twice in the XML declaration; remove one"},
        {"misspelt part",
            R"(<?xml version="1.0" encodng="UTF-8"?><a/>)",
            "bad-declaration at 20 [encodng]\n"
            "'encodng' is not allowed in the XML declaration; did you mean 'encoding'?\n"
            "suggestion: encoding"},
        {"part in other case",
            R"(<?xml version="1.0" Encoding="UTF-8"?><a/>)",
            "bad-declaration at 20 [Encoding]\n"
            "'Encoding' is not allowed in the XML declaration; did you mean 'encoding'?\n"
            "suggestion: encoding"},
        {"unknown part",
            R"(<?xml version="1.0" author="me"?><a/>)",
            "bad-declaration at 20 [author]\n"
            "'author' is not allowed in the XML declaration; only version, encoding and standalone are"},
        {"no blank",
            R"(<?xml version="1.0"encoding="UTF-8"?><a/>)",
            "bad-declaration at 19 [encoding]\n"
            "a blank is missing before 'encoding' in the XML declaration"},
        {"no equals sign",
            R"(<?xml version "1.0"?><a/>)",
            "bad-declaration at 6 [version]\n"
            R"('=' is missing after 'version' in the XML declaration; write version="1.0")"},
        {"no quotes",
            "<?xml version=1.0?><a/>",
            "bad-declaration at 6 [version=]\n"
            R"(the value of 'version' in the XML declaration must stand in quotes; write version="1.0")"},
        {"typographic quotes",
            "<?xml version=“1.0”?><a/>",
            "bad-declaration at 6 [version=]\n"
            R"(the value of 'version' in the XML declaration must stand in quotes; write version="1.0")"},
        {"no closing quote",
            R"(<?xml version="1.0?><a/>)",
            "bad-declaration at 6 [version=\"1.0?]\n"
            R"(the value of 'version' in the XML declaration has no closing quote; write version="1.0")"},
        {"a fault behind a version with the end of an instruction",
            "<?xml version='1.0?>' encoding='UTF 8'?><a/>",
            "unknown-encoding at 32 [UTF 8]\n"
            "'UTF 8' is not the name of an encoding; write for example encoding=\"UTF-8\"\n"
            "value: UTF 8"},
        {"unknown version",
            R"(<?xml version="2.0"?><a/>)",
            "bad-declaration at 15 [2.0]\n"
            "XML has no version '2.0'; write version=\"1.0\"\n"
            "value: 2.0"},
        {"bad standalone",
            R"(<?xml version="1.0" standalone="YES"?><a/>)",
            "bad-declaration at 32 [YES]\n"
            "the value of 'standalone' must be 'yes' or 'no', not 'YES'\n"
            "value: YES"},
        {"empty encoding",
            R"(<?xml version="1.0" encoding=""?><a/>)",
            "unknown-encoding at 30 []\n"
            R"('' is not the name of an encoding; write for example encoding="UTF-8")"},
        {"bad encoding",
            R"(<?xml version="1.0" encoding="UTF 8"?><a/>)",
            "unknown-encoding at 30 [UTF 8]\n"
            "'UTF 8' is not the name of an encoding; write for example encoding=\"UTF-8\"\n"
            "value: UTF 8"},
        {"no question mark",
            R"(<?xml version="1.0"><a/>)",
            "bad-declaration at 19 [>]\n"
            "the XML declaration must end with '?>'"},
        {"slash in place of the question mark",
            R"(<?xml version="1.0"/><a/>)",
            "bad-declaration at 19 [/>]\n"
            "the XML declaration must end with '?>'"},
        {"not closed",
            "<?xml version=\"1.0\"\n<a/>",
            "bad-declaration at 0 [<?xml version=\"1.0\"]\n"
            "the XML declaration is not closed; add '?>'"},
        {"comma",
            R"(<?xml version="1.0", encoding="UTF-8"?><a/>)",
            "bad-declaration at 19 [,]\n"
            "',' is not allowed in the XML declaration"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesDocumentTypes)
{
    ExpectFaults({
        {"small letters",
            "<!doctype a><a/>",
            "bad-document-type at 0 [<!doctype]\n"
            "'<!DOCTYPE' must be written in capital letters"},
        {"no name",
            "<!DOCTYPE><a/>",
            "bad-document-type at 0 [<!DOCTYPE]\n"
            "the name of the root element is missing after '<!DOCTYPE'"},
        {"no blank",
            "<!DOCTYPEa><a/>",
            "bad-document-type at 0 [<!DOCTYPE]\n"
            "a blank is missing after '<!DOCTYPE'"},
        {"not closed",
            "<!DOCTYPE a <a/>",
            "bad-document-type at 0 [<!DOCTYPE a]\n"
            "the document type is not closed; add '>'"},
        {"subset not closed",
            "<!DOCTYPE a [<!ELEMENT a ANY>\n<a/>",
            "bad-document-type at 30 [<]\n"
            "the document type is not closed before this tag; add ']>'\n"
            "at 0: the document type began"},
        {"subset not closed at the end",
            "<!DOCTYPE a [<!ELEMENT a ANY>",
            "bad-document-type at 0 [<!DOCTYPE a [<!ELEMENT a ANY>]\n"
            "the document type is not closed; add ']>'"},
        {"keyword in small letters",
            R"(<!DOCTYPE a system "x"><a/>)",
            "bad-document-type at 12 [system]\n"
            "'system' is not allowed in the document type; write SYSTEM or PUBLIC, in capital letters, or remove "
            "it"},
        {"no location",
            "<!DOCTYPE a SYSTEM><a/>",
            "bad-document-type at 12 [SYSTEM]\n"
            "SYSTEM must be followed by a location in quotes"},
        {"no location of a public type",
            R"(<!DOCTYPE a PUBLIC "x"><a/>)",
            "bad-document-type at 12 [PUBLIC]\n"
            "PUBLIC must be followed by a name and a location, each in quotes"},
        {"location not closed",
            R"(<!DOCTYPE a SYSTEM "x><a/>)",
            "bad-document-type at 19 [\"]\n"
            "a quote in the document type is not closed"},
        {"location without quotes",
            "<!DOCTYPE a SYSTEM x><a/>",
            "bad-document-type at 12 [SYSTEM]\n"
            "SYSTEM must be followed by a location in quotes"},
        {"other character",
            R"(<!DOCTYPE a "x"><a/>)",
            "bad-document-type at 12 [\"]\n"
            R"('"' is not allowed in the document type; remove it)"},
        {"misspelt declaration",
            R"(<!DOCTYPE a [<!ENTTY b "c">]><a/>)",
            "bad-document-type at 13 [<!ENTTY]\n"
            "'<!ENTTY' is not allowed in the document type; did you mean '<!ENTITY'?\n"
            "suggestion: <!ENTITY"},
        {"unknown declaration",
            "<!DOCTYPE a [<!FOO b>]><a/>",
            "bad-document-type at 13 [<!FOO]\n"
            "'<!FOO' is not allowed in the document type"},
        {"comment in the subset",
            "<!DOCTYPE a [<!-- a -- b -->]><a/>",
            "bad-comment at 20 [--]\n"
            "'--' is not allowed inside a comment; write '- -' or '-', or close the comment with '-->'"},
        {"after the root",
            "<a/><!DOCTYPE a>",
            "bad-document-type at 4 [<!DOCTYPE]\n"
            "the document type must stand before the first element\n"
            "at 0: element 'a' was opened"},
        {"inside the root",
            "<a><!DOCTYPE a></a>",
            "bad-document-type at 3 [<!DOCTYPE]\n"
            "the document type must stand before the first element\n"
            "at 0: element 'a' was opened"},
        {"second one",
            "<!DOCTYPE a>\n<!DOCTYPE a><a/>",
            "bad-document-type at 13 [<!DOCTYPE]\n"
            "a document has only one document type; remove the second one\n"
            "at 0: the first one began"},
        {"declaration outside",
            "<a><!ELEMENT a ANY></a>",
            "bad-document-type at 3 [<!ELEMENT]\n"
            "'<!ELEMENT' is allowed only between '[' and ']' of '<!DOCTYPE'"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesElementsThatAreNotClosed)
{
    ExpectFaults({
        {"root",
            "<a>\n  text\n",
            "unclosed-element at 10 []\n"
            "the document ends, but element 'a' is still open; add '</a>'\n"
            "at 0: element 'a' was opened"},
        {"of one name at the end",
            "<a><a><a>",
            "unclosed-element at 9 []\n"
            "the document ends, but 3 elements 'a' are still open; each needs '</a>'\n"
            "at 6: element 'a' was opened"},
        {"several",
            "<a><b><c>",
            "unclosed-element at 9 []\n"
            "the document ends, but elements 'c', 'b' and 'a' are still open; add '</c></b></a>'\n"
            "at 6: element 'c' was opened"},
        {"many",
            "<a><b><c><d><e>",
            "unclosed-element at 15 []\n"
            "the document ends, but elements 'e', 'd', 'c' and 2 more are still open; add '</e></d></c>...'\n"
            "at 12: element 'e' was opened"},
        {"in another element",
            "<a>\n<b></a>",
            "unclosed-element at 7 [</a>]\n"
            "element 'b' is still open; add '</b>' before '</a>'\n"
            "at 4: element 'b' was opened"},
        {"two in another element",
            "<a><b><c></a>",
            "unclosed-element at 9 [</a>]\n"
            "elements 'c' and 'b' are still open; add '</c></b>' before '</a>'\n"
            "at 6: element 'c' was opened"},
        {"of the same name",
            "<a><b>1<b>2</b></a>",
            "unclosed-element at 15 [</a>]\n"
            "element 'b' is still open; add '</b>' before '</a>'\n"
            "at 3: element 'b' was opened"},
        {"crossed",
            "<b><i>text</b></i>",
            "mismatched-end-tag at 10 [</b>]\n"
            "the elements 'i' and 'b' overlap; write '</i>' before '</b>'\n"
            "at 3: element 'i' was opened"},
        {"of which only the last has no end",
            "<a>\n<b>1</b>\n<b>2\n<b>3</b>\n</a>",
            "unclosed-element at 27 [</a>]\n"
            "element 'b' is still open; add '</b>' before '</a>'\n"
            "at 13: element 'b' was opened"},
        {"slash missing",
            "<a><b>text<b></a>",
            "unclosed-element at 10 [<b>]\n"
            "element 'b' is not closed; write '</b>' in place of '<b>'\n"
            "at 3: element 'b' was opened"},
        {"slash missing before another element",
            "<a>\n<name>A<name>\n<age>1</age>\n</a>",
            "unclosed-element at 11 [<name>]\n"
            "element 'name' is not closed; write '</name>' in place of '<name>'\n"
            "at 4: element 'name' was opened"},
        {"slash missing at the end",
            "<a>text<a>",
            "unclosed-element at 7 [<a>]\n"
            "element 'a' is not closed; write '</a>' in place of '<a>'\n"
            "at 0: element 'a' was opened"},
        {"slash at the wrong place",
            "<a><b>text<b/></a>",
            "unclosed-element at 10 [<b/>]\n"
            "element 'b' is not closed; write '</b>' in place of '<b/>'\n"
            "at 3: element 'b' was opened"},
        {"same name without a missing slash",
            "<ul><li>1<li>2</ul>",
            "unclosed-element at 14 [</ul>]\n"
            "2 elements 'li' are still open; each needs '</li>' before '</ul>'\n"
            "at 9: element 'li' was opened"},
        {"HTML element",
            "<a>x<br>y</a>",
            "unclosed-element at 4 [<br>]\n"
            "element 'br' is not closed; XML needs '<br/>' where HTML has '<br>'\n"
            "at 9: '</a>' stands"},
        {"HTML element with an attribute",
            R"(<a><img src="x"></a>)",
            "unclosed-element at 3 [<img]\n"
            "element 'img' is not closed; XML needs '<img/>' where HTML has '<img>'\n"
            "at 16: '</a>' stands"},
        {"HTML element at the end",
            "<a><br>",
            "unclosed-element at 3 [<br>]\n"
            "element 'br' is not closed; XML needs '<br/>' where HTML has '<br>'"},
        {"long names",
            "<a><bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb></a>",
            "unclosed-element at 54 [</a>]\n"
            "element 'bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb…' is still open; add "
            "'</bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb…>' before '</a>'\n"
            "at 3: element 'bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb…' was opened"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesEndTagsThatDoNotFit)
{
    ExpectFaults({
        {"misspelt",
            "<a><item></itme></a>",
            "mismatched-end-tag at 9 [</itme>]\n"
            "the end tag '</itme>' does not fit the open element 'item'; did you mean '</item>'?\n"
            "value: itme\n"
            "suggestion: item\n"
            "at 3: element 'item' was opened"},
        {"other case",
            "<a><Item></item></a>",
            "mismatched-end-tag at 9 [</item>]\n"
            "the end tag '</item>' does not fit the open element 'Item'; did you mean '</Item>'?\n"
            "value: item\n"
            "suggestion: Item\n"
            "at 3: element 'Item' was opened"},
        {"misspelt name of the root",
            "<order></ordr>",
            "mismatched-end-tag at 7 [</ordr>]\n"
            "the end tag '</ordr>' does not fit the open element 'order'; did you mean '</order>'?\n"
            "value: ordr\n"
            "suggestion: order\n"
            "at 0: element 'order' was opened"},
        {"like an outer name",
            "<items><item>1</items><item>2</item></items>",
            "mismatched-end-tag at 14 [</items>]\n"
            "the end tag '</items>' does not fit the open element 'item'; did you mean '</item>'?\n"
            "value: items\n"
            "suggestion: item\n"
            "at 7: element 'item' was opened"},
        {"like an outer name at the end",
            "<x><items><item>1</items></items></x>",
            "mismatched-end-tag at 17 [</items>]\n"
            "the end tag '</items>' does not fit the open element 'item'; did you mean '</item>'?\n"
            "value: items\n"
            "suggestion: item\n"
            "at 10: element 'item' was opened"},
        {"outer name that is similar",
            "<items><item>1</items>",
            "unclosed-element at 14 [</items>]\n"
            "element 'item' is still open; add '</item>' before '</items>'\n"
            "at 7: element 'item' was opened"},
        {"other name",
            "<a><b></c></a>",
            "mismatched-end-tag at 6 [</c>]\n"
            "the end tag '</c>' does not fit the open element 'b', which needs '</b>'\n"
            "value: c\n"
            "at 3: element 'b' was opened"},
        {"superfluous",
            "<a><b></c></b></a>",
            "unexpected-end-tag at 6 [</c>]\n"
            "the end tag '</c>' has no start tag; remove it\n"
            "at 3: element 'b' was opened"},
        {"closed twice",
            "<a><b></b></b></a>",
            "unexpected-end-tag at 10 [</b>]\n"
            "the end tag '</b>' has no start tag; remove it\n"
            "at 6: element 'b' was closed"},
        {"root closed twice",
            "<a></a></a>",
            "unexpected-end-tag at 7 [</a>]\n"
            "the end tag '</a>' has no start tag; remove it\n"
            "at 3: element 'a' was closed"},
        {"empty root closed",
            "<a/></a>",
            "unexpected-end-tag at 4 [</a>]\n"
            "the end tag '</a>' has no start tag; remove it\n"
            "at 0: element 'a' was closed"},
        {"no start tag",
            "</a>",
            "unexpected-end-tag at 0 [</a>]\n"
            "the end tag '</a>' has no start tag; remove it"},
        {"attributes",
            R"(<a></a b="c">)",
            "malformed-tag at 7 [b]\n"
            "an end tag must not have attributes; write '</a>'"},
        {"slash",
            "<a></a/>",
            "malformed-tag at 6 [/>]\n"
            "an end tag must not end with '/>'; write '</a>'"},
        {"no name",
            "<a></>",
            "malformed-tag at 3 [</]\n"
            "the name of the element is missing after '</'"},
        {"blank before the name",
            "<a></ a>",
            "malformed-tag at 3 [</ ]\n"
            "a blank is not allowed between '</' and the name of the element"},
        {"not closed",
            "<a><b></b</a>",
            "malformed-tag at 6 [</b]\n"
            "the end tag of element 'b' is not closed; add '>'"},
        {"not closed at the end",
            "<a></a",
            "malformed-tag at 3 [</a]\n"
            "the end tag of element 'a' is not closed; add '>'"},
        {"wrong character",
            R"(<a></a"></a>)",
            "malformed-tag at 6 [\"]\n"
            R"('"' is not allowed in an end tag; write '</a>')"},
        {"misspelt and not closed",
            "<item></itme",
            "mismatched-end-tag at 6 [</itme]\n"
            "the end tag '</itme>' does not fit the open element 'item'; did you mean '</item>'?\n"
            "value: itme\n"
            "suggestion: item\n"
            "at 0: element 'item' was opened"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesMalformedTags)
{
    ExpectFaults({
        {"no end before the next tag",
            "<a><b\n c=\"1\"\n <d/></b></a>",
            "malformed-tag at 3 [<b\n"
            " c=\"1\"]\n"
            "the start tag of element 'b' is not closed; add '>'"},
        {"no end of the file",
            R"(<a b="c")",
            "malformed-tag at 0 [<a b=\"c\"]\n"
            "the document ends inside the start tag of element 'a'; the file may be cut off"},
        {"no end behind an attribute name",
            "<a b",
            "malformed-tag at 0 [<a b]\n"
            "the document ends inside the start tag of element 'a'; the file may be cut off"},
        {"name begins with a digit",
            "<a><1b/></a>",
            "malformed-tag at 3 [<1b]\n"
            "'1b' cannot be the name of an element; a name begins with a letter or '_'"},
        {"name begins with a hyphen",
            "<a><-b></-b></a>",
            "malformed-tag at 3 [<-b]\n"
            "'-b' cannot be the name of an element; a name begins with a letter or '_'"},
        {"blank before the name",
            "<a>< b/></a>",
            "malformed-tag at 3 [< b]\n"
            "a blank is not allowed between '<' and 'b'"},
        {"blank before the slash",
            "<a>< /a>",
            "malformed-tag at 3 [< /a]\n"
            "a blank is not allowed between '<' and '/a'"},
        {"no name",
            "<a><></a>",
            "malformed-tag at 3 [<]\n"
            "the name of the element is missing after '<'"},
        {"end of the file in place of a name",
            "<a><",
            "malformed-tag at 3 [<]\n"
            "the name of the element is missing after '<'"},
        {"blank in the closing characters",
            "<a / >",
            "malformed-tag at 3 [/ >]\n"
            "'/>' must not contain a blank"},
        {"slash inside",
            "<a/b>",
            "malformed-tag at 2 [/]\n"
            "'/' is allowed only at the end of a tag, as '/>'"},
        {"slash before the next tag",
            "<a><b /</a>",
            "malformed-tag at 6 [/]\n"
            "'>' is missing after '/'"},
        {"no blank between attributes",
            R"(<a b="1"c="2"/>)",
            "malformed-tag at 8 [c]\n"
            "a blank is missing before attribute 'c'\n"
            "attribute: c"},
        {"comma between attributes",
            R"(<a b="1", c="2"/>)",
            "malformed-tag at 8 [,]\n"
            "',' is not allowed in a tag; remove it"},
        {"attribute name begins with a digit",
            R"(<a 1b="c"/>)",
            "malformed-tag at 3 [1b]\n"
            "'1b' cannot be the name of an attribute; a name begins with a letter, '_' or ':'"},
        {"no attribute name",
            R"(<a ="c"/>)",
            "malformed-tag at 3 [=]\n"
            "the name of an attribute is missing before '='"},
        {"no attribute name and no equals sign",
            R"(<a "c"/>)",
            "malformed-tag at 3 [\"]\n"
            "the name of an attribute and '=' are missing before the value"},
        {"no equals sign",
            R"(<a b "c"/>)",
            "malformed-tag at 3 [b \"]\n"
            "'=' is missing between attribute 'b' and its value\n"
            "attribute: b"},
        {"two equals signs",
            R"(<a b=="c"/>)",
            "malformed-tag at 5 [=]\n"
            "only one '=' is allowed between attribute 'b' and its value\n"
            "attribute: b"},
        {"superfluous quote",
            R"(<a b="c""/>)",
            "malformed-tag at 8 [\"]\n"
            "there is one quote too many; remove it"},
        {"quotes inside a value",
            R"(<a b="say "hi" to"/>)",
            "malformed-tag at 10 [\"]\n"
            "the value of an attribute ends at this quote; write a quote inside a value as '&quot;'"},
        {"apostrophe inside a value",
            "<a b='don't'/>",
            "malformed-tag at 9 [']\n"
            "the value of an attribute ends at this quote; write a quote inside a value as '&apos;'"},
        {"no-break space between attributes",
            "<a b=\"1\"\u00A0c=\"2\"/>",
            "malformed-tag at 8 [\u00A0]\n"
            "the character U+00A0 is not allowed in a tag; write an ordinary blank"},
        {"control character",
            "<a b=\"1\" \x01/>",
            "invalid-character at 9 [\x01]\n"
            "the character U+0001 is not allowed in XML; remove it\n"
            "value: U+0001"},
        {"unknown declaration",
            "<a><!foo></a>",
            "malformed-tag at 3 [<!foo]\n"
            "'<!foo' is unknown; after '<!' only '--', 'DOCTYPE' and '[CDATA[' may follow"},
        {"CDATA in small letters",
            "<a><![cdata[x]]></a>",
            "malformed-tag at 3 [<![cdata[]\n"
            "'<![CDATA[' must be written in capital letters"},
        {"unknown section",
            "<a><![IF[x]]></a>",
            "malformed-tag at 3 [<![]\n"
            "only '<![CDATA[' may begin with '<!['; write '&lt;![' if this is text"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesAttributeValues)
{
    ExpectFaults({
        {"no value",
            "<a disabled></a>",
            "missing-value at 3 [disabled]\n"
            "attribute 'disabled' has no value; write 'disabled=\"...\"'\n"
            "attribute: disabled"},
        {"no value before another attribute",
            R"(<a b c="d"/>)",
            "missing-value at 3 [b]\n"
            "attribute 'b' has no value; write 'b=\"...\"'; a name cannot contain a blank\n"
            "attribute: b"},
        {"blank in a name",
            R"(<a first name="c"/>)",
            "missing-value at 3 [first]\n"
            "attribute 'first' has no value; write 'first=\"...\"'; a name cannot contain a blank\n"
            "attribute: first"},
        {"no value after the equals sign",
            "<a b= />",
            "missing-value at 3 [b=]\n"
            "attribute 'b' has no value after '='; write 'b=\"...\"'\n"
            "attribute: b"},
        {"no value before another tag",
            "<a b=<c/>",
            "missing-value at 3 [b=]\n"
            "attribute 'b' has no value after '='; write 'b=\"...\"'\n"
            "attribute: b"},
        {"no quotes",
            "<a b=c/>",
            "unquoted-value at 5 [c]\n"
            "the value of attribute 'b' must stand in quotes; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no quotes around an address",
            R"(<a b=http://x/y c="d"/>)",
            "unquoted-value at 5 [http://x/y]\n"
            "the value of attribute 'b' must stand in quotes; write 'b=\"http://x/y\"'\n"
            "attribute: b\n"
            "value: http://x/y"},
        {"no quotes at the end of a tag",
            "<a b=c>",
            "unquoted-value at 5 [c]\n"
            "the value of attribute 'b' must stand in quotes; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"typographic quotes",
            R"(<a b=“c d” e="f"/>)",
            "unquoted-value at 5 [“c d”]\n"
            "the value of attribute 'b' must stand in straight quotes, not in '“': write 'b=\"c d\"'\n"
            "attribute: b\n"
            "value: c d"},
        {"typographic apostrophes",
            "<a b=‘c’/>",
            "unquoted-value at 5 [‘c’]\n"
            "the value of attribute 'b' must stand in straight quotes, not in '‘': write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no opening quote",
            R"(<a b=c d"/>)",
            "unquoted-value at 5 [c d\"]\n"
            "the value of attribute 'b' has no opening quote; write 'b=\"c d\"'\n"
            "attribute: b\n"
            "value: c d"},
        {"no closing quote before an attribute",
            R"(<a b="c d="e"/>)",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no closing quote at the end of a tag",
            R"(<a b="c>text</a>)",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no closing quote at the end of an empty tag",
            R"(<a b="c/>)",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no closing quote before later tags",
            "<a>\n<b c=\"d>text</b>\n"
            R"(<b c="e">text</b></a>)",
            "unclosed-value at 7 [c=\"d]\n"
            "the value of attribute 'c' has no closing quote; write 'c=\"d\"'\n"
            "attribute: c\n"
            "value: d"},
        {"no closing quote before quoted text",
            R"(<a b="c>He said "hello".</a>)",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"no closing apostrophe",
            "<a b='c d='e'/>",
            "unclosed-value at 3 [b='c]\n"
            "the value of attribute 'b' has no closing quote; write 'b='c''\n"
            "attribute: b\n"
            "value: c"},
        {"no closing quote at the end of a line",
            "<a b=\"c\n"
            R"( d="e">)",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"twice",
            R"(<a b="1" c="2" b="3"/>)",
            "duplicate-attribute at 15 [b=\"3\"]\n"
            "attribute 'b' appears twice in this tag; remove or rename one\n"
            "attribute: b\n"
            "value: 3\n"
            "at 3: the first one, with the value '1', stands"},
        {"twice with the same value",
            R"(<a b="1" b="1"/>)",
            "duplicate-attribute at 9 [b=\"1\"]\n"
            "attribute 'b' appears twice in this tag, with the same value; remove one\n"
            "attribute: b\n"
            "value: 1\n"
            "at 3: the first one, with the value '1', stands"},
        {"twice with a colon",
            R"(<a :b="1" :b="2"/>)",
            "duplicate-attribute at 10 [:b=\"2\"]\n"
            "attribute ':b' appears twice in this tag; remove or rename one\n"
            "attribute: :b\n"
            "value: 2\n"
            "at 3: the first one, with the value '1', stands"},
        {"less-than sign",
            R"(<a b="x<y"/>)",
            "bare-less-than at 7 [<]\n"
            "the text '<' must be written as '&lt;' in the value of attribute 'b'\n"
            "attribute: b\n"
            "value: <"},
        {"tags in a value",
            R"(<a b="<i>x</i>"/>)",
            "bare-less-than at 6 [<]\n"
            "the text '<' must be written as '&lt;' in the value of attribute 'b'\n"
            "attribute: b\n"
            "value: <"},
        {"ampersand",
            R"(<a b="x&y=1"/>)",
            "bare-ampersand at 7 [&]\n"
            "the text '&' must be written as '&amp;'\n"
            "attribute: b\n"
            "value: &"},
        {"unknown entity",
            R"(<a b="&nbsp;"/>)",
            "unknown-entity at 6 [&nbsp;]\n"
            "the entity 'nbsp' exists only in HTML; write '&#160;'\n"
            "attribute: b\n"
            "value: &nbsp;\n"
            "suggestion: &#160;"},
        {"control character",
            "<a b=\"x\x02y\"/>",
            "invalid-character at 7 [\x02]\n"
            "the character U+0002 is not allowed in XML; remove it\n"
            "attribute: b\n"
            "value: U+0002"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesTextThatMustBeEscaped)
{
    ExpectFaults({
        {"ampersand in a word",
            "<a>AT&T</a>",
            "bare-ampersand at 5 [&]\n"
            "the text '&' must be written as '&amp;'\n"
            "value: &"},
        {"ampersand between blanks",
            "<a>a & b</a>",
            "bare-ampersand at 5 [&]\n"
            "the text '&' must be written as '&amp;'\n"
            "value: &"},
        {"ampersand at the end",
            "<a>&",
            "bare-ampersand at 3 [&]\n"
            "the text '&' must be written as '&amp;'\n"
            "value: &"},
        {"ampersand in an address",
            "<a>?a=1&lt=2</a>",
            "bare-ampersand at 7 [&]\n"
            "the text '&' must be written as '&amp;'\n"
            "value: &"},
        {"less-than sign",
            "<a>x < y</a>",
            "bare-less-than at 5 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"less-than sign before a digit",
            "<a>x <5</a>",
            "bare-less-than at 5 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"less-than sign before an equals sign",
            "<a>x <= y</a>",
            "bare-less-than at 5 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"less-than sign in an expression",
            "<a>if (i <n && j) {}</a>",
            "bare-less-than at 9 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"mail address",
            "<a>Me <me@example.org></a>",
            "bare-less-than at 6 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"type with parameters",
            "<a>Map<String,int></a>",
            "bare-less-than at 6 [<]\n"
            "the text '<' must be written as '&lt;'\n"
            "value: <"},
        {"mark of a conflict",
            "<a>\n<<<<<<< HEAD\n</a>",
            "bare-less-than at 4 [<<<<<<<]\n"
            "this line is the mark of a conflict of versions; resolve the conflict and remove its marks"},
        {"end of a CDATA section",
            "<a>x ]]> y</a>",
            "section-end-in-text at 5 []]>]\n"
            "the text ']]>' must be written as ']]&gt;'\n"
            "value: ]]>"},
        {"control character",
            "<a>x\x01</a>",
            "invalid-character at 4 [\x01]\n"
            "the character U+0001 is not allowed in XML; remove it\n"
            "value: U+0001"},
        {"noncharacter",
            "<a>\uFFFF</a>",
            "invalid-character at 3 [\uFFFF]\n"
            "the character U+FFFF is not allowed in XML; remove it\n"
            "value: U+FFFF"},
        {"control character of XML 1.1",
            "<?xml version=\"1.1\"?><a>\x01</a>",
            "invalid-character at 24 [\x01]\n"
            "the character U+0001 is not allowed in XML; write it as a reference such as '&#1;'\n"
            "value: U+0001"},
        {"second control character of XML 1.1",
            R"(<?xml version="1.1"?><a></a>)",
            "invalid-character at 24 [\xC2\x86]\n"
            "the character U+0086 is not allowed in XML; write it as a reference such as '&#134;'\n"
            "value: U+0086"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesReferences)
{
    ExpectFaults({
        {"no semicolon",
            "<a>&amp</a>",
            "unclosed-reference at 3 [&amp]\n"
            "the reference '&amp' must end with ';'\n"
            "value: &amp\n"
            "suggestion: &amp;"},
        {"no semicolon behind an entity of HTML",
            "<a>&nbsp</a>",
            "unclosed-reference at 3 [&nbsp]\n"
            "the reference '&nbsp' exists only in HTML; write '&#160;'\n"
            "value: &nbsp\n"
            "suggestion: &#160;"},
        {"no semicolon behind a declared entity",
            R"(<!DOCTYPE a [<!ENTITY co "x">]><a>&co x</a>)",
            "unclosed-reference at 34 [&co]\n"
            "the reference '&co' must end with ';'\n"
            "value: &co\n"
            "suggestion: &co;"},
        {"no semicolon behind a number",
            "<a>&#65</a>",
            "unclosed-reference at 3 [&#65]\n"
            "the reference '&#65' must end with ';'\n"
            "value: &#65\n"
            "suggestion: &#65;"},
        {"entity of HTML",
            "<a>&eacute;</a>",
            "unknown-entity at 3 [&eacute;]\n"
            "the entity 'eacute' exists only in HTML; write '&#233;'\n"
            "value: &eacute;\n"
            "suggestion: &#233;"},
        {"unknown entity",
            "<a>&foo;</a>",
            "unknown-entity at 3 [&foo;]\n"
            "the entity 'foo' is not declared; declare it, or write '&amp;' if '&' is text\n"
            "value: &foo;"},
        {"other case",
            "<a>&AMP;</a>",
            "unknown-entity at 3 [&AMP;]\n"
            "the entity 'AMP' is not declared; did you mean '&amp;'?\n"
            "value: &AMP;\n"
            "suggestion: &amp;"},
        {"misspelt entity",
            R"(<!DOCTYPE a [<!ENTITY company "x">]><a>&compny;</a>)",
            "unknown-entity at 39 [&compny;]\n"
            "the entity 'compny' is not declared; did you mean '&company;'?\n"
            "value: &compny;\n"
            "suggestion: &company;"},
        {"number 0",
            "<a>&#0;</a>",
            "bad-character-reference at 3 [&#0;]\n"
            "the character U+0000 ('&#0;') is not allowed in XML; remove it\n"
            "value: &#0;"},
        {"control character",
            "<a>&#1;</a>",
            "bad-character-reference at 3 [&#1;]\n"
            "the character U+0001 ('&#1;') is not allowed in XML; remove it\n"
            "value: &#1;"},
        {"noncharacter",
            "<a>&#xFFFE;</a>",
            "bad-character-reference at 3 [&#xFFFE;]\n"
            "the character U+FFFE ('&#xFFFE;') is not allowed in XML; remove it\n"
            "value: &#xFFFE;"},
        {"no digits",
            "<a>&#;</a>",
            "bad-character-reference at 3 [&#;]\n"
            "'&#;' has no number; write '&amp;#' if it is text, or a number such as '&#65;'\n"
            "value: &#;"},
        {"no hexadecimal digits",
            "<a>&#x;</a>",
            "bad-character-reference at 3 [&#x;]\n"
            "'&#x;' has no number; write '&amp;#' if it is text, or a number such as '&#65;'\n"
            "value: &#x;"},
        {"wrong hexadecimal digits",
            "<a>&#xZZ;</a>",
            "bad-character-reference at 3 [&#xZZ;]\n"
            "'&#xZZ;' is not a number: only hexadecimal digits (0-9, a-f)\n"
            "value: &#xZZ;"},
        {"hexadecimal digits without x",
            "<a>&#12f;</a>",
            "bad-character-reference at 3 [&#12f;]\n"
            "'&#12f;' is not a number: only digits; write '&#x' before hexadecimal digits\n"
            "value: &#12f;"},
        {"capital X",
            "<a>&#X41;</a>",
            "bad-character-reference at 3 [&#X41;]\n"
            "the 'x' in '&#X41;' must be a small letter\n"
            "value: &#X41;"},
        {"beyond the last character",
            "<a>&#x110000;</a>",
            "bad-character-reference at 3 [&#x110000;]\n"
            "'&#x110000;' is not a character; the last one is '&#x10FFFF;'\n"
            "value: &#x110000;"},
        {"very large",
            "<a>&#99999999999999999999;</a>",
            "bad-character-reference at 3 [&#99999999999999999999;]\n"
            "'&#99999999999999999999;' is not a character; the last one is '&#x10FFFF;'\n"
            "value: &#99999999999999999999;"},
        {"surrogate",
            "<a>&#xD83D;</a>",
            "bad-character-reference at 3 [&#xD83D;]\n"
            "'&#xD83D;' is only one half of a character; write the number of the whole character\n"
            "value: &#xD83D;"},
        {"surrogate pair",
            "<a>&#xD83D;&#xDE00;</a>",
            "bad-character-reference at 3 [&#xD83D;&#xDE00;]\n"
            "'&#xD83D;&#xDE00;' must be written as one reference, '&#128512;'\n"
            "value: &#xD83D;&#xDE00;\n"
            "suggestion: &#128512;"},
        {"two second halves of surrogate pairs",
            "<a>&#xDC00;&#xDC01;</a>",
            "bad-character-reference at 3 [&#xDC00;]\n"
            "'&#xDC00;' is only one half of a character; write the number of the whole character\n"
            "value: &#xDC00;"},
        {"decimal surrogate pair",
            "<a>&#55357;&#56832;</a>",
            "bad-character-reference at 3 [&#55357;&#56832;]\n"
            "'&#55357;&#56832;' must be written as one reference, '&#128512;'\n"
            "value: &#55357;&#56832;\n"
            "suggestion: &#128512;"},
    });
}

TEST(SyntaxFaultFinderTest, DescribesCommentsAndOtherSections)
{
    ExpectFaults({
        {"hyphens in a comment",
            "<a><!-- a -- b --></a>",
            "bad-comment at 10 [--]\n"
            "'--' is not allowed inside a comment; write '- -' or '-', or close the comment with '-->'"},
        {"three hyphens at the end",
            "<!-- a ---><a/>",
            "bad-comment at 7 [---]\n"
            "a comment must end with '-->', without further hyphens"},
        {"comment in a comment",
            "<a><!-- a <b/> <!-- c --></a>",
            "bad-comment at 15 [<!--]\n"
            "a comment cannot contain another comment; close the first one with '-->' before this place\n"
            "at 3: the first one began"},
        {"comment not closed",
            "<a><!-- a </a>",
            "unclosed-section at 3 [<!--]\n"
            "the comment is not closed; add '-->'"},
        {"comment with one hyphen",
            "<a><!- a --></a>",
            "bad-comment at 3 [<!-]\n"
            "a comment must begin with '<!--' and end with '-->'"},
        {"control character in a comment",
            "<!--\x03--><a/>",
            "invalid-character at 4 [\x03]\n"
            "the character U+0003 is not allowed in XML; remove it\n"
            "value: U+0003"},
        {"CDATA section not closed",
            "<a><![CDATA[ x</a>",
            "unclosed-section at 3 [<![CDATA[]\n"
            "the CDATA section is not closed; add ']]>'"},
        {"control character in a CDATA section",
            "<a><![CDATA[\x04]]></a>",
            "invalid-character at 12 [\x04]\n"
            "the character U+0004 is not allowed in XML; remove it\n"
            "value: U+0004"},
        {"processing instruction not closed",
            "<a><?p x</a>",
            "unclosed-section at 3 [<?p]\n"
            "the processing instruction 'p' is not closed; add '?>'"},
        {"processing instruction without a name",
            "<a><? p?></a>",
            "bad-processing-instruction at 3 [<?]\n"
            "a blank is not allowed between '<?' and the name of the processing instruction"},
        {"processing instruction with a reserved name",
            "<a><?Xml ?></a>",
            "bad-processing-instruction at 5 [Xml]\n"
            "a processing instruction cannot have the name 'Xml'; XML reserves it"},
        {"processing instruction with a bad name",
            "<a><?a+b ?></a>",
            "bad-processing-instruction at 6 [+]\n"
            "'+' is not allowed in the name of a processing instruction"},
        {"control character in a processing instruction",
            "<?p \x05?><a/>",
            "invalid-character at 4 [\x05]\n"
            "the character U+0005 is not allowed in XML; remove it\n"
            "value: U+0005"},
    });
}

// Advice that would not mend the document is worse than none.
TEST(SyntaxFaultFinderTest, ProposesTheProbableRepair)
{
    ExpectFaults({
        {"missing bracket",
            "<a>\n  b>text</b>\n</a>",
            "malformed-tag at 6 [b>]\n"
            "'<' is missing before 'b>'\n"
            "at 12: the end tag '</b>' stands"},
        {"missing bracket of a tag with attributes and children",
            "<as>\n a c=\"1\">\n<b/>\n</a><a/></as>",
            "malformed-tag at 6 [a c=\"1\">]\n"
            "'<' is missing before 'a c=\"1\">'\n"
            "at 20: the end tag '</a>' stands"},
        {"missing bracket inside text",
            "<a>some b>bold</b> text</a>",
            "malformed-tag at 8 [b>]\n"
            "'<' is missing before 'b>'\n"
            "at 14: the end tag '</b>' stands"},
        {"no missing bracket because the tag is outside",
            "<a><c>b></c></b></a>",
            "unexpected-end-tag at 12 [</b>]\n"
            "the end tag '</b>' has no start tag; remove it\n"
            "at 0: element 'a' was opened"},
        {"no missing bracket because the outer element has the name",
            "<b><a>b>x</b></a>",
            "mismatched-end-tag at 9 [</b>]\n"
            "the elements 'a' and 'b' overlap; write '</a>' before '</b>'\n"
            "at 3: element 'a' was opened"},
        {"mixed quotes",
            "<a b=\"c'/>\n<d e=\"1\"/>",
            "unclosed-value at 3 [b=\"c']\n"
            "the value of attribute 'b' begins with \" but ends with '; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"mixed quotes before an attribute",
            "<a b='c\" d='e'/>",
            "unclosed-value at 3 [b='c\"]\n"
            "the value of attribute 'b' begins with ' but ends with \"; write 'b='c''\n"
            "attribute: b\n"
            "value: c"},
        {"apostrophe in an unclosed value",
            "<a b=\"it's c/>\n<d/>",
            "unclosed-value at 3 [b=\"it's c]\n"
            "the value of attribute 'b' has no closing quote; write 'b=\"it's c\"'\n"
            "attribute: b\n"
            "value: it's c"},
        {"doubled quotes",
            "<a b=\"\"c\"\"/>",
            "malformed-tag at 5 [\"\"c\"\"]\n"
            "the quotes of attribute 'b' are doubled; write 'b=\"c\"'\n"
            "attribute: b\n"
            "value: c"},
        {"doubled quotes around several words",
            "<a b=''c d'' e='1'/>",
            "malformed-tag at 5 [''c d'']\n"
            "the quotes of attribute 'b' are doubled; write 'b='c d''\n"
            "attribute: b\n"
            "value: c d"},
        {"empty value before an attribute",
            R"(<a b=""c="1"/>)",
            "malformed-tag at 7 [c]\n"
            "a blank is missing before attribute 'c'\n"
            "attribute: c"},
        {"backslash in an empty tag",
            "<a\\>",
            "malformed-tag at 2 [\\]\n"
            "'\\' is not allowed in a tag; write '/' in place of '\\'"},
        {"backslash in an end tag",
            "<a><\\a>",
            "malformed-tag at 4 [\\]\n"
            "write '/' in place of '\\' in an end tag"},
        {"colon in place of an equals sign",
            R"(<a b: "c"/>)",
            "malformed-tag at 4 [:]\n"
            "write '=' in place of ':' between attribute 'b' and its value\n"
            "attribute: b"},
        {"colon without a blank",
            R"(<a b:"c"/>)",
            "malformed-tag at 4 [:]\n"
            "write '=' in place of ':' between attribute 'b' and its value\n"
            "attribute: b"},
        {"document that ends in a value",
            "<a b=\"c",
            "unclosed-value at 3 [b=\"c]\n"
            "the value of attribute 'b' has no closing quote before the end of the document; the file may be cut off\n"
            "attribute: b\n"
            "value: c"},
        {"document that ends before a value",
            "<a b=",
            "malformed-tag at 0 [<a b=]\n"
            "the document ends inside the start tag of element 'a'; the file may be cut off"},
        {"document type without a bracket",
            "<!DOCTYPE a [\n<!ENTITY b 'c'>\n>\n<a/>",
            "bad-document-type at 30 [>]\n"
            "']' is missing before '>' at the end of the document type"},
        {"document type with two brackets at the end of a declaration",
            "<!DOCTYPE a [<!ENTITY b 'c'>>]><a/>",
            "bad-document-type at 28 [>]\n"
            "there is one '>' too many in the document type; remove it"},
        {"version behind the encoding",
            "<?xml encoding='UTF-8' version = '1.1'?><a/>",
            "bad-declaration at 6 [encoding]\n"
            "the XML declaration must begin with the version: move version = '1.1' before 'encoding'"},
        {"version without a quote",
            "<?xml encoding='UTF-8' version='1.0?><a/>",
            "bad-declaration at 6 [encoding]\n"
            "the XML declaration must begin with the version: write version=\"1.0\" before 'encoding'"},
        {"end of a CDATA section with one bracket",
            "<a><![CDATA[b[0]>c]></a>",
            "unclosed-section at 18 []>]\n"
            "the CDATA section is not closed; write ']]>' in place of ']>'\n"
            "value: ]>\n"
            "suggestion: ]]>\n"
            "at 3: the CDATA section began"},
        {"end of a CDATA section without the last bracket",
            "<a><![CDATA[b]]</a>",
            "unclosed-section at 13 []]]\n"
            "the CDATA section is not closed; write ']]>' in place of ']]'\n"
            "value: ]]\n"
            "suggestion: ]]>\n"
            "at 3: the CDATA section began"},
        {"end of a comment with one hyphen",
            "<a><!-- b -> c -></a>",
            "unclosed-section at 15 [->]\n"
            "the comment is not closed; write '-->' in place of '->'\n"
            "value: ->\n"
            "suggestion: -->\n"
            "at 3: the comment began"},
        {"processing instruction without a name",
            "<a><?-b?></a>",
            "bad-processing-instruction at 3 [<?]\n"
            "a processing instruction begins with a name after '<?'; write '&lt;?' if this is text"},
        {"program text",
            "<a><?= $b ?></a>",
            "bad-processing-instruction at 3 [<?=]\n"
            "'<?=' is PHP code, which must be run first; a processing instruction begins with a name"},
        {"program text in a value",
            "<a b=\"<?php echo 1 ?>\"/>",
            "bare-less-than at 6 [<]\n"
            "'<?php' in the value of attribute 'b' is PHP code, which must be run first\n"
            "attribute: b\n"
            "value: <"},
        {"output before the declaration",
            "Warning: b\n<?xml version='1.0'?><a/>",
            "text-outside-root at 0 [Warning: b]\n"
            "the document begins with other output, 'Warning: b'; remove it, because '<?xml' must stand at the very "
            "start"},
    });
}

TEST(SyntaxFaultFinderTest, NamesTheEntitiesOfACycle)
{
    ExpectFaults({
        {"one entity",
            "<!DOCTYPE a [<!ENTITY b 'x &b;'>]><a>&b;</a>",
            "recursive-entity at 22 [b]\n"
            "entity 'b' contains itself\n"
            "value: b\n"
            "at 37: the reference '&b;' stands"},
        {"two entities",
            "<!DOCTYPE a [<!ENTITY b '&lt;&#65;&x;&c;'><!ENTITY c '&b;'>]><a>&c;</a>",
            "recursive-entity at 51 [c]\n"
            "entity 'c' contains 'b', which contains 'c'\n"
            "value: c\n"
            "at 64: the reference '&c;' stands"},
        {"entity that leads to a cycle, in a value",
            "<!DOCTYPE a [<!ENTITY d '1'><!ENTITY b '&d;&c;'><!ENTITY c '&d;&c;'>]><a e='&d;&b;'/>",
            "recursive-entity at 57 [c]\n"
            "entity 'c' contains itself\n"
            "attribute: e\n"
            "value: c\n"
            "at 79: the reference '&b;' stands"},
        {"many entities",
            MakeEntityChain(8, "&e0;"),
            "recursive-entity at 22 [e0]\n"
            "entity 'e0' contains 'e1', which contains 'e2', which contains 'e3', which contains 'e4', which contains "
            "others, and so on to 'e0'\n"
            "value: e0\n"
            "at 170: the reference '&e0;' stands"},
    });
    const char* const documents[] = {
        "<!DOCTYPE a [<!ENTITY b '&b;'>]><a/>",
        "<!DOCTYPE a [<!ENTITY b '<![CDATA[&b;]]>'>]><a>&b;</a>",
        "<!DOCTYPE a [<!ENTITY b 'c'><!ENTITY b '&b;'>]><a>&b;</a>",
        "<!DOCTYPE a [<!ENTITY b '&c;&c;'><!ENTITY c '&d;&d;'><!ENTITY d ''>]><a>&d;&b;&c;</a>",
    };
    for (const std::string document : documents) {
        EXPECT_FALSE(IsRefused(document)) << document;
        EXPECT_EQ(Describe(document), "nothing") << document;
    }
}

TEST(SyntaxFaultFinderTest, DescribesNul)
{
    const std::string nul(1, '\0');
    EXPECT_EQ(Describe("<a>" + nul + "</a>"),
        "invalid-character at 3 [" + nul + "]\nthe character U+0000 is not allowed in XML; remove it\nvalue: U+0000");
}

TEST(SyntaxFaultFinderTest, FindsNothingInWellFormedDocuments)
{
    const char* const documents[] = {
        "<a/>",
        " \n<?xml version='1.0'?><a/>\n",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='no' ?><a/>",
        "<?xml version=\"1.7\"?><a/>",
        "<?xml version='1.1'?><a>&#1;\xC2\x85</a>",
        "<a><!----><!-- - --><!--&<]]>--></a>",
        "<a><![CDATA[]]><![CDATA[]]]]><![CDATA[>&<]]></a>",
        "<a><?p?><?p ?><?xml-stylesheet href='a'?><?p <>?></a>",
        "<a b=''/>",
        "<a\tb\n=\r\"1\" />",
        "<a b='\"' c=\"'\" d='>' e=' f=' g=\"/>\"/>",
        "<a b='x c=' d='y'/>",
        "<a :b='1' b='2' x:b='3' xmlns:x='u' _='4' b.c-1='5'/>",
        "<a>]] > ]]&gt; > \" ' = /</a>",
        "<a>&lt;&gt;&amp;&apos;&quot;&#9;&#x10FFFF;&#0000000065;</a>",
        "<ä:é ü=\"€\" xmlns:ä='u'>中文 😀</ä:é>",
        "<a>\x7F\xC2\x80\xEF\xBF\xBD\xEF\xBB\xBF</a>",
        "<!DOCTYPE a><a/>",
        "<!DOCTYPE a SYSTEM \"x\"><a>&unread;</a>",
        "<!DOCTYPE a PUBLIC '-' \"x>\" [ ] ><a/>",
        "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a b CDATA \">\"><!ENTITY c ']>'><?p ]>?><!-- ]> ' -->]><a>&c;</a>",
        "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"x\">'> %p;]><a>&e;</a>",
        "<!DOCTYPE a [<!NOTATION n SYSTEM 'x'>]><a/>",
        "<!DOCTYPE html><html><br/></html>",
        "<html><body>x</body></html>",
    };
    for (const std::string document : documents) {
        EXPECT_FALSE(IsRefused(document)) << document;
        EXPECT_EQ(Describe(document), "nothing") << document;
    }
}

TEST(SyntaxFaultFinderTest, FindsNothingInFilesThatTheParserReads)
{
    std::size_t count = 0;
    for (const char* const folder : {SAMPLES_FOLDER, RESOURCES_FOLDER}) {
        for (const std::string& text : ReadFiles(folder)) {
            if (IsRefused(text))
                continue;
            EXPECT_EQ(Describe(text), "nothing") << text.substr(0, 200);
            ++count;
        }
    }
    EXPECT_GT(count, 60u);
}

TEST(SyntaxFaultFinderTest, FindsNothingInRandomDocuments)
{
    for (std::uint32_t seed = 0; seed < 1000; ++seed) {
        for (const RandomDocumentKind kind : {RandomDocumentKind::Full, RandomDocumentKind::Version11}) {
            const std::string document = MakeRandomDocument(kind, seed).text;
            ASSERT_EQ(Describe(document), "nothing") << document;
        }
    }
}

// A fault that the parser does not see would explain another error wrongly.
TEST(SyntaxFaultFinderTest, FindsFaultsOnlyInDocumentsThatTheParserRefuses)
{
    static constexpr std::array<std::string_view, 34> Pieces{"<",
        ">",
        "&",
        ";",
        "\"",
        "'",
        "/",
        "=",
        "!",
        "?",
        "--",
        "]]>",
        "<!--",
        "-->",
        "<![CDATA[",
        " ",
        "\n",
        "a",
        "<a>",
        "</a>",
        "<a/>",
        "&amp;",
        "&#0;",
        "&x;",
        " b='1'",
        "<?p ?>",
        "\x01",
        "\u00A0",
        "\uFFFE",
        "1",
        ":",
        "[",
        "<!DOCTYPE a>",
        "<b>"};
    std::mt19937 random(2);
    std::size_t refused = 0;
    std::size_t described = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text = Seeds()[random() % Seeds().size()];
        for (unsigned changes = 1 + random() % 2; changes > 0; --changes) {
            const std::size_t at = random() % (text.size() + 1);
            const std::string_view piece = Pieces[random() % Pieces.size()];
            text.replace(at, random() % 2 == 0 ? 0 : 1 + random() % 3, random() % 3 == 0 ? std::string_view() : piece);
        }
        const bool isUtf8 = QString::fromStdString(text).toStdString() == text;
        // Xerces accepts any text after "1." as a version.
        const bool hasVersion = text.find("<?xml") == std::string::npos || text.find("\"1.0\"") != std::string::npos ||
            text.find("'1.0'") != std::string::npos;
        if (!isUtf8 || !hasVersion)
            continue;
        const bool isRefused = IsRefused(text);
        const bool isDescribed = FindSyntaxFault(text).has_value();
        ASSERT_TRUE(isRefused || !isDescribed) << text << "\n" << Describe(text);
        refused += isRefused ? 1 : 0;
        described += isDescribed ? 1 : 0;
    }
    // The others have faults in the document type, in names or in namespaces.
    EXPECT_GT(described, refused * 9 / 10);
}

TEST(SyntaxFaultFinderTest, FindsAFaultInEveryPrefixThatTheParserRefuses)
{
    for (const std::string& seed : Seeds()) {
        const std::size_t subsetEnd = seed.find("]>") + 1;
        const bool hasSubset = seed.starts_with("<!DOCTYPE");
        for (std::size_t length = hasSubset ? subsetEnd : 0; length < seed.size(); ++length) {
            const std::string prefix = seed.substr(0, length);
            // A prefix that ends inside a character is not UTF-8.
            const bool isUtf8 = QString::fromStdString(prefix).toStdString() == prefix;
            EXPECT_TRUE(!isUtf8 || FindSyntaxFault(prefix).has_value() == IsRefused(prefix)) << prefix;
        }
    }
}

TEST(SyntaxFaultFinderTest, DoesNotReadBehindTheEndOfTheText)
{
    for (const std::string& seed : Seeds()) {
        for (std::size_t length = 0; length < seed.size(); ++length) {
            // The text is in a separate block of memory, so that the address sanitizer detects reads behind it.
            const std::vector<char> prefix(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(length));
            const std::optional<SyntaxFault> fault = FindSyntaxFault({prefix.data(), prefix.size()});
            EXPECT_TRUE(!fault || (fault->start <= fault->end && fault->end <= length)) << seed.substr(0, length);
        }
    }
}

TEST(SyntaxFaultFinderTest, TakesLinearTime)
{
    const std::size_t million = 1000000;
    std::string attributes = "<a";
    for (std::size_t i = 0; i < million; ++i)
        attributes += " a" + std::to_string(i) + "='1'";
    const struct {
        const char* name;
        std::string text;
        bool isWellFormed;
    } rows[] = {
        {"levels", Repeat("<a>", million) + Repeat("</a>", million), true},
        {"open levels", Repeat("<a>", million), false},
        {"crossed levels", "<b>" + Repeat("<a>", million) + "</b>", false},
        {"attributes", attributes + "/>", true},
        {"duplicate attribute", attributes + " a0='2'/>", false},
        {"tags with attributes", "<b>" + Repeat("<a b='1' c='2'/>", million) + "</b>", true},
        {"text", "<a>" + std::string(50 * million, 'x') + "</a>", true},
        {"references", "<a>" + Repeat("&amp;&#65;", million) + "</a>", true},
        {"brackets", "<a>" + Repeat("]] ", million) + "</a>", true},
        {"blank lines", "<a>" + std::string(million, '\n') + "</a>", true},
        {"greater-than signs", "<a>" + Repeat("b> ", million) + "</b>", false},
        {"chain of entities", MakeEntityChain(100000, "end"), true},
        {"cycle of entities", MakeEntityChain(100000, "&e0;"), false},
        {"blanks", "<a" + std::string(million, ' ') + "/>" + std::string(million, '\n'), true},
        {"comments", Repeat("<!-- - -->", million) + "<a/>", true},
        {"unclosed tags", "<a>" + Repeat("<a b='", million), false},
        {"unclosed value", "<a b=\"" + Repeat("c ", million), false},
        {"value that ends with a long name", "<a b=\"< " + std::string(million, 'c') + "=\"d\"/>", false},
        {"values without quotes", "<a" + Repeat(" b=c", million), false},
        {"less-than signs", "<a>" + Repeat("< ", million), false},
        {"ampersands", "<a>" + Repeat("&", million), false},
        {"open document type", "<!DOCTYPE a [" + Repeat("<!ENTITY a 'b'>", million), false},
        {"long name", "<" + std::string(million, 'a') + ">", false},
        {"bytes that are not UTF-8", "<a>" + std::string(million, '\x80') + "</a>", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const testsupport::CpuTimeLimit limit(15);
        const std::optional<SyntaxFault> fault = FindSyntaxFault(row.text);
        EXPECT_EQ(!fault, row.isWellFormed);
        EXPECT_TRUE(!fault || fault->message.length() < 400) << fault->message;
    }
}
