#include "vancorexml/main/parser/DOM.h"

#include <type_traits>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;
using testsupport::ExpectLogicException;

static_assert(std::is_polymorphic_v<DOM>);
static_assert(!std::is_copy_constructible_v<DOM> && !std::is_move_constructible_v<DOM>);

namespace {

DOMElement& AddChain(DOMElement& top, int levels)
{
    DOMElement* low = &top;
    for (int i = 0; i < levels; ++i)
        low = &low->AddNewChild("level", nullptr);
    return *low;
}

// Registers `to` as the new name of `from` in every table of renames.
void RegisterRenames(DOM& document, const VString& from, const VString& to)
{
    document.AddCaptionRename(from, to);
    document.AddDataSourceRename(from, to);
    document.AddDataConnectionRename(from, to);
    document.AddMapSourceRename(from, to);
    document.AddFieldRename(FieldName(to, from), FieldName(to, to));
    PathRenames paths;
    paths.SetRename(VPath(from), VPath(to));
    document.SetPathRenames(paths);
}

// Returns the new names of `name`, one for each kind of rename.
Texts RenamesOf(const DOM& document, const VString& name)
{
    const VString names[] = {document.GetCaptionRenameIfItExists(name),
        document.RenameDataSource(name),
        document.RenameDataConnection(name),
        document.RenameMapSource(name),
        document.RenameField(FieldName(name, name)).GetFullValue(),
        document.GetPathRenames().RenamePath(VPath(name)).GenericString()};
    Texts texts;
    for (const VString& i : names)
        texts.push_back(i.toStdString());
    return texts;
}

}  // namespace

TEST(DOMTest, StartsWithTheRootOnly)
{
    DOM document;
    EXPECT_EQ(document.GetRoot().GetName(), VString("Document"));
    EXPECT_FALSE(document.GetRoot().HasChildren());
    EXPECT_TRUE(document.GetRoot().IsRootNode());
    EXPECT_EQ(document.GetRoot().GetDOMManager(), &document);
    EXPECT_EQ(document.GetDocumentRoot(), nullptr);
    EXPECT_EQ(std::as_const(document).GetDocumentRoot(), nullptr);
    EXPECT_EQ(document.GetElement("Document"), &document.GetRoot());
    EXPECT_EQ(std::as_const(document).GetElement("Document"), &document.GetRoot());
}

TEST(DOMTest, DocumentRootIsTheFirstChild)
{
    DOM document;
    DOMElement& first = document.GetRoot().AddNewChild("a", nullptr);
    document.GetRoot().AddNewChild("b", nullptr);
    EXPECT_EQ(document.GetDocumentRoot(), &first);
    EXPECT_EQ(std::as_const(document).GetDocumentRoot(), &first);
}

TEST(DOMTest, GetElementSearchesAThousandLevels)
{
    DOM document;
    DOMElement& last = AddChain(document.GetRoot(), 999).AddNewChild("here", nullptr);
    last.AddNewChild("below", nullptr);
    EXPECT_EQ(document.GetElement("here"), &last);
    EXPECT_EQ(document.GetElement("below"), nullptr);
    EXPECT_EQ(std::as_const(document).GetElement("below"), nullptr);
}

TEST(DOMTest, SettingsAreStored)
{
    DOM document(true);
    EXPECT_TRUE(document.GetRestrictExternalPaths());
    EXPECT_FALSE(DOM().GetRestrictExternalPaths());
    EXPECT_EQ(document.GetDSValidationCancelType(), 0);
    document.SetDSValidationCancelType(-3);
    EXPECT_EQ(document.GetDSValidationCancelType(), -3);
    EXPECT_EQ(document.GetProtectedDataSourceName(), VString());
    document.SetProtectedDataSourceName("ds");
    EXPECT_EQ(document.GetProtectedDataSourceName(), VString("ds"));
}

TEST(DOMTest, ComparisonConsidersOnlyTheTrees)
{
    DOM a;
    DOM b(true);
    a.GetRoot().AddNewChild("x", nullptr).SetAttributes(AttributeMap{{"m", "1"}, {"n", "2"}});
    b.GetRoot().AddNewChild("x", nullptr).SetAttributes(AttributeMap{{"n", "2"}, {"m", "1"}});
    b.AddCaptionRename("old", "new");
    b.SetProtectedDataSourceName("ds");
    b.GetRoot().Warning("careful", Info(1));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    b.GetRoot().AddNewChild("y", nullptr);
    EXPECT_TRUE(a != b);
}

TEST(DOMTest, DeepCopyCopiesTheTree)
{
    DOM source;
    DOM copy;
    AddChain(source.GetRoot(), 3).SetText("text");
    copy.GetRoot().AddNewChild("old", nullptr);
    DOMElement* const root = &copy.GetRoot();
    copy.DeepCopy(source);
    EXPECT_EQ(copy, source);
    EXPECT_EQ(&copy.GetRoot(), root);
    for (const DOMElement* i = copy.GetDocumentRoot(); i; i = i->HasChildren() ? i->GetChildren().front() : nullptr)
        EXPECT_EQ(i->GetDOMManager(), &copy);
    copy.GetDocumentRoot()->SetText("changed");
    EXPECT_EQ(source.GetDocumentRoot()->GetText(), VString());
}

TEST(DOMTest, DeepCopyReplacesTheDiagnostics)
{
    DOM source;
    DOM copy;
    DOMElement& low = AddChain(source.GetRoot(), 2);
    AddError(source.GetRoot(), "root");
    AddError(low, "low");
    low.Warning("careful", Info(2));
    AddError(copy.GetRoot(), "own");
    copy.GetRoot().Warning("own", Info(2));
    copy.DeepCopy(source);
    EXPECT_EQ(Strings(copy.GetErrors()), (Texts{"root", "low"}));
    EXPECT_EQ(Strings(copy.GetWarnings()), (Texts{"careful"}));
    EXPECT_TRUE(copy.GetDocumentRoot()->GetChildren().front()->HasErrors());
    EXPECT_EQ(Strings(source.GetErrors()), (Texts{"root", "low"}));
}

TEST(DOMTest, DeepCopyCopiesTheSettings)
{
    DOM source(true);
    source.SetProtectedDataSourceName("ds");
    source.SetDSValidationCancelType(5);
    DOM copy;
    copy.DeepCopy(source);
    EXPECT_EQ(copy.GetProtectedDataSourceName(), VString("ds"));
    EXPECT_EQ(copy.GetDSValidationCancelType(), 5);
    EXPECT_TRUE(copy.GetRestrictExternalPaths());
    copy.DeepCopy(DOM());
    EXPECT_EQ(copy.GetProtectedDataSourceName(), VString());
    EXPECT_EQ(copy.GetDSValidationCancelType(), 0);
    EXPECT_FALSE(copy.GetRestrictExternalPaths());
}

TEST(DOMTest, DeepCopyCopiesEveryKindOfRename)
{
    DOM source;
    RegisterRenames(source, "old", "new");
    DOM copy;
    copy.DeepCopy(source);
    EXPECT_EQ(RenamesOf(copy, "old"), RenamesOf(source, "old"));
    EXPECT_EQ(RenamesOf(copy, "old"), (Texts{"new", "new", "new", "new", "[new].[new]", "new"}));
}

TEST(DOMTest, DeepCopyDropsTheRenamesOfTheTarget)
{
    DOM copy;
    RegisterRenames(copy, "own", "new");
    copy.DeepCopy(DOM());
    EXPECT_EQ(RenamesOf(copy, "own"), (Texts{"own", "own", "own", "own", "[own].[own]", "own"}));
}

TEST(DOMTest, DeepCopyOfItselfKeepsTheTreeAndClearsDiagnostics)
{
    DOM document;
    const DOMElement* const low = &AddChain(document.GetRoot(), 2);
    AddError(*low, "error");
    document.AddCaptionRename("c", "c2");
    document.DeepCopy(document);
    EXPECT_EQ(document.GetDocumentRoot()->GetChildren().front(), low);
    EXPECT_FALSE(document.HasErrors());
    EXPECT_EQ(document.GetCaptionRenameIfItExists("c"), VString("c2"));
}

TEST(DOMTest, DeepCopyAssertsThatBothDocumentsHaveARoot)
{
    DOM a;
    DOM b;
    std::unique_ptr<DOMElement> root = DOMTestAccess::ReleaseRoot(a);
    ExpectLogicException([&] { a.DeepCopy(b); }, "vancorexml\\main\\parser\\DOM", 38, "m_root", 0xE9B29E95);
    ExpectLogicException([&] { b.DeepCopy(a); }, "vancorexml\\main\\parser\\DOM", 39, "dom.m_root", 0x41ACEBB0);
    DOMTestAccess::AdoptRoot(a, std::move(root));
    a.DeepCopy(b);
    EXPECT_EQ(a, b);
}

TEST(DOMTest, DestructionIsSafeWithManyDiagnostics)
{
    auto document = std::make_unique<DOM>();
    AddError(document->GetRoot(), "root");
    for (int i = 0; i < 100; ++i)
        AddError(AddChain(document->GetRoot(), 5), "low");
    EXPECT_TRUE(document->HasErrors());
    document.reset();
}
