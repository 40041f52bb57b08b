#include "vancorexml/main/parser/NameRetargeter.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XSDResources.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

// A parsed document. References to the roles end with the parse.
struct Result {
    std::vector<std::string> changes;  // "element@attribute offset+length: old -> new = text"
    std::vector<std::string> clashes;  // "element@attribute: first, second -> new"
    std::size_t elementCount = 0;
};

std::string Place(const NamePlace& place)
{
    return std::to_string(place.element) + "@" + place.attribute.toStdString();
}

Result Retarget(XmlFileType type, const std::string& text, const std::function<void(DOM&)>& addRenames)
{
    const NameRoles roles(*XSDResources::GetVersionedXsdInputSource(type, XSDResources::GetCurrentVersion()));
    DOM tables;
    tables.SetProtectedDataSourceName("nothing is protected");
    addRenames(tables);
    StringInputSource source(VString::fromStdString(text), "document", false);
    const auto retargeter = std::make_shared<NameRetargeter>(roles, tables);
    const auto parser = XercesXMLParser::Create(source, retargeter);
    parser->Parse();
    EXPECT_THAT(parser->GetErrors(), testing::IsEmpty());
    Result result;
    for (const NameChange& change : retargeter->GetChanges()) {
        result.changes.push_back(Place(change.place) + " " + std::to_string(change.place.offset) + "+" +
            std::to_string(change.place.length) + ": " + change.oldName.toStdString() + " -> " +
            change.newName.toStdString() + " = " + change.newText.toStdString());
    }
    for (const NameClash& clash : retargeter->GetClashes()) {
        result.clashes.push_back(Place(clash.place) + ": " + clash.first.toStdString() + ", " +
            clash.second.toStdString() + " -> " + clash.newName.toStdString());
    }
    result.elementCount = retargeter->GetElementCount();
    return result;
}

FieldName Field(const char* text)
{
    return FieldName::ParseGlobal(text);
}

const std::string AnalysisText = "<analysis version='18.1'>"                                               // element 0
                                 "<data-sources>"                                                          // 1
                                 "<data-source name=' orders ' caption='Orders'>"                          // 2
                                 "<connection class='text-file' filename='C:\\in\\a.csv'/>"                // 3
                                 "<column name='Sales' caption='Umsatz'/>"                                 // 4
                                 "<column name='[Margin]' caption='Marge'>"                                // 5
                                 "<calculation formula=\"[Sales] / [plan].[Sales] + '[Sales]'\"/>"         // 6
                                 "</column></data-source>"                                                 //
                                 "<data-source name='plan'><column name='Sales' caption='Umsatz'/>"        // 7, 8
                                 "</data-source></data-sources>"                                           //
                                 "<map-sources><map-source name='tiles'/></map-sources>"                   // 9, 10
                                 "<views><view name='v' data-source='orders'>"                             // 11, 12
                                 "<rows>[orders].[Sales] * [Sales] * [plan].[Sales]</rows>"                // 13
                                 "<filter field='[orders].[Sales]'/><filter field='[ orders ].[Sales]'/>"  // 14, 15
                                 "</view></views></analysis>";

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(NameRetargeterTest, RenamesADataSourceWhereItIsNamedAndInFields)
{
    const Result result =
        Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) { tables.AddDataSourceRename("orders", "sales"); });
    EXPECT_THAT(result.changes,
        ElementsAre("2@name 0+6: orders -> sales = sales",
            "12@data-source 0+6: orders -> sales = sales",
            "13@ 0+16: [orders].[Sales] -> [sales].[Sales] = [sales].[Sales]",
            "14@field 0+16: [orders].[Sales] -> [sales].[Sales] = [sales].[Sales]"));
    EXPECT_THAT(result.clashes, IsEmpty());
    EXPECT_EQ(result.elementCount, 16u);
}

TEST(NameRetargeterTest, RenamesAFieldOfItsDataSourceOnly)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddFieldRename(Field("[orders].[Sales]"), Field("[orders].[Net]"));
    });
    EXPECT_THAT(result.changes,
        ElementsAre("4@name 0+5: [orders].[Sales] -> [orders].[Net] = Net",
            "6@formula 0+7: [orders].[Sales] -> [orders].[Net] = [Net]",
            "13@ 0+16: [orders].[Sales] -> [orders].[Net] = [orders].[Net]",
            "13@ 19+7: [orders].[Sales] -> [orders].[Net] = [Net]",
            "14@field 0+16: [orders].[Sales] -> [orders].[Net] = [orders].[Net]"));
}

TEST(NameRetargeterTest, FieldRenamesApplyUnderTheNewNameOfTheDataSource)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddDataSourceRename("plan", "p");
        tables.AddFieldRename(Field("[p].[Sales]"), Field("[p].[Net]"));
        tables.AddFieldRename(Field("[plan].[Sales]"), Field("[plan].[Gross]"));
    });
    EXPECT_THAT(result.changes,
        ElementsAre("6@formula 10+14: [plan].[Sales] -> [p].[Net] = [p].[Net]",
            "7@name 0+4: plan -> p = p",
            "8@name 0+5: [plan].[Sales] -> [p].[Net] = Net",
            "13@ 29+14: [plan].[Sales] -> [p].[Net] = [p].[Net]"));
}

TEST(NameRetargeterTest, LocalNamesStayInTheirDataSource)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddDataSourceRename("orders", "o");
        tables.AddFieldRename(Field("[o].[Sales]"), Field("[plan].[Net]"));
    });
    EXPECT_THAT(result.clashes, IsEmpty());
    EXPECT_THAT(result.changes,
        ElementsAre("2@name 0+6: orders -> o = o",
            "4@name 0+5: [orders].[Sales] -> [o].[Net] = Net",
            "6@formula 0+7: [orders].[Sales] -> [o].[Net] = [Net]",
            "12@data-source 0+6: orders -> o = o",
            "13@ 0+16: [orders].[Sales] -> [plan].[Net] = [plan].[Net]",
            "13@ 19+7: [orders].[Sales] -> [o].[Net] = [Net]",
            "14@field 0+16: [orders].[Sales] -> [plan].[Net] = [plan].[Net]"));
}

TEST(NameRetargeterTest, BracketedLocalNamesStayBracketed)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddFieldRename(Field("[orders].[Margin]"), Field("[orders].[Gain]"));
    });
    EXPECT_THAT(result.changes, ElementsAre("5@name 0+8: [orders].[Margin] -> [orders].[Gain] = [Gain]"));
}

TEST(NameRetargeterTest, PlainLocalNameGetsBracketsIfItWouldMeanAnotherName)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddFieldRename(Field("[plan].[Sales]"), FieldName("plan", "[x]"));
    });
    EXPECT_THAT(result.changes, testing::Contains("8@name 0+5: [plan].[Sales] -> [plan].[[x]]] = [[x]]]"));
}

TEST(NameRetargeterTest, FieldsOfTheProtectedDataSourceStay)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.SetProtectedDataSourceName("orders");
        tables.AddFieldRename(Field("[orders].[Sales]"), Field("[orders].[Net]"));
        tables.AddFieldRename(Field("[plan].[Sales]"), Field("[plan].[Net]"));
    });
    EXPECT_THAT(result.changes,
        ElementsAre("6@formula 10+14: [plan].[Sales] -> [plan].[Net] = [plan].[Net]",
            "8@name 0+5: [plan].[Sales] -> [plan].[Net] = Net",
            "13@ 29+14: [plan].[Sales] -> [plan].[Net] = [plan].[Net]"));
}

TEST(NameRetargeterTest, RenamesCaptionsMapSourcesAndPaths)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddCaptionRename("Marge", "Margin");
        tables.AddMapSourceRename("tiles", "streets");
        PathRenames paths;
        paths.SetRename("C:/in/a.csv", "D:\\out\\a.csv");
        tables.SetPathRenames(paths);
    });
    EXPECT_THAT(result.changes,
        ElementsAre("3@filename 0+11: C:\\in\\a.csv -> D:\\out\\a.csv = D:\\out\\a.csv",
            "5@caption 0+5: Marge -> Margin = Margin",
            "10@name 0+5: tiles -> streets = streets"));
}

TEST(NameRetargeterTest, RenamesADataConnection)
{
    const Result result = Retarget(XmlFileTypeKXC,
        "<data-connection name='a'><connection><option name='trusted-roots' value='/r'/>"
        "<option name='charset' value='/r'/></connection></data-connection>",
        [](DOM& tables) {
            tables.AddDataConnectionRename("a", "b");
            PathRenames paths;
            paths.SetRename("/r", "/s");
            tables.SetPathRenames(paths);
        });
    EXPECT_THAT(result.changes, ElementsAre("0@name 0+1: a -> b = b", "2@value 0+2: /r -> /s = /s"));
}

TEST(NameRetargeterTest, RenamesTheCaptionedNamesOfTheirKind)
{
    const Result result = Retarget(XmlFileTypeKXE,
        "<captions><caption kind='field' name='a'><text>a</text></caption>"
        "<caption kind='data-source' name='a'/><caption kind='view' name='a'/></captions>",
        [](DOM& tables) {
            tables.AddDataSourceRename("a", "source");
            tables.AddFieldRename(FieldName(VString(), "a"), FieldName(VString(), "field"));
            tables.AddCaptionRename("a", "caption");
        });
    EXPECT_THAT(result.changes,
        ElementsAre("1@name 0+1: [a] -> [field] = field",
            "2@ 0+1: a -> caption = caption",
            "3@name 0+1: a -> source = source"));
}

TEST(NameRetargeterTest, TextOfAnElementWithChildrenHasNoRole)
{
    const Result result = Retarget(XmlFileTypeKXA,
        "<analysis><views><view data-source='a'><rows>[a].[x]<b/>[a].[x]</rows></view></views></analysis>",
        [](DOM& tables) { tables.AddDataSourceRename("a", "b"); });
    EXPECT_THAT(result.changes, ElementsAre("2@data-source 0+1: a -> b = b"));
}

TEST(NameRetargeterTest, UndeclaredElementsHaveNoNames)
{
    const Result result = Retarget(XmlFileTypeKXA,
        "<analysis><unknown><data-source name='a'/></unknown></analysis>",
        [](DOM& tables) { tables.AddDataSourceRename("a", "b"); });
    EXPECT_THAT(result.changes, IsEmpty());
    EXPECT_EQ(result.elementCount, 3u);
}

TEST(NameRetargeterTest, DataSourcesClash)
{
    const Result result =
        Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) { tables.AddDataSourceRename("plan", "orders"); });
    EXPECT_THAT(result.clashes, ElementsAre("6@formula: orders, plan -> orders"));
}

TEST(NameRetargeterTest, FieldsClashWithFieldsThatAreOnlyReferredTo)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddFieldRename(Field("[orders].[Margin]"), Field("[orders].[Sales]"));
    });
    EXPECT_THAT(result.clashes, ElementsAre("5@name: [orders].[Sales], [orders].[Margin] -> [orders].[Sales]"));
}

TEST(NameRetargeterTest, CaptionsClashAmongSiblingsOnly)
{
    const auto rename = [](DOM& tables) { tables.AddCaptionRename("Marge", "Umsatz"); };
    EXPECT_THAT(
        Retarget(XmlFileTypeKXA, AnalysisText, rename).clashes, ElementsAre("5@caption: Umsatz, Marge -> Umsatz"));
    const auto renameOther = [](DOM& tables) { tables.AddCaptionRename("Orders", "Umsatz"); };
    EXPECT_THAT(Retarget(XmlFileTypeKXA, AnalysisText, renameOther).clashes, IsEmpty());
}

TEST(NameRetargeterTest, EqualCaptionsDoNotClash)
{
    const Result result = Retarget(XmlFileTypeKXF,
        "<fields><field name='a' caption='x'/><field name='b' caption='x'/></fields>",
        [](DOM& tables) { tables.AddCaptionRename("x", "y"); });
    EXPECT_THAT(result.clashes, IsEmpty());
    EXPECT_EQ(result.changes.size(), 2u);
}

TEST(NameRetargeterTest, FilePathsDoNotClash)
{
    const Result result = Retarget(XmlFileTypeKXC,
        "<data-connection name='a'><connection><option name='trusted-roots' value='/r'/>"
        "<option name='trusted-roots' value='/s'/></connection></data-connection>",
        [](DOM& tables) {
            PathRenames paths;
            paths.SetRename("/r", "/s");
            tables.SetPathRenames(paths);
        });
    EXPECT_THAT(result.changes, ElementsAre("2@value 0+2: /r -> /s = /s"));
    EXPECT_THAT(result.clashes, IsEmpty());
}

TEST(NameRetargeterTest, SwappedNamesDoNotClash)
{
    const Result result = Retarget(XmlFileTypeKXA, AnalysisText, [](DOM& tables) {
        tables.AddDataSourceRename("plan", "orders");
        tables.AddDataSourceRename("orders", "plan");
    });
    EXPECT_THAT(result.clashes, IsEmpty());
    EXPECT_EQ(result.changes.size(), 7u);
}

TEST(NameRetargeterTest, EachClashIsReportedOnce)
{
    const Result result = Retarget(XmlFileTypeKXF,
        "<fields><field name='a'/><field name='b'><replaces name='a'/><replaces name='b'/></field></fields>",
        [](DOM& tables) { tables.AddFieldRename(FieldName(VString(), "b"), FieldName(VString(), "a")); });
    EXPECT_THAT(result.clashes, UnorderedElementsAre("2@name: [a], [b] -> [a]"));
}

}  // namespace
