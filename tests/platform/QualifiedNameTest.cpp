#include "vancoredata/QualifiedName.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "vancoredata/FieldName.h"

namespace {

struct NameCase {
    const char* name;
    const char* root;
    const char* local;
    const char* full;
};

struct OneLocalCase {
    const char* name;
    const char* text;
};

// Returns all texts of up to `length` code units from the alphabet of the written form.
std::vector<VString> ManyTexts(int length)
{
    std::vector<VString> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const VString text = texts[i];
        if (text.length() == length)
            break;
        for (const char* unit : {"[", "]", ".", "a"})
            texts.push_back(text + unit);
    }
    return texts;
}

}  // namespace

class QualifiedNameFormTest : public testing::TestWithParam<NameCase> {};

TEST_P(QualifiedNameFormTest, FormatsAndParses)
{
    const QualifiedName name(GetParam().root, GetParam().local);
    EXPECT_EQ(name.GetFullValue(), VString(GetParam().full));
    EXPECT_EQ(QualifiedName::Parse(GetParam().full), name);
}

INSTANTIATE_TEST_SUITE_P(Names,
    QualifiedNameFormTest,
    testing::Values(NameCase{"Both", "source", "field", "[source].[field]"},
        NameCase{"LocalOnly", "", "field", "[field]"},
        NameCase{"RootOnly", "source", "", "[source].[]"},
        NameCase{"Empty", "", "", ""},
        NameCase{"ClosingBracketsAreDoubled", "a]", "]b]", "[a]]].[]]b]]]"},
        NameCase{"OpeningBracketsAreNot", "[a", "b[", "[[a].[b[]"},
        NameCase{"Dots", "a.b", ".", "[a.b].[.]"},
        NameCase{"LooksLikeAName", "[a].[b]", "[c]", "[[a]].[b]]].[[c]]]"}),
    [](const auto& test) { return std::string(test.param.name); });

class QualifiedNameOneLocalTest : public testing::TestWithParam<OneLocalCase> {};

TEST_P(QualifiedNameOneLocalTest, ParsesAsOneLocalPart)
{
    EXPECT_EQ(QualifiedName::Parse(GetParam().text), QualifiedName("", GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts,
    QualifiedNameOneLocalTest,
    testing::Values(OneLocalCase{"NoBrackets", "field"},
        OneLocalCase{"Dot", "source.field"},
        OneLocalCase{"NotClosed", "[field"},
        OneLocalCase{"DoubledBracketAtTheEnd", "[field]]"},
        OneLocalCase{"TextBehind", "[field]x"},
        OneLocalCase{"TextBefore", " [field]"},
        OneLocalCase{"DotAtTheEnd", "[source]."},
        OneLocalCase{"LocalWithoutBrackets", "[source].field"},
        OneLocalCase{"LocalNotClosed", "[source].[field"},
        OneLocalCase{"ThreeParts", "[a].[b].[c]"},
        OneLocalCase{"TwoDots", "[a]..[b]"},
        OneLocalCase{"ClosingBracket", "]"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(QualifiedNameTest, ParsesEveryShortNameThatItFormats)
{
    const std::vector<VString> texts = ManyTexts(4);
    for (const VString& root : texts) {
        for (const VString& local : texts) {
            const QualifiedName name(root, local);
            ASSERT_EQ(QualifiedName::Parse(name.GetFullValue()), name) << name.GetFullValue();
        }
    }
}

TEST(QualifiedNameTest, ParsesRandomNamesThatItFormats)
{
    constexpr char16_t units[] = {u'[', u']', u'.', u'a', u'\0', u' ', 0xD83D, 0xDE00, 0xFFFF};
    std::mt19937 random(11);
    const auto draw = [&] {
        VString text;
        for (auto length = random() % 12; length > 0; --length)
            text += units[random() % std::size(units)];
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const VString root = draw();
        const QualifiedName name(root, draw());
        ASSERT_EQ(QualifiedName::Parse(name.GetFullValue()), name) << name.GetFullValue();
    }
}

TEST(QualifiedNameTest, ParsesMillionsOfBrackets)
{
    const VString brackets(QString(2000000, QLatin1Char(']')));
    EXPECT_EQ(QualifiedName::Parse("[" + brackets).GetRootValue(), VString());
    EXPECT_EQ(QualifiedName::Parse("[" + brackets + "]").GetLocalValue().length(), 1000000);
}

TEST(QualifiedNameTest, IsEmptyOnlyIfBothPartsAreEmpty)
{
    EXPECT_TRUE(QualifiedName().IsEmpty());
    EXPECT_FALSE(QualifiedName("a", "").IsEmpty());
    EXPECT_FALSE(QualifiedName("", "a").IsEmpty());
}

TEST(QualifiedNameTest, OrdersByRootThenLocal)
{
    EXPECT_LT(QualifiedName("a", "z"), QualifiedName("b", "a"));
    EXPECT_LT(QualifiedName("a", "a"), QualifiedName("a", "b"));
    EXPECT_FALSE(QualifiedName("a", "a") < QualifiedName("a", "a"));
    // The written forms have the opposite order.
    EXPECT_LT(QualifiedName("", "z"), QualifiedName("a", "a"));
}

TEST(QualifiedNameTest, SetRootValueReplacesTheRoot)
{
    QualifiedName name("old", "field");
    name.SetRootValue("new");
    EXPECT_EQ(name.GetFullValue(), VString("[new].[field]"));
}

TEST(FieldNameTest, GlobalNamesKeepTheirRoot)
{
    EXPECT_EQ(FieldName::ParseGlobal("[source].[field]"), FieldName("source", "field"));
    EXPECT_EQ(FieldName::ParseGlobal("[field]"), FieldName("", "field"));
    EXPECT_EQ(FieldName::ParseGlobal("field"), FieldName("", "field"));
    EXPECT_TRUE(FieldName::ParseGlobal("").IsEmpty());
}

TEST(FieldNameTest, LocalNamesHaveNoRoot)
{
    EXPECT_EQ(FieldName::ParseLocal("[source].[field]"), FieldName("", "field"));
    EXPECT_EQ(FieldName::ParseLocal("[field]"), FieldName("", "field"));
}

TEST(FieldNameTest, GlobalAndLocalParsingShareOneCache)
{
    QualifiedNameCache cache;
    EXPECT_EQ(FieldName::ParseLocal("[source].[field]", cache), FieldName("", "field"));
    EXPECT_EQ(FieldName::ParseGlobal("[source].[field]", cache), FieldName("source", "field"));
    EXPECT_EQ(cache.size(), 1u);
}

TEST(FieldNameTest, ACachedNameIsNotParsedAgain)
{
    QualifiedNameCache cache{{"[source].[field]", QualifiedName("cached", "name")}};
    EXPECT_EQ(FieldName::ParseGlobal("[source].[field]", cache), FieldName("cached", "name"));
    EXPECT_EQ(FieldName::ParseLocal("[source].[field]", cache), FieldName("", "name"));
}

TEST(FieldNameTest, MakesGlobalAndLocalNames)
{
    EXPECT_EQ(MakeGlobalName("source", FieldName("", "field")), FieldName("source", "field"));
    EXPECT_EQ(MakeGlobalName("source", FieldName("other", "field")), FieldName("source", "field"));
    EXPECT_EQ(MakeLocalName(FieldName("source", "field")), FieldName("", "field"));
}
