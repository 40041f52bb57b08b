// The tables of renames that a document keeps.
#include <functional>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"

using testsupport::ExpectLogicException;

namespace {

struct TableRow {
    const char* name;
    void (DOM::*add)(const VString&, const VString&);
    VString (DOM::*rename)(const VString&) const;
};

// The tables of names in which a second rename replaces the first.
class DOMRenameTables : public testing::TestWithParam<TableRow> {};

}  // namespace

TEST_P(DOMRenameTables, ReturnTheNewNameOrTheArgument)
{
    DOM document;
    const auto rename = [&](const VString& name) { return (document.*GetParam().rename)(name); };
    EXPECT_EQ(rename("old"), VString("old"));
    (document.*GetParam().add)("old", "new");
    EXPECT_EQ(rename("old"), VString("new"));
    EXPECT_EQ(rename("Old"), VString("Old"));
    EXPECT_EQ(rename("new"), VString("new"));
    EXPECT_EQ(rename(""), VString(""));
}

TEST_P(DOMRenameTables, KeepTheLastNewName)
{
    DOM document;
    (document.*GetParam().add)("old", "new");
    (document.*GetParam().add)("old", "newer");
    EXPECT_EQ((document.*GetParam().rename)("old"), VString("newer"));
}

TEST_P(DOMRenameTables, DoNotFollowChains)
{
    DOM document;
    (document.*GetParam().add)("a", "b");
    (document.*GetParam().add)("b", "c");
    EXPECT_EQ((document.*GetParam().rename)("a"), VString("b"));
}

TEST_P(DOMRenameTables, AcceptEmptyNames)
{
    DOM document;
    (document.*GetParam().add)("", "new");
    (document.*GetParam().add)("old", "");
    EXPECT_EQ((document.*GetParam().rename)(""), VString("new"));
    EXPECT_EQ((document.*GetParam().rename)("old"), VString(""));
}

TEST_P(DOMRenameTables, AreIndependentOfEachOther)
{
    DOM document;
    (document.*GetParam().add)("old", "new");
    int renamed = 0;
    for (const auto rename :
        {&DOM::RenameDataSource, &DOM::RenameDataConnection, &DOM::RenameMapSource, &DOM::GetCaptionRenameIfItExists})
        renamed += (document.*rename)("old") == VString("new");
    EXPECT_EQ(renamed, 1);
}

const TableRow TableRows[] = {
    {"DataSource", &DOM::AddDataSourceRename, &DOM::RenameDataSource},
    {"DataConnection", &DOM::AddDataConnectionRename, &DOM::RenameDataConnection},
    {"MapSource", &DOM::AddMapSourceRename, &DOM::RenameMapSource},
};

INSTANTIATE_TEST_SUITE_P(
    DOMRenamesTest, DOMRenameTables, testing::ValuesIn(TableRows), [](const auto& row) { return row.param.name; });

TEST(DOMRenamesTest, CaptionLookupReturnsTheNewNameOrTheArgument)
{
    DOM document;
    document.AddCaptionRename("old", "new");
    EXPECT_EQ(document.GetCaptionRenameIfItExists("old"), VString("new"));
    EXPECT_EQ(document.GetCaptionRenameIfItExists("other"), VString("other"));
    EXPECT_EQ(document.RenameDataSource("old"), VString("old"));
}

TEST(DOMRenamesTest, RenamingACaptionTwiceAsserts)
{
    DOM document;
    document.AddCaptionRename("old", "new");
    const char* const file = "vancorexml\\main\\parser\\DOM";
    const char* const condition = "m_captionRenames.find(oldCaption) == m_captionRenames.end()";
    for (const char* newCaption : {"newer", "new"}) {
        const auto addAgain = [&] { document.AddCaptionRename("old", newCaption); };
        ExpectLogicException(addAgain, file, 95, condition, 0xA2CD6EBC);
    }
    EXPECT_EQ(document.GetCaptionRenameIfItExists("old"), VString("new"));
    document.AddCaptionRename("other", "new");
    EXPECT_EQ(document.GetCaptionRenameIfItExists("other"), VString("new"));
}

TEST(DOMRenamesTest, UnRenameReturnsTheFirstOldNameInOrder)
{
    DOM document;
    EXPECT_EQ(document.UnRenameDataSource("new"), VString("new"));
    document.AddDataSourceRename("c", "new");
    document.AddDataSourceRename("b", "new");
    document.AddDataSourceRename("a", "other");
    document.AddDataSourceRename("d", "new");
    EXPECT_EQ(document.UnRenameDataSource("new"), VString("b"));
    EXPECT_EQ(document.UnRenameDataSource("other"), VString("a"));
    EXPECT_EQ(document.UnRenameDataSource("c"), VString("c"));
}

TEST(DOMRenamesTest, UnRenameOrdersByCodeUnits)
{
    DOM document;
    document.AddDataSourceRename("a", "new");
    document.AddDataSourceRename("B", "new");
    EXPECT_EQ(document.UnRenameDataSource("new"), VString("B"));
}

TEST(DOMRenamesTest, TheProtectedNameIsEmptyAtFirst)
{
    DOM document;
    EXPECT_EQ(document.GetProtectedDataSourceName(), VString());
    document.SetProtectedDataSourceName("one");
    document.SetProtectedDataSourceName("two");
    EXPECT_EQ(document.GetProtectedDataSourceName(), VString("two"));
}

TEST(DOMRenameFieldTest, UnknownFieldIsNotRenamed)
{
    const DOM document;
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("source", "field"));
}

TEST(DOMRenameFieldTest, RenamesAField)
{
    DOM document;
    document.AddFieldRename(FieldName("source", "field"), FieldName("x", "y"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("x", "y"));
    EXPECT_EQ(document.RenameField(FieldName("source", "other")), FieldName("source", "other"));
    EXPECT_EQ(document.RenameField(FieldName("other", "field")), FieldName("other", "field"));
    document.AddFieldRename(FieldName("source", "field"), FieldName("x", "z"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("x", "z"));
}

TEST(DOMRenameFieldTest, RenamesTheDataSourceOfAField)
{
    DOM document;
    document.AddDataSourceRename("source", "new");
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("new", "field"));
    EXPECT_EQ(document.RenameField(FieldName("source", "")), FieldName("new", ""));
}

TEST(DOMRenameFieldTest, LooksUpFieldsUnderTheNewDataSource)
{
    DOM document;
    document.AddDataSourceRename("source", "new");
    document.AddFieldRename(FieldName("source", "field"), FieldName("never", "found"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("new", "field"));
    document.AddFieldRename(FieldName("new", "field"), FieldName("newest", "name"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("newest", "name"));
}

TEST(DOMRenameFieldTest, TheResultIsNotRenamedAgain)
{
    DOM document;
    document.AddDataSourceRename("a", "b");
    document.AddDataSourceRename("b", "c");
    document.AddFieldRename(FieldName("b", "x"), FieldName("b", "y"));
    document.AddFieldRename(FieldName("b", "y"), FieldName("b", "z"));
    EXPECT_EQ(document.RenameField(FieldName("a", "x")), FieldName("b", "y"));
}

TEST(DOMRenameFieldTest, TheEmptyNameStaysEmpty)
{
    DOM document;
    document.SetProtectedDataSourceName("protected");
    document.AddDataSourceRename("", "new");
    document.AddFieldRename(FieldName(), FieldName("x", "y"));
    document.AddFieldRename(FieldName("new", ""), FieldName("x", "z"));
    EXPECT_EQ(document.RenameField(FieldName()), FieldName());
}

TEST(DOMRenameFieldTest, TheProtectedDataSourceIsNeverRenamed)
{
    DOM document;
    document.SetProtectedDataSourceName("source");
    document.AddDataSourceRename("source", "new");
    document.AddFieldRename(FieldName("source", "field"), FieldName("x", "y"));
    document.AddFieldRename(FieldName("new", "field"), FieldName("x", "y"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("source", "field"));
    EXPECT_EQ(document.RenameDataSource("source"), VString("new"));
}

TEST(DOMRenameFieldTest, RenamingASourceToTheProtectedNameDoesNotProtectItsFields)
{
    DOM document;
    document.SetProtectedDataSourceName("new");
    document.AddDataSourceRename("source", "new");
    document.AddFieldRename(FieldName("new", "field"), FieldName("x", "y"));
    EXPECT_EQ(document.RenameField(FieldName("source", "field")), FieldName("x", "y"));
}

TEST(DOMRenameFieldTest, FieldWithoutDataSourceIsRenamedOnlyIfASourceIsProtected)
{
    DOM document;
    document.AddFieldRename(FieldName("", "field"), FieldName("", "new"));
    EXPECT_EQ(document.RenameField(FieldName("", "field")), FieldName("", "field"));
    document.SetProtectedDataSourceName("source");
    EXPECT_EQ(document.RenameField(FieldName("", "field")), FieldName("", "new"));
}

TEST(DOMRenamesTest, DeepCopyCopiesAllTables)
{
    DOM from;
    from.AddCaptionRename("caption", "1");
    from.AddDataSourceRename("source", "2");
    from.AddDataConnectionRename("connection", "3");
    from.AddMapSourceRename("map", "4");
    from.AddFieldRename(FieldName("f", "g"), FieldName("h", "i"));
    from.SetProtectedDataSourceName("protected");
    DOM to;
    to.AddMapSourceRename("gone", "5");
    to.DeepCopy(from);
    EXPECT_EQ(to.GetCaptionRenameIfItExists("caption"), VString("1"));
    EXPECT_EQ(to.RenameDataSource("source"), VString("2"));
    EXPECT_EQ(to.RenameDataConnection("connection"), VString("3"));
    EXPECT_EQ(to.RenameMapSource("map"), VString("4"));
    EXPECT_EQ(to.RenameMapSource("gone"), VString("gone"));
    EXPECT_EQ(to.RenameField(FieldName("f", "g")), FieldName("h", "i"));
    EXPECT_EQ(to.GetProtectedDataSourceName(), VString("protected"));
}
