// What the diagnostics of a parse say about the faults of a document. The documents are checked against a schema of
// orders, or against none.
#include <memory>
#include <string>
#include <vector>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

const char schema[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="orders">
    <xs:complexType>
      <xs:sequence>
        <xs:element name="order" type="order" maxOccurs="unbounded"/>
        <xs:element name="note" type="xs:string" minOccurs="0"/>
      </xs:sequence>
    </xs:complexType>
  </xs:element>
  <xs:complexType name="order">
    <xs:sequence>
      <xs:element name="customer" type="xs:string"/>
      <xs:element name="date" type="xs:date" minOccurs="0"/>
      <xs:element name="item" minOccurs="1" maxOccurs="2">
        <xs:complexType>
          <xs:attribute name="sku" type="xs:string" use="required"/>
          <xs:attribute name="unit" type="xs:string" fixed="kg"/>
        </xs:complexType>
      </xs:element>
    </xs:sequence>
    <xs:attribute name="id" type="xs:int" use="required"/>
    <xs:attribute name="state">
      <xs:simpleType>
        <xs:restriction base="xs:string">
          <xs:enumeration value="open"/>
          <xs:enumeration value="closed"/>
        </xs:restriction>
      </xs:simpleType>
    </xs:attribute>
  </xs:complexType>
</xs:schema>)";

std::string Format(SourcePosition position)
{
    return std::to_string(position.line) + ":" + std::to_string(position.column);
}

// Returns the diagnostic as "2:3-2:7 code /path[1] @attribute: message (related on 1:2) allowed: a, b".
std::string Format(const ParseDiagnostic& diagnostic)
{
    std::string text = Format(diagnostic.start);
    if (diagnostic.end.line != 0)
        text += "-" + Format(diagnostic.end);
    text += std::string(" ") + GetDiagnosticName(diagnostic.code) + " " + diagnostic.path.toStdString();
    if (!diagnostic.attribute.IsEmpty())
        text += " @" + diagnostic.attribute.toStdString();
    text += ": " + diagnostic.message.toStdString();
    if (diagnostic.related)
        text += " (" + diagnostic.related->message.toStdString() + " on " + Format(diagnostic.related->start) + ")";
    for (const VString& name : diagnostic.allowed)
        text += (&name == &diagnostic.allowed.front() ? " allowed: " : ", ") + name.toStdString();
    return text;
}

std::vector<std::string> Format(const std::vector<ParseDiagnostic>& diagnostics)
{
    std::vector<std::string> texts;
    for (const ParseDiagnostic& diagnostic : diagnostics)
        texts.push_back(Format(diagnostic));
    return texts;
}

using Lines = std::vector<std::string>;

// Parses again without content, which must give the same messages and call no handler.
void ExpectSameWithoutContent(XercesXMLParser& parser, const std::string& document)
{
    const std::vector<VString> errors = parser.GetErrors();
    const std::vector<VString> warnings = parser.GetWarnings();
    const Lines diagnostics = Format(parser.GetDiagnostics());
    const auto handler = std::make_shared<testsupport::RecordingHandler>();
    Utf8InputSource source(document, "id", true);
    parser.Reload(source, handler);
    parser.SetEnableContent(false);
    parser.Parse();
    EXPECT_EQ(parser.GetErrors(), errors);
    EXPECT_EQ(parser.GetWarnings(), warnings);
    EXPECT_EQ(Format(parser.GetDiagnostics()), diagnostics);
    EXPECT_TRUE(handler->events.empty());
}

std::vector<ParseDiagnostic> Diagnose(
    const std::string& document, const char* xsd = nullptr, bool checksReferences = false)
{
    Utf8InputSource source(document, "id", true);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::RecordingHandler>());
    parser->SetEnableReferenceChecks(checksReferences);
    if (xsd)
        parser->LoadXSDString(xsd, "schema");
    parser->Parse();
    const auto isError = [](const ParseDiagnostic& diagnostic) {
        return diagnostic.severity != ParseDiagnostic::Severity::Warning;
    };
    std::vector<ParseDiagnostic> diagnostics = parser->GetDiagnostics();
    EXPECT_EQ(std::any_of(diagnostics.begin(), diagnostics.end(), isError), parser->HasErrors());
    ExpectSameWithoutContent(*parser, document);
    return diagnostics;
}

Lines Check(const std::string& document)
{
    return Format(Diagnose(document, schema));
}

const std::string goodOrder = R"(<order id="1"><customer>A</customer><item sku="s"/></order>)";

TEST(DiagnosticPassTest, DocumentWithoutFaultsHasNoDiagnostics)
{
    EXPECT_EQ(Check("<orders>" + goodOrder + "</orders>"), Lines{});
}

TEST(DiagnosticPassTest, MisspeltElementIsReportedOnceAtItsStartTag)
{
    EXPECT_EQ(Check("<orders>\n  <ordr id='1'><x/>text</ordr>\n  " + goodOrder + "</orders>"),
        Lines{"2:4-2:8 unexpected-element /orders/ordr[1]: element 'ordr' is not allowed here; did you mean "
              "'order'? (in /orders, which began on 1:2) allowed: order"});
}

TEST(DiagnosticPassTest, FurtherUndeclaredElementsOfTheSameNameAreCounted)
{
    EXPECT_EQ(Check("<orders><ordr/><ordr/>" + goodOrder + "<ordr/></orders>"),
        Lines{"1:10-1:14 unexpected-element /orders/ordr[1]: element 'ordr' is not allowed here; did you mean "
              "'order'?; 2 more like it (in /orders, which began on 1:2) allowed: order"});
}

TEST(DiagnosticPassTest, DeclaredElementAtAWrongPlaceIsReportedAtItsStartTag)
{
    EXPECT_EQ(Check("<orders>\n<order id='1'><customer/><item sku='s'/><date>2024-01-31</date></order></orders>"),
        Lines{"2:42-2:46 unexpected-element /orders/order[1]/date[1]: element 'date' is not allowed here; it "
              "must stand in front of element 'item' "
              "(in /orders/order[1], which began on 2:2) allowed: item"});
}

TEST(DiagnosticPassTest, ElementBeyondItsNumberIsReported)
{
    const std::string item = "<item sku='s'/>";
    EXPECT_EQ(Check("<orders><order id='1'><customer/>" + item + item + item + "</order></orders>"),
        Lines{"1:65-1:69 unexpected-element /orders/order[1]/item[3]: no further element 'item' is allowed here "
              "(in /orders/order[1], which began on 1:10)"});
}

TEST(DiagnosticPassTest, MissingChildIsReportedAtTheEndTag)
{
    EXPECT_EQ(Check("<orders><order id='1'>\n<customer/></order></orders>"),
        Lines{"2:12-2:20 missing-child /orders/order[1]: element 'order' is not complete: 'item' is missing "
              "(in /orders/order[1], which began on 1:10) allowed: date, item"});
}

TEST(DiagnosticPassTest, MissingChildOfAnEmptyTagIsReportedAtTheTag)
{
    EXPECT_EQ(Check("<orders/>"),
        Lines{"1:2-1:8 missing-child /orders: element 'orders' is not complete: 'order' is missing allowed: order"});
}

TEST(DiagnosticPassTest, TextAmongElementsIsReportedAtTheText)
{
    EXPECT_EQ(Check("<orders>\n  one two\n  three" + goodOrder + "</orders>"),
        Lines{"2:3-2:10 unexpected-text /orders: the text 'one two' is not allowed in element 'orders', which must "
              "contain only elements"});
}

TEST(DiagnosticPassTest, MisspeltAttributeIsReportedAtItsName)
{
    EXPECT_EQ(Check("<orders><order id='1' stat='open'><customer/><item sku='s'/></order></orders>"),
        Lines{"1:23-1:27 undeclared-attribute /orders/order[1] @stat: attribute 'stat' is not allowed on element "
              "'order'; did you mean 'state'? allowed: state"});
}

TEST(DiagnosticPassTest, MissingAttributeIsReportedAtTheName)
{
    EXPECT_EQ(Check("<orders><order id='1'><customer/>\n <item/></order></orders>"),
        Lines{"2:3-2:7 missing-attribute /orders/order[1]/item[1] @sku: element 'item' needs the attribute 'sku', a "
              "text"});
}

TEST(DiagnosticPassTest, ValueOfAnAttributeIsReportedAtTheValue)
{
    const std::vector<ParseDiagnostic> diagnostics =
        Diagnose("<orders><order state='opn' id='1x'><customer/><item sku='s'/></order></orders>", schema);
    EXPECT_EQ(Format(diagnostics),
        (Lines{"1:23-1:26 bad-value /orders/order[1] @state: the value 'opn' of attribute 'state' is not one of open, "
               "closed; did you mean 'open'? allowed: open, closed",
            "1:32-1:34 bad-value /orders/order[1] @id: the value '1x' of attribute 'id' is not a whole number from "
            "-2147483648 to 2147483647"}));
    ASSERT_EQ(diagnostics.size(), 2u);
    EXPECT_EQ(diagnostics[0].value, "opn");
    EXPECT_EQ(diagnostics[0].expected, "one of open, closed");
    EXPECT_EQ(diagnostics[0].suggestion, "open");
    EXPECT_EQ(diagnostics[0].element, 2u);
    EXPECT_EQ(diagnostics[0].severity, ParseDiagnostic::Severity::Error);
    EXPECT_EQ(diagnostics[0].sourceId, "id");
}

TEST(DiagnosticPassTest, ValueOfAnElementIsReportedAtTheText)
{
    EXPECT_EQ(Check("<orders><order id='1'><customer/><date>\n 2024-13-01 </date><item sku='s'/></order></orders>"),
        Lines{"2:2-2:12 bad-value /orders/order[1]/date[1]: the value '2024-13-01' of element 'date' is not a date: "
              "there is no month 13; write '2024-01-13'"});
    EXPECT_EQ(Check("<orders><order id='1'><customer/><date/><item sku='s'/></order></orders>"),
        Lines{"1:35-1:39 bad-value /orders/order[1]/date[1]: element 'date' is empty, but must contain a date such as "
              "2024-01-31"});
}

TEST(DiagnosticPassTest, FixedValueIsNamed)
{
    EXPECT_EQ(Check("<orders><order id='1'><customer/><item sku='s' unit='g'/></order></orders>"),
        Lines{"1:54-1:55 fixed-value /orders/order[1]/item[1] @unit: the value of attribute 'unit' must be 'kg'"});
}

TEST(DiagnosticPassTest, UndeclaredDocumentElementGetsASuggestion)
{
    EXPECT_EQ(Check("<ordres><order/></ordres>"),
        Lines{"1:2-1:8 undeclared-element /ordres: the schema does not declare the document element 'ordres'; did you "
              "mean 'orders'? allowed: orders"});
}

TEST(DiagnosticPassTest, WrongNamespaceIsOneDiagnostic)
{
    EXPECT_EQ(Check("<orders xmlns='urn:x'><order/><order/></orders>"),
        Lines{"1:9-1:22 wrong-namespace /orders @xmlns: the document element 'orders' must be in no namespace; "
              "remove this attribute"});
}

TEST(DiagnosticPassTest, DiagnosticsAreSortedByPlace)
{
    const std::vector<ParseDiagnostic> diagnostics =
        Diagnose("<orders><order id='1'>\n<customer/>x<item/></order><b/></orders>", schema);
    ASSERT_EQ(diagnostics.size(), 3u);
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::UnexpectedText);
    EXPECT_EQ(diagnostics[1].code, DiagnosticCode::MissingAttribute);
    EXPECT_EQ(diagnostics[2].code, DiagnosticCode::UnexpectedElement);
}

TEST(DiagnosticPassTest, PlacesCountSkippedWhiteSpaceAndColonNames)
{
    const std::string end = " is not allowed on element 'orders'";
    EXPECT_EQ(Check("\n\n  <orders :a='1' :b='2' c='3'>" + goodOrder + "</orders>"),
        (Lines{"3:11-3:13 undeclared-attribute /orders @:a: attribute ':a'" + end,
            "3:18-3:20 undeclared-attribute /orders @:b: attribute ':b'" + end,
            "3:25-3:26 undeclared-attribute /orders @c: attribute 'c'" + end}));
}

// The sanitizer also rewrites texts that only look like attributes.
TEST(DiagnosticPassTest, QuotedTextsAreThoseOfTheDocument)
{
    const std::string end = " is not allowed before the root element; remove it";
    EXPECT_EQ(Format(Diagnose(" :=>x<a/>")), Lines{"1:2-1:6 text-outside-root : the text ':=>x'" + end});
    EXPECT_EQ(Format(Diagnose(" :=><IllegalColon:a/>")),
        Lines{"1:2-1:5 text-outside-root : the text 'IllegalColon:=>'" + end});
    EXPECT_EQ(Check("<orders> :x='1' >" + goodOrder + "</orders>"),
        Lines{"1:10-1:18 unexpected-text /orders: the text ':x='1' >' is not allowed in element 'orders', which must "
              "contain only elements"});
    EXPECT_EQ(Check("<orders><order id='1'><customer/><date> :x='1' ></date><item sku='1'/></order></orders>"),
        Lines{"1:41-1:49 bad-value /orders/order[1]/date[1]: the value ':x='1' >' of element 'date' is not a date such "
              "as 2024-01-31"});
}

// Xerces reads the prefix of the sanitizer in place of the colon. A long text is cut where the prefix may stand.
TEST(DiagnosticPassTest, LongTextsAreQuotedAsTheDocumentWritesThem)
{
    for (int length = 40; length < 70; ++length) {
        const std::string start(static_cast<std::size_t>(length), 'x');
        for (const std::string& rest : {std::string(" :y='1' >"), std::string(" :y='1' >") + start}) {
            const Lines lines = Check("<orders>" + start + rest + goodOrder + "</orders>");
            ASSERT_EQ(lines.size(), 1U);
            const std::size_t quote = lines[0].find("the text '") + 10;
            const std::string quoted = lines[0].substr(quote, lines[0].find("' is not allowed in") - quote);
            const bool isCut = quoted.ends_with("\u2026");
            EXPECT_EQ(quoted, isCut ? (start + rest).substr(0, quoted.size() - 3) + "\u2026" : start + rest);
            EXPECT_GE(quoted.size(), std::min<std::size_t>((start + rest).size(), 48));
        }
    }
}

TEST(DiagnosticPassTest, QuotedTextsAreCutBetweenCharacters)
{
    const std::string start(59, 'x');
    const std::string end = "\u2026' is not allowed in element 'orders', which must contain only elements";
    EXPECT_EQ(Check("<orders>" + start + "\U0001F600x" + goodOrder + "</orders>"),
        Lines{"1:9-1:71 unexpected-text /orders: the text '" + start + end});
    EXPECT_EQ(Check("<orders>" + start.substr(1) + "\U0001F600x" + goodOrder + "</orders>"),
        Lines{"1:9-1:70 unexpected-text /orders: the text '" + start.substr(1) + "\U0001F600" + end});
}

TEST(DiagnosticPassTest, TextBeforeTheRootElementIsQuotedInEachEncoding)
{
    const Lines expected{"1:1-1:2 text-outside-root : the text 'x' is not allowed before the root element; remove it"};
    EXPECT_EQ(Format(Diagnose("x<a/>")), expected);
    EXPECT_EQ(Format(Diagnose("\xEF\xBB\xBFx<a/>")), expected);
    EXPECT_EQ(Format(Diagnose(std::string("\xFF\xFEx\0<\0a\0/\0>\0", 12))), expected);
    EXPECT_EQ(Format(Diagnose(std::string("\xFE\xFF\0x\0<\0a\0/\0>", 12))), expected);
}

TEST(DiagnosticPassTest, FaultsInFrontOfBytesThatCannotBeDecodedAreExplained)
{
    const std::string start = "<?xml version='1.0' encoding='US-ASCII'?>\n<a>\n<b c/>" + std::string(300, 'x');
    const Lines expected{"3:4-3:5 missing-value /a @c: attribute 'c' has no value; write 'c=\"...\"'"};
    EXPECT_EQ(Format(Diagnose(start + "\xE9</a>")), expected);
    EXPECT_EQ(Format(Diagnose(start + std::string(100000, 'x') + std::string(100000, '\xE9') + "</a>")), expected);
}

// The sanitizer refuses such texts by an exception, because it finds a name to rewrite but no element.
TEST(DiagnosticPassTest, TextWithAColonAndWithoutAnElementIsExplained)
{
    EXPECT_EQ(Format(Diagnose("see :x=1 > <")), Lines{"1:1-1:2 not-xml : the file is plain text, not XML"});
    EXPECT_EQ(Format(Diagnose("\xEF\xBB\xBF\n\n :x=1 > <?p?><!-- -->")),
        Lines{"3:2-3:3 not-xml : the file is plain text, not XML"});
    EXPECT_EQ(
        Format(Diagnose("\n %!PS :x=1 > <")), Lines{"2:2-2:3 not-xml : the file is a PostScript document, not XML"});
    const testsupport::TemporaryFolder folder;
    FileInputSource file(folder.Write("a.txt", "see :x=1 > <"));
    const auto parser = XercesXMLParser::Create(file, nullptr);
    parser->Parse();
    EXPECT_EQ(Format(parser->GetDiagnostics()), Lines{"1:1-1:2 not-xml : the file is plain text, not XML"});
    EXPECT_EQ(Format(Diagnose("<?xml version='1.0'?>\n<!-- c --> :x=1 /> ")),
        Lines{"2:12-2:19 text-outside-root : the text ':x=1 />' is not allowed before the root element; remove it"});
}

TEST(DiagnosticPassTest, DocumentInAnotherEncodingHasPlacesInCharacters)
{
    EXPECT_EQ(
        Check("<?xml version='1.0' encoding='ISO-8859-1'?>\n<orders><!--\xE9\xE9--><x/>" + goodOrder + "</orders>"),
        Lines{"2:19-2:20 unexpected-element /orders/x[1]: element 'x' is not allowed here (in /orders, which began on "
              "2:2) allowed: order"});
}

TEST(DiagnosticPassTest, ElementOfAnEntityIsReportedAtTheReference)
{
    const std::vector<ParseDiagnostic> diagnostics =
        Diagnose("<!DOCTYPE orders [<!ENTITY e '<x/>'>]>\n<orders>&e;" + goodOrder + "</orders>", schema);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].path, "/orders/x[1]");
    EXPECT_EQ(diagnostics[0].start.line, 2u);
    EXPECT_EQ(diagnostics[0].element, 2u);
}

TEST(DiagnosticPassTest, VanishingReferencesAreErrorsIfReferencesAreChecked)
{
    const std::string document = "<!DOCTYPE a SYSTEM 'no.dtd' [<!ENTITY k ''>]><a b='&x;'>\n&k;&y;&#65;&lt;&y;</a>";
    EXPECT_EQ(Diagnose(document).size(), 0u);
    const std::string end = "' is not declared in the document, and no other file is read, so its text would be lost";
    EXPECT_EQ(Format(Diagnose(document, nullptr, true)),
        (Lines{"1:52-1:55 unknown-entity /a: the entity 'x" + end,
            "2:4-2:7 unknown-entity /a: the entity 'y" + end + "; 1 more like it"}));
}

TEST(DiagnosticPassTest, UndeclaredPrefixesAreWarningsIfReferencesAreChecked)
{
    const std::string document = "<a xmlns:p='urn:p'><p:b q:c='1'/><q:d xmlns:q='urn:q' xml:lang='en'/><r:e/></a>";
    EXPECT_EQ(Diagnose(document).size(), 0u);
    const std::vector<ParseDiagnostic> diagnostics = Diagnose(document, nullptr, true);
    EXPECT_EQ(Format(diagnostics),
        (Lines{"1:25-1:28 undeclared-prefix /a/p:b[1] @q:c: the namespace prefix 'q' is not declared; add "
               "xmlns:q=\"...\" to this element or to one around it",
            "1:71-1:74 undeclared-prefix /a/r:e[1]: the namespace prefix 'r' is not declared; add xmlns:r=\"...\" to "
            "this element or to one around it"}));
    ASSERT_EQ(diagnostics.size(), 2u);
    EXPECT_EQ(diagnostics[0].severity, ParseDiagnostic::Severity::Warning);
}

TEST(DiagnosticPassTest, TextOfAnEntityIsReportedBesideAWarning)
{
    const std::string document =
        "\n<?xml version='1.0'?><!DOCTYPE orders [<!ENTITY e 'x'>]><orders>&e;" + goodOrder + "</orders>";
    const std::vector<ParseDiagnostic> diagnostics = Diagnose(document, schema, true);
    ASSERT_EQ(diagnostics.size(), 2u);
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::MisplacedDeclaration);
    EXPECT_EQ(diagnostics[0].severity, ParseDiagnostic::Severity::Warning);
    EXPECT_EQ(diagnostics[1].code, DiagnosticCode::UnexpectedText);
}

TEST(DiagnosticPassTest, EntityMissingInTheTextOfAnEntityIsReported)
{
    const std::string document = "<!DOCTYPE a SYSTEM 'no.dtd' [<!ENTITY e '1&z;'>]>\n<a>&e;</a>";
    const std::vector<ParseDiagnostic> diagnostics = Diagnose(document, nullptr, true);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::UnknownEntity);
    EXPECT_EQ(diagnostics[0].value, "z");
    EXPECT_EQ(diagnostics[0].start.line, 2u);
}

TEST(DiagnosticPassTest, EntityThatIsFatallyMissingIsOneDiagnostic)
{
    const std::vector<ParseDiagnostic> diagnostics = Diagnose("<!DOCTYPE a [<!ENTITY e ''>]><a>&z;</a>", nullptr, true);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].severity, ParseDiagnostic::Severity::FatalError);
}

TEST(DiagnosticPassTest, AttributeCalledTypeOfAnotherNamespaceIsNoType)
{
    EXPECT_EQ(
        Check("<orders><order id='x' xmlns:q='urn:q' q:type='simple'><customer/><item sku='s'/></order></orders>"),
        (Lines{"1:20-1:21 bad-value /orders/order[1] @id: the value 'x' of attribute 'id' is not a whole number from "
               "-2147483648 to 2147483647",
            "1:39-1:45 undeclared-attribute /orders/order[1] @q:type: attribute 'q:type' is not allowed on element "
            "'order' allowed: state"}));
}

TEST(DiagnosticPassTest, ValueOfAWildcardAttributeIsExplained)
{
    const char xsd[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" targetNamespace="urn:q">
      <xs:attribute name="n" type="xs:int"/>
      <xs:element name="a"><xs:complexType><xs:sequence><xs:element name="b" type="xs:int"/></xs:sequence>
        <xs:anyAttribute processContents="strict"/></xs:complexType></xs:element></xs:schema>)";
    EXPECT_EQ(Format(Diagnose("<q:a xmlns:q='urn:q' q:n='x'><b>1</b></q:a>", xsd)),
        Lines{"1:27-1:28 bad-value /q:a @q:n: the value 'x' of attribute 'q:n' is not a whole number from -2147483648 "
              "to 2147483647"});
}

TEST(DiagnosticPassTest, NamesAreWrittenWithThePrefixOfTheirNamespace)
{
    const char xsd[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" targetNamespace="urn:q"
        xmlns="urn:q"><xs:element name="top" type="xs:string"/>
      <xs:element name="a"><xs:complexType><xs:sequence><xs:element name="local" type="xs:int"/>
        <xs:element ref="top"/></xs:sequence></xs:complexType></xs:element></xs:schema>)";
    EXPECT_EQ(Format(Diagnose("<q:a xmlns:q='urn:q'/>", xsd)).front().substr(0, 92),
        "1:2-1:5 missing-child /q:a: element 'q:a' is not complete: 'local' is missing allowed: local");
    EXPECT_EQ(
        Diagnose("<q:a xmlns:q='urn:q'><local>1</local></q:a>", xsd).front().allowed, (std::vector<VString>{"q:top"}));
}

TEST(DiagnosticPassTest, MisspeltRequiredAttributeIsOneDiagnostic)
{
    const std::vector<ParseDiagnostic> diagnostics =
        Diagnose("<orders><order Id='1'><customer/><item sku='s'/></order></orders>", schema);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].suggestion, "id");
}

TEST(DiagnosticPassTest, FaultsBesideAMisspeltChildAreReported)
{
    const std::vector<ParseDiagnostic> diagnostics =
        Diagnose("<orders><ordr/>" + goodOrder + "<note/><note/></orders>", schema);
    ASSERT_EQ(diagnostics.size(), 2u);
    EXPECT_EQ(diagnostics[0].suggestion, "order");
    EXPECT_EQ(diagnostics[1].message, "no further element 'note' is allowed here");
}

TEST(DiagnosticPassTest, FaultInFrontOfAFatalOneHasItsPlace)
{
    const std::vector<ParseDiagnostic> diagnostics = Diagnose("<orders>\nabc<order id='1' id='2'/></orders>", schema);
    ASSERT_EQ(diagnostics.size(), 2u);
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::UnexpectedText);
    EXPECT_EQ(diagnostics[0].start, (SourcePosition{2, 1}));
    EXPECT_EQ(diagnostics[1].code, DiagnosticCode::DuplicateAttribute);
}

TEST(DiagnosticPassTest, AbstractTypesAndElementsAreExplained)
{
    const char xsd[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
      <xs:complexType name="base" abstract="true"/>
      <xs:complexType name="other"/>
      <xs:element name="shape" type="base"/>
      <xs:element name="head" abstract="true"/>
      <xs:element name="r"><xs:complexType><xs:choice maxOccurs="9"><xs:element ref="shape"/><xs:element ref="head"/>
      </xs:choice></xs:complexType></xs:element></xs:schema>)";
    const std::string text = "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>\n<shape/>\n"
                             "<shape xsi:type='base'/>\n<shape xsi:type='other'/>\n<head/>\n</r>";
    const std::string isAbstract =
        ": the type of element 'shape' is abstract; name one of its derived types with xsi:type";
    EXPECT_EQ(Format(Diagnose(text, xsd)),
        (Lines{"2:2-2:7 bad-type /r/shape[1]" + isAbstract,
            "3:18-3:22 bad-type /r/shape[2] @xsi:type" + isAbstract,
            "4:18-4:23 bad-type /r/shape[3] @xsi:type: the type 'other' of element 'shape' is not one of the types "
            "that the element may have",
            "5:2-5:6 bad-type /r/head[1]: element 'head' is abstract; use one of the elements that can replace it"}));
}

// The grammar of the document type has no types of schemas.
TEST(DiagnosticPassTest, UnknownTypeBesideADocumentTypeIsExplained)
{
    const char xsd[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
      <xs:complexType name="number"/><xs:element name="r" type="number"/></xs:schema>)";
    EXPECT_EQ(Format(Diagnose("<!DOCTYPE r [<!ELEMENT r ANY>]>\n<r "
                              "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='nummer'/>",
                  xsd)),
        Lines{"2:68-2:74 bad-type /r @xsi:type: the type 'nummer' of element 'r' is not in the schema; did you mean "
              "'number'? allowed: number"});
}

TEST(DiagnosticPassTest, NilElementWithContentIsOneDiagnostic)
{
    const char xsd[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
      <xs:element name="a" type="xs:int" nillable="true"/></xs:schema>)";
    EXPECT_EQ(Format(Diagnose("<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:nil='true'>x</a>", xsd)),
        Lines{"1:73-1:74 bad-type /a: element 'a' has xsi:nil, so it must be empty; remove its content or xsi:nil"});
}

TEST(DiagnosticPassTest, ManyFaultsAgainstALargeTypeTakeLimitedTime)
{
    std::string xsd = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:complexType name='t'><xs:sequence>";
    for (int i = 0; i < 200; ++i)
        xsd += "<xs:element name='e" + std::to_string(i) + "' type='xs:string' minOccurs='0'/>";
    xsd +=
        "</xs:sequence></xs:complexType><xs:element name='r'><xs:complexType><xs:sequence>"
        "<xs:element name='p' type='t' maxOccurs='unbounded'/></xs:sequence></xs:complexType></xs:element></xs:schema>";
    std::string document = "<r>";
    for (int i = 0; i < 5000; ++i)
        document += "<p><e7/><e3/><f/></p>";
    const testsupport::CpuTimeLimit limit(60);
    const std::vector<ParseDiagnostic> diagnostics = Diagnose(document + "</r>", xsd.c_str());
    EXPECT_EQ(diagnostics.size(), 5001u);
    EXPECT_EQ(diagnostics.back().allowed, std::vector<VString>());
}

TEST(DiagnosticPassTest, DeepElementHasTheEndOfItsPath)
{
    std::string document;
    for (int i = 0; i < 5000; ++i)
        document += "<a>";
    const std::vector<ParseDiagnostic> diagnostics = Diagnose(document + "&#0;");
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_LE(diagnostics[0].path.length(), 1001);
    EXPECT_TRUE(diagnostics[0].path.endsWith("/a[1]/a[1]"));
    EXPECT_EQ(diagnostics[0].element, 5000u);
}

TEST(DiagnosticPassTest, HundredThousandFaultsTakeLinearTime)
{
    std::string document = "<orders>";
    for (int i = 0; i < 100000; ++i)
        document += "<order id='x'/>";
    EXPECT_EQ(Diagnose(document + "</orders>", schema).size(), 200000u);
    std::string attributes = "<orders";
    for (int i = 0; i < 100000; ++i)
        attributes += " a" + std::to_string(i) + "='1'";
    EXPECT_EQ(Diagnose(attributes + ">" + goodOrder + "</orders>", schema).size(), 100000u);
}

// The values begin like the prefix of the sanitizer.
TEST(DiagnosticPassTest, ManyFaultsBehindAColonNameTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(60);
    const std::string orders = testsupport::Repeat("<order id='IIIIIIIIIIIIIIII'/>", 40000);
    EXPECT_GE(Diagnose("<orders :x='1'>" + orders + "</orders>", schema).size(), 80000u);
}

}  // namespace
