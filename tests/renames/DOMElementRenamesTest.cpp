// The operations of DOMElement that use the renames of its document.
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

using testsupport::ExpectLogicException;

namespace {

constexpr const char* const File = "vancorexml\\main\\parser\\DOMElement";

class DOMElementRenamesTest : public testing::Test {
protected:
    DOMElementRenamesTest() : element(document.GetRoot().AddNewChild("a", nullptr))
    {
        document.AddDataSourceRename("source", "new");
        document.AddFieldRename(FieldName("new", "field"), FieldName("new", "renamed"));
        document.AddDataConnectionRename("connection", "newConnection");
        document.AddMapSourceRename("map", "newMap");
    }

    DOM document;
    DOMElement& element;
};

class DOMElementRenamesWithoutDocumentTest : public testing::Test {
protected:
    DOMElement element{"a"};
};

}  // namespace

TEST_F(DOMElementRenamesTest, GetFieldNameRenamesDataSourceAndField)
{
    element.SetAttribute("k", "[source].[field]");
    EXPECT_EQ(element.GetFieldName("k"), FieldName("new", "renamed"));
    element.SetAttribute("k", "[source].[other]");
    EXPECT_EQ(element.GetFieldName("k"), FieldName("new", "other"));
    element.SetAttribute("k", "plain");
    EXPECT_EQ(element.GetFieldName("k"), FieldName("", "plain"));
}

TEST_F(DOMElementRenamesTest, MissingAttributeIsReadAsTheEmptyName)
{
    QualifiedNameCache cache;
    EXPECT_TRUE(element.GetFieldName("k").IsEmpty());
    EXPECT_TRUE(element.GetFieldName("k", cache).IsEmpty());
    EXPECT_TRUE(element.GetTextAsFieldName().IsEmpty());
    EXPECT_TRUE(element.GetTextAsFieldName(cache).IsEmpty());
}

TEST_F(DOMElementRenamesTest, GetFieldNameCachesTheNameBeforeRenaming)
{
    QualifiedNameCache cache;
    element.SetAttribute("k", "[source].[field]");
    EXPECT_EQ(element.GetFieldName("k", cache), FieldName("new", "renamed"));
    ASSERT_EQ(cache.size(), 1u);
    EXPECT_EQ(cache.at("[source].[field]"), QualifiedName("source", "field"));
    EXPECT_EQ(element.GetFieldName("k", cache), FieldName("new", "renamed"));
    EXPECT_EQ(cache.size(), 1u);
}

TEST_F(DOMElementRenamesTest, GetFieldNamePrefersTheCache)
{
    QualifiedNameCache cache{{"text", QualifiedName("source", "field")}};
    element.SetAttribute("k", "text");
    EXPECT_EQ(element.GetFieldName("k", cache), FieldName("new", "renamed"));
    EXPECT_EQ(element.GetFieldName("k"), FieldName("", "text"));
}

TEST_F(DOMElementRenamesTest, GetLocalFieldNameRenamesUnderTheDataSource)
{
    element.SetAttribute("k", "[field]");
    EXPECT_EQ(element.GetLocalFieldName("k", "source"), FieldName("", "renamed"));
    EXPECT_EQ(element.GetLocalFieldName("k", "new"), FieldName("", "renamed"));
    EXPECT_EQ(element.GetLocalFieldName("k", "other"), FieldName("", "field"));
    element.SetAttribute("k", "field");
    EXPECT_EQ(element.GetLocalFieldName("k", "source"), FieldName("", "renamed"));
}

TEST_F(DOMElementRenamesTest, GetLocalFieldNameReplacesTheDataSourceInTheText)
{
    element.SetAttribute("k", "[other].[field]");
    EXPECT_EQ(element.GetLocalFieldName("k", "source"), FieldName("", "renamed"));
}

TEST_F(DOMElementRenamesTest, GetLocalFieldNameDoesNotRenameFieldsOfTheProtectedSource)
{
    document.SetProtectedDataSourceName("source");
    element.SetAttribute("k", "[field]");
    EXPECT_EQ(element.GetLocalFieldName("k", "source"), FieldName("", "field"));
    EXPECT_EQ(element.GetLocalFieldName("k", "new"), FieldName("", "renamed"));
}

TEST_F(DOMElementRenamesTest, GetLocalFieldNameUsesTheCache)
{
    QualifiedNameCache cache{{"text", QualifiedName("", "field")}};
    element.SetAttribute("k", "text");
    EXPECT_EQ(element.GetLocalFieldName("k", "source", cache), FieldName("", "renamed"));
    EXPECT_EQ(element.GetLocalFieldName("k", "source"), FieldName("", "text"));
    element.SetAttribute("k", "[x]");
    EXPECT_EQ(element.GetLocalFieldName("k", "source", cache), FieldName("", "x"));
    EXPECT_EQ(cache.count("[x]"), 1u);
}

TEST_F(DOMElementRenamesTest, OneCacheServesGlobalAndLocalNames)
{
    QualifiedNameCache cache;
    element.SetAttribute("k", "[source].[field]");
    EXPECT_EQ(element.GetLocalFieldName("k", "x", cache), FieldName("", "field"));
    EXPECT_EQ(element.GetFieldName("k", cache), FieldName("new", "renamed"));
    EXPECT_EQ(element.GetLocalFieldName("k", "x", cache), FieldName("", "field"));
}

TEST_F(DOMElementRenamesTest, GetTextAsFieldNameReadsTheText)
{
    QualifiedNameCache cache;
    element.SetText("[source].[field]");
    EXPECT_EQ(element.GetTextAsFieldName(), FieldName("new", "renamed"));
    EXPECT_EQ(element.GetTextAsFieldName(cache), FieldName("new", "renamed"));
    EXPECT_EQ(cache.count("[source].[field]"), 1u);
    cache["[source].[field]"] = QualifiedName("x", "y");
    EXPECT_EQ(element.GetTextAsFieldName(cache), FieldName("x", "y"));
}

TEST_F(DOMElementRenamesTest, LookupsUseTheRenamesOfTheDocument)
{
    EXPECT_EQ(element.RenameField(FieldName("source", "field")), FieldName("new", "renamed"));
    EXPECT_EQ(element.RenameDataSource("source"), VString("new"));
    EXPECT_EQ(element.RenameDataConnection("connection"), VString("newConnection"));
    EXPECT_EQ(element.RenameMapSource("map"), VString("newMap"));
    EXPECT_EQ(element.RenameMapSource("source"), VString("source"));
}

TEST_F(DOMElementRenamesTest, AddedRenamesAreStoredInTheDocument)
{
    element.AddCaptionRename("old", "newCaption");
    element.AddFieldRename(FieldName("a", "b"), FieldName("c", "d"));
    EXPECT_EQ(document.GetCaptionRenameIfItExists("old"), VString("newCaption"));
    EXPECT_EQ(document.RenameField(FieldName("a", "b")), FieldName("c", "d"));
    const char* const condition = "m_captionRenames.find(oldCaption) == m_captionRenames.end()";
    const auto addAgain = [&] { element.AddCaptionRename("old", "x"); };
    ExpectLogicException(addAgain, "vancorexml\\main\\parser\\DOM", 95, condition, 0xA2CD6EBC);
}

TEST_F(DOMElementRenamesTest, CaptionLookupsUseTheAttributeValue)
{
    element.AddCaptionRename("old", "newCaption");
    element.AddCaptionRename("", "none");
    element.SetAttribute("k", "old");
    element.SetAttribute("l", "other");
    EXPECT_EQ(element.GetCaptionRenameIfItExists("k"), VString("newCaption"));
    EXPECT_EQ(element.GetCaptionRenameIfItExists("l"), VString("other"));
    EXPECT_EQ(element.GetCaptionRenameIfItExists("missing"), VString("none"));
}

TEST_F(DOMElementRenamesWithoutDocumentTest, NamesAreNotRenamed)
{
    EXPECT_EQ(element.RenameField(FieldName("source", "field")), FieldName("source", "field"));
    EXPECT_EQ(element.RenameDataSource("name"), VString("name"));
    EXPECT_EQ(element.RenameDataConnection("name"), VString("name"));
    EXPECT_EQ(element.RenameMapSource("name"), VString("name"));
}

TEST_F(DOMElementRenamesWithoutDocumentTest, FieldNamesAreParsedButNotRenamed)
{
    QualifiedNameCache cache{{"text", QualifiedName("x", "y")}};
    element.SetAttribute("k", "[source].[field]");
    element.SetText("text");
    EXPECT_EQ(element.GetFieldName("k"), FieldName("source", "field"));
    EXPECT_EQ(element.GetFieldName("k", cache), FieldName("source", "field"));
    EXPECT_EQ(element.GetLocalFieldName("k", "other"), FieldName("", "field"));
    EXPECT_EQ(element.GetLocalFieldName("k", "other", cache), FieldName("", "field"));
    EXPECT_EQ(element.GetTextAsFieldName(), FieldName("", "text"));
    EXPECT_EQ(element.GetTextAsFieldName(cache), FieldName("x", "y"));
}

TEST_F(DOMElementRenamesWithoutDocumentTest, AddingARenameRequiresADocument)
{
    const std::string end = " can only be called on a DOMElement that is attached to a DOM";
    const std::string field = "DOMElement::AddFieldRename" + end;
    const std::string caption = "DOMElement::AddCaptionRename" + end;
    const auto addFieldRename = [&] { element.AddFieldRename(FieldName("a", "b"), FieldName("c", "d")); };
    const auto addCaptionRename = [&] { element.AddCaptionRename("old", "new"); };
    ExpectLogicException(addFieldRename, File, 677, field.c_str(), 0x7BB9AD71);
    ExpectLogicException(addCaptionRename, File, 686, caption.c_str(), 0xFFF990FC);
}

TEST_F(DOMElementRenamesWithoutDocumentTest, CaptionLookupsRequireADocument)
{
    ExpectLogicException([&] { element.GetCaptionRenameIfItExists("k"); },
        File,
        694,
        "DOMElement::GetCaptionRenameIfItExists can only be called on a DOMElement that is attached to a DOM",
        0x4E3B71C8);
}
