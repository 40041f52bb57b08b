#include "vancorexml/main/parser/XMLSourceRetargeter.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/XSDResources.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using AddRenames = std::function<void(DOM&)>;

void RenameOrders(DOM& tables)
{
    tables.AddDataSourceRename("orders", "sales");
}

AddRenames RenameCaption(const VString& newCaption)
{
    return [newCaption](DOM& tables) { tables.AddCaptionRename("old", newCaption); };
}

AddRenames RenameField(const FieldName& oldName, const FieldName& newName)
{
    return [=](DOM& tables) { tables.AddFieldRename(oldName, newName); };
}

// A retargeter with the schema of analyses.
class Analysis {
public:
    explicit Analysis(const AddRenames& addRenames, const XMLSourceRetargeter::Options& options = {})
        : m_roles(*XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXA, XSDResources::GetCurrentVersion())),
          m_retargeter(m_roles, m_tables, options)
    {
        m_tables.SetProtectedDataSourceName("nothing is protected");
        addRenames(m_tables);
    }

    // Returns the new text, or "no result". Expects that the edits lead to it.
    std::string Retarget(const std::string& text)
    {
        const std::optional<EditedText> result = m_retargeter.Retarget(text, "document");
        if (!result)
            return "no result";
        std::string edited = text;
        for (auto edit = result->edits.rbegin(); edit != result->edits.rend(); ++edit)
            edited.replace(edit->offset, edit->length, edit->replacement);
        EXPECT_EQ(edited, result->text);
        return result->text;
    }

    // Returns "line:column old -> new" for each name.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const RenamedName& name : m_retargeter.GetRenamedNames()) {
            names.push_back(std::to_string(name.line) + ":" + std::to_string(name.column) + " " +
                name.oldName.toStdString() + " -> " + name.newName.toStdString());
        }
        return names;
    }

    const XMLSourceRetargeter& Get() const { return m_retargeter; }

private:
    NameRoles m_roles;
    DOM m_tables;
    XMLSourceRetargeter m_retargeter;
};

// Returns a document with this text in an element "rows", which holds a formula. Its data source is "orders".
std::string WithRows(const std::string& formula)
{
    return "<analysis><views><view name='v' data-source='x'><rows>" + formula + "</rows></view></views></analysis>";
}

// Returns a document with these attributes in an element "data-source".
std::string WithDataSource(const std::string& attributes)
{
    return "<analysis><data-sources><data-source " + attributes + "/></data-sources></analysis>";
}

struct EditRow {
    const char* name;
    AddRenames addRenames;
    std::string before;
    std::string after;
};

void PrintTo(const EditRow& row, std::ostream* out)
{
    *out << row.before;
}

class XMLSourceRetargeterTest : public testing::TestWithParam<EditRow> {};

TEST_P(XMLSourceRetargeterTest, ReplacesOnlyTheNames)
{
    EXPECT_EQ(Analysis(GetParam().addRenames).Retarget(GetParam().before), GetParam().after);
}

const FieldName sales("orders", "Sales");

const EditRow EditRows[] = {
    {"Formula",
        RenameOrders,
        WithRows("[orders].[Sales] * [orders].[Order Date]"),
        WithRows("[sales].[Sales] * [sales].[Order Date]")},
    {"ReferencesBesideTheName",
        RenameOrders,
        WithRows("&#x41;&lt;[orders].[a]&gt;&amp;&#65;"),
        WithRows("&#x41;&lt;[sales].[a]&gt;&amp;&#65;")},
    {"NameWrittenWithReferences",
        RenameOrders,
        WithRows("1 + [o&#114;ders].[a&#x5D;+1"),
        WithRows("1 + [sales].[a]+1")},
    {"NameInCDataSection",
        RenameOrders,
        WithRows("1 + <![CDATA[[orders].[a] & [orders].[b]]]>"),
        WithRows("1 + <![CDATA[[sales].[a] & [sales].[b]]]>")},
    {"ReferenceInCDataSectionIsNone",
        RenameOrders,
        WithRows("<![CDATA[&lt;[orders].[a]]]>"),
        WithRows("<![CDATA[&lt;[sales].[a]]]>")},
    {"NameDividedByAComment",
        RenameOrders,
        WithRows("[ord<!-- [orders].[a] -->ers].[a] + [orders].[b]"),
        WithRows("[sales].[a]<!-- [orders].[a] --> + [sales].[b]")},
    {"NameDividedByCDataSection",
        RenameOrders,
        WithRows("[orders].<![CDATA[[a] > 1]]>"),
        WithRows("[sales].[a]<![CDATA[ > 1]]>")},
    {"CarriageReturnsBeforeTheName",
        RenameOrders,
        WithRows("1\r\n+\r[orders].[a]\r\n"),
        WithRows("1\r\n+\r[sales].[a]\r\n")},
    {"CharactersBeyondTheBasicPlane",
        RenameOrders,
        WithRows("'\xF0\x9F\x98\x80' + [orders].[\xF0\x9F\x98\x80]"),
        WithRows("'\xF0\x9F\x98\x80' + [sales].[\xF0\x9F\x98\x80]")},
    {"WhiteSpaceAroundAName",
        RenameOrders,
        WithDataSource("name=' orders&#10;'"),
        WithDataSource("name=' sales&#10;'")},
    {"WhiteSpaceInsideTags",
        RenameOrders,
        WithDataSource("name\n =\t\"orders\" "),
        WithDataSource("name\n =\t\"sales\" ")},
    {"OtherAttributeWithTheSameValue",
        RenameOrders,
        WithDataSource(":name='orders' name='orders' inline='orders'"),
        WithDataSource(":name='orders' name='sales' inline='orders'")},
    {"EscapesForApostrophes",
        RenameCaption("<'\"&>\t\r\n"),
        WithDataSource("caption='old'"),
        WithDataSource("caption='&lt;&apos;\"&amp;&gt;&#9;&#13;&#10;'")},
    {"EscapesForQuotes",
        RenameCaption("'\""),
        WithDataSource("caption=\"old\""),
        WithDataSource("caption=\"'&quot;\"")},
    {"EscapesInText",
        RenameField(sales, FieldName("orders", "a<b>&'\n")),
        WithRows("[orders].[Sales]"),
        WithRows("[orders].[a&lt;b&gt;&amp;'\n]")},
    {"BracketsBeforeGreaterInText",
        RenameField(sales, FieldName("orders", "a]")),
        WithRows("[orders].[Sales]>1"),
        WithRows("[orders].[a]]&#93;>1")},
    {"BracketsInCDataSection",
        RenameField(sales, FieldName("orders", "a]")),
        WithRows("<![CDATA[[orders].[Sales]>1]]>"),
        WithRows("<![CDATA[[orders].[a]]]]><![CDATA[]>1]]>")},
    {"EverythingElseStays",
        RenameOrders,
        "<?xml version='1.0'  encoding='utf-8' ?>\r\n<!DOCTYPE analysis [<!ENTITY e 'x'>]><!--orders-->" +
            WithRows("[orders].[a]<?orders?>") + "<?orders?>\n",
        "<?xml version='1.0'  encoding='utf-8' ?>\r\n<!DOCTYPE analysis [<!ENTITY e 'x'>]><!--orders-->" +
            WithRows("[sales].[a]<?orders?>") + "<?orders?>\n"},
    {"LineEndsOfVersion11AroundAName",
        RenameOrders,
        "<?xml version='1.1'?>" + WithDataSource("name='\r\xC2\x85orders\xC2\x85\xE2\x80\xA8'"),
        "<?xml version='1.1'?>" + WithDataSource("name='\r\xC2\x85sales\xC2\x85\xE2\x80\xA8'")},
    {"LineEndsOfVersion11BesideAName",
        RenameOrders,
        " <?xml version='1.1'?>" +
            WithRows("1\r\xC2\x85 + [orders].[a]\xC2\x85<![CDATA[\xE2\x80\xA8 + [orders].[b]]]>"),
        " <?xml version='1.1'?>" + WithRows("1\r\xC2\x85 + [sales].[a]\xC2\x85<![CDATA[\xE2\x80\xA8 + [sales].[b]]]>")},
    {"ControlCharactersInVersion11",
        RenameCaption(VString::fromStdString("\x01\x7F\xC2\x85\xE2\x80\xA8")),
        "<?xml version='1.1'?>" + WithDataSource("caption='old'"),
        "<?xml version='1.1'?>" + WithDataSource("caption='&#1;&#127;&#133;&#8232;'")},
    {"WhiteSpaceInNamesOfAttributes",
        RenameField(FieldName("orders", "my field"), FieldName("orders", "x")),
        WithRows("</rows><filter field='[orders].[my\tfield]'/><filter field='[orders].[my\nfield]'/><rows>"),
        WithRows("</rows><filter field='[orders].[x]'/><filter field='[orders].[x]'/><rows>")},
    {"WhiteSpaceInNamesOfText",
        RenameField(FieldName("orders", "my\n\tfield"), FieldName("orders", "x")),
        WithRows("[orders].[my\r\n\tfield]"),
        WithRows("[orders].[x]")},
    {"CarriageReturnInCDataSection",
        RenameField(sales, FieldName("orders", "a\rb")),
        WithRows("<![CDATA[[orders].[Sales]]]>"),
        WithRows("<![CDATA[[orders].[a]]>&#13;<![CDATA[b]]]>")},
    {"DocumentWithoutTheName", RenameOrders, WithRows("[plan].[a]"), WithRows("[plan].[a]")},
    {"EntityInAnotherValue",
        RenameOrders,
        "<!DOCTYPE analysis [<!ENTITY e 'x'>]>" + WithDataSource("caption='&e;' name='orders'"),
        "<!DOCTYPE analysis [<!ENTITY e 'x'>]>" + WithDataSource("caption='&e;' name='sales'")},
};

INSTANTIATE_TEST_SUITE_P(Rows, XMLSourceRetargeterTest, testing::ValuesIn(EditRows), [](const auto& row) {
    return std::string(row.param.name);
});

struct EntityRow {
    const char* name;
    std::string text;
};

void PrintTo(const EntityRow& row, std::ostream* out)
{
    *out << row.text;
}

class XMLSourceRetargeterEntityTest : public testing::TestWithParam<EntityRow> {};

TEST_P(XMLSourceRetargeterEntityTest, Throws)
{
    try {
        Analysis(RenameOrders).Retarget(GetParam().text);
        ADD_FAILURE() << "no exception";
    } catch (const VantoraException& exception) {
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("VantoraException_NameInEntity_0x3D90B6E2"));
    }
}

const EntityRow entityRows[] = {
    {"NameFromAnEntity", "<!DOCTYPE analysis [<!ENTITY e 'orders'>]>" + WithDataSource("name='&e;'")},
    {"PartOfANameFromAnEntity", "<!DOCTYPE analysis [<!ENTITY e 'ord'>]>" + WithRows("[&e;ers].[a]")},
    {"EntityBesideTheName", "<!DOCTYPE analysis [<!ENTITY e '1'>]>" + WithRows("[orders].[a] + &e;")},
    {"ElementFromAnEntity",
        "<!DOCTYPE analysis [<!ENTITY e \"<data-source name='orders'/>\">]>"
        "<analysis><data-sources>&e;</data-sources></analysis>"},
    {"ElementBehindAnElementFromAnEntity",
        "<!DOCTYPE analysis [<!ENTITY e \"<data-source name='plan'/>\">]>"
        "<analysis><data-sources>&e;<data-source name='orders'/></data-sources></analysis>"},
    {"DefaultValue",
        "<!DOCTYPE analysis [<!ATTLIST data-source name CDATA 'orders'>]>" + WithDataSource("caption='x'")},
};

INSTANTIATE_TEST_SUITE_P(Rows, XMLSourceRetargeterEntityTest, testing::ValuesIn(entityRows), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(XMLSourceRetargeterTest, PositionsAreThoseOfTheNames)
{
    Analysis retargeter(RenameOrders);
    retargeter.Retarget(
        "\n<analysis>\r\n<views>\r<view name='\xF0\x9F\x98\x80\xC3\xA9' data-source='orders'>\n<rows>1 + "
        "[orders].[a]\n + [orders].[b]</rows><filter\tfield='[orders].[c]'/></view></views></analysis>");
    EXPECT_THAT(retargeter.Names(),
        ElementsAre("4:31 orders -> sales",
            "5:11 [orders].[a] -> [sales].[a]",
            "6:4 [orders].[b] -> [sales].[b]",
            "6:38 [orders].[c] -> [sales].[c]"));
}

TEST(XMLSourceRetargeterTest, PositionsCountTheLineEndsOfVersion11)
{
    Analysis retargeter(RenameOrders);
    const std::string lines = "\xC2\x85\xE2\x80\xA8\r\xC2\x85\r\n";
    retargeter.Retarget("<?xml version='1.1'?>" + lines + WithRows("[orders].[a]"));
    EXPECT_THAT(retargeter.Names(), ElementsAre("5:55 [orders].[a] -> [sales].[a]"));
    retargeter.Retarget("<?xml version='1.0'?>\n" + WithRows(lines + "[orders].[a]"));
    EXPECT_THAT(retargeter.Names(), ElementsAre("4:1 [orders].[a] -> [sales].[a]"));
}

struct UnwritableRow {
    const char* name;
    AddRenames addRenames;
    const char* message;
};

void PrintTo(const UnwritableRow& row, std::ostream* out)
{
    *out << row.name;
}

class XMLSourceRetargeterUnwritableTest : public testing::TestWithParam<UnwritableRow> {};

TEST_P(XMLSourceRetargeterUnwritableTest, Throws)
{
    try {
        Analysis(GetParam().addRenames).Retarget(WithDataSource("name='orders' caption='old'"));
        ADD_FAILURE() << "no exception";
    } catch (const VantoraException& exception) {
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("VantoraException_UnwritableName_0x8F42D07B"));
        EXPECT_THAT(exception.GetMessage().toStdString(), HasSubstr(GetParam().message));
    }
}

AddRenames RenameOrdersTo(const char* newName)
{
    return [newName](DOM& tables) { tables.AddDataSourceRename("orders", newName); };
}

const UnwritableRow unwritableRows[] = {
    {"ControlCharacter", RenameCaption("a\x01"), "XML does not allow the character U+0001"},
    {"Noncharacter", RenameCaption(VString::fromStdString("\xEF\xBF\xBE")), "XML does not allow the character U+FFFE"},
    {"BlankAtTheStart", RenameOrdersTo(" sales"), "\"orders\" cannot become \" sales\": this name must not have"},
    {"BlankAtTheEnd", RenameOrdersTo("sales "), "white space"},
    {"TwoBlanks", RenameOrdersTo("my  sales"), "white space"},
    {"Tab", RenameOrdersTo("my\tsales"), "white space"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLSourceRetargeterUnwritableTest, testing::ValuesIn(unwritableRows), [](const auto& row) {
        return std::string(row.param.name);
    });

TEST(XMLSourceRetargeterTest, CaptionsKeepTheirWhiteSpace)
{
    EXPECT_EQ(Analysis(RenameCaption(" a  b ")).Retarget(WithDataSource("caption='old'")),
        WithDataSource("caption=' a  b '"));
}

TEST(XMLSourceRetargeterTest, AttributesAreInTheOrderOfTheText)
{
    Analysis retargeter([](DOM& tables) {
        tables.AddDataSourceRename("a", "b");
        tables.AddCaptionRename("c", "d");
    });
    EXPECT_EQ(retargeter.Retarget(WithDataSource("caption='c' name='a'")), WithDataSource("caption='d' name='b'"));
    EXPECT_THAT(retargeter.Names(), ElementsAre("1:47 c -> d", "1:56 a -> b"));
    EXPECT_EQ(retargeter.Retarget(WithDataSource("name='a' caption='c'")), WithDataSource("name='b' caption='d'"));
    EXPECT_THAT(retargeter.Names(), ElementsAre("1:44 a -> b", "1:56 c -> d"));
}

TEST(XMLSourceRetargeterTest, ReportsClashesWithTheirPlace)
{
    Analysis retargeter([](DOM& tables) { tables.AddDataSourceRename("orders", "plan"); });
    const std::string text =
        "<analysis><data-sources><data-source name='orders'/>\n<data-source name='plan'/></data-sources></analysis>";
    EXPECT_EQ(retargeter.Retarget(text), "no result");
    ASSERT_EQ(retargeter.Get().GetClashes().size(), 1u);
    const ClashingName& clash = retargeter.Get().GetClashes().front();
    EXPECT_EQ(clash.role, NameRole::DataSource);
    EXPECT_EQ(clash.other, VString("orders"));
    EXPECT_EQ(clash.oldName, VString("plan"));
    EXPECT_EQ(clash.newName, VString("plan"));
    EXPECT_EQ(clash.line, 2u);
    EXPECT_EQ(clash.column, 20u);
}

TEST(XMLSourceRetargeterTest, ClashesAreInTheOrderOfTheText)
{
    Analysis retargeter([](DOM& tables) {
        for (const char* name : {"b", "c", "d", "e"})
            tables.AddCaptionRename(name, "a");
    });
    std::string text = "<analysis><data-sources>";
    for (const char* name : {"a", "b", "c", "d", "e"})
        text += "<data-source caption='" + std::string(name) + "'/>\n";
    EXPECT_EQ(retargeter.Retarget(text + "</data-sources></analysis>"), "no result");
    std::vector<std::size_t> lines;
    for (const ClashingName& clash : retargeter.Get().GetClashes())
        lines.push_back(clash.line);
    EXPECT_THAT(lines, ElementsAre(2u, 3u, 4u, 5u));
}

TEST(XMLSourceRetargeterTest, ManyClashesTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(20);
    std::string sources;
    Analysis retargeter([&](DOM& tables) {
        for (int i = 0; i < 30000; ++i) {
            const VString name = VString::number(i);
            tables.AddCaptionRename(name, "x");
            sources += "<data-source caption='" + name.toStdString() + "'/>\n";
        }
    });
    EXPECT_EQ(retargeter.Retarget("<analysis><data-sources>" + sources + "</data-sources></analysis>"), "no result");
    EXPECT_EQ(retargeter.Get().GetClashes().size(), 29999u);
}

TEST(XMLSourceRetargeterTest, ReportsErrorsOfTheDocument)
{
    Analysis retargeter(RenameOrders);
    EXPECT_EQ(retargeter.Retarget("<analysis>"), "no result");
    EXPECT_FALSE(retargeter.Get().GetDiagnostics().empty());
    retargeter.Retarget(WithRows(""));
    EXPECT_THAT(retargeter.Get().GetDiagnostics(), IsEmpty());
}

TEST(XMLSourceRetargeterTest, SecondRunChangesNothing)
{
    const AddRenames addRenames = [](DOM& tables) {
        tables.AddDataSourceRename("orders", "sales");
        tables.AddFieldRename(FieldName("sales", "a"), FieldName("sales", "b"));
    };
    const std::string renamed = Analysis(addRenames).Retarget(WithRows("[orders].[a] + [sales].[c]"));
    EXPECT_THAT(renamed, "no result");  // two data sources would become one
    const std::string first = Analysis(addRenames).Retarget(WithRows("[orders].[a] + [orders].[c]"));
    EXPECT_EQ(first, WithRows("[sales].[b] + [sales].[c]"));
    Analysis again(addRenames);
    EXPECT_EQ(again.Retarget(first), first);
    EXPECT_THAT(again.Names(), IsEmpty());
}

TEST(XMLSourceRetargeterTest, WritesCharactersThatTheEncodingLacksAsReferences)
{
    XMLSourceRetargeter::Options options;
    options.canEncode = [](char32_t character) { return character < 0x80; };
    Analysis caption(RenameCaption(VString::fromStdString("\xE2\x82\xAC\xF0\x9F\x98\x80")), options);
    EXPECT_EQ(caption.Retarget(WithDataSource("caption='old'")), WithDataSource("caption='&#8364;&#128512;'"));
    Analysis field(RenameField(sales, FieldName("orders", VString::fromStdString("\xE2\x82\xAC"))), options);
    EXPECT_EQ(field.Retarget(WithRows("<![CDATA[[orders].[Sales]]]>")),
        WithRows("<![CDATA[[orders].[]]>&#8364;<![CDATA[]]]>"));
}

// If each name read the value again, the 20,000 names would take minutes.
TEST(XMLSourceRetargeterTest, LongFormulasInAttributesTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(20);
    std::string before;
    std::string after;
    for (int i = 0; i < 20000; ++i) {
        before += "[orders].[a]+";
        after += "[sales].[a]+";
    }
    const auto withFormula = [](const std::string& formula) {
        return "<analysis><data-sources><data-source name='x'><column name='c'><calculation formula='" + formula +
            "'/></column></data-source></data-sources></analysis>";
    };
    EXPECT_EQ(Analysis(RenameOrders).Retarget(withFormula(before)), withFormula(after));
}

TEST(XMLSourceRetargeterTest, LongFormulasTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(20);
    std::string before;
    std::string after;
    for (int i = 0; i < 20000; ++i) {
        before += "[orders].[a]+";
        after += "[sales].[a]+";
    }
    EXPECT_EQ(Analysis(RenameOrders).Retarget(WithRows(before)), WithRows(after));
}

}  // namespace
