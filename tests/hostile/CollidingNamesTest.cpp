// Names and values that were chosen to have the same hash must not slow the library down. A table with the std::hash of
// the standard library would compare each of them with all others.
//
// The tables of Xerces are another matter: see SECURITY.md.

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/common/CollidingTexts.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

constexpr std::size_t Count = 32768;
constexpr std::size_t UndeclaredCount = 16384;  // a validation allows 20,000 names of elements

using Names = std::vector<std::string>;

const Names& CollidingNames()
{
    static const Names names = testsupport::CollidingTexts<char>::Make(Count);
    return names;
}

// Names that collide in tables of char16_t.
const Names& CollidingWideNames()
{
    static const Names names = [] {
        Names utf8;
        for (const std::u16string& name : testsupport::CollidingTexts<char16_t>::Make(Count))
            utf8.push_back(VString(name.data(), name.size()).toStdString());
        return utf8;
    }();
    return names;
}

// Returns different names of the same lengths, with random letters.
Names OrdinaryNames(const Names& like)
{
    std::mt19937 random(1);
    Names names = like;
    for (std::string& name : names) {
        for (char& letter : name)
            letter = static_cast<char>('a' + random() % 26);
    }
    return names;
}

std::string Join(const Names& names, const std::string& before, const std::string& after)
{
    std::string text;
    for (const std::string& name : names) {
        text += before;
        text += name;
        text += after;
    }
    return text;
}

constexpr char Schema[] = R"(<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>
<xs:element name='r'><xs:complexType><xs:sequence>
<xs:element name='n' minOccurs='0' maxOccurs='unbounded'><xs:complexType>
<xs:attribute name='id' type='xs:ID'/><xs:attribute name='ref' type='xs:IDREF'/></xs:complexType></xs:element>
</xs:sequence></xs:complexType></xs:element></xs:schema>)";

struct Row {
    const char* name;
    bool isWide;  // the table has keys of char16_t
    bool isValidated;
    std::function<std::string(const Names&)> makeDocument;
    std::size_t errors;
    std::size_t count = Count;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

const Row Rows[] = {
    {"ElementsInFrontOfAFault", true, false, [](const Names& n) { return "<r>" + Join(n, "<", "/>") + "<"; }, 1},
    {"AttributesInFrontOfAFault", false, false, [](const Names& n) { return "<r" + Join(n, " ", "=''") + " x/>"; }, 1},
    {"EntitiesInFrontOfAFault",
        false,
        false,
        [](const Names& n) { return "<!DOCTYPE r [" + Join(n, "<!ENTITY ", " ''>") + "]><r>&x;</r>"; },
        1},
    {"UndeclaredAttributes", false, true, [](const Names& n) { return "<r" + Join(n, " ", "=''") + "/>"; }, Count},
    {"UndeclaredElements",
        true,
        true,
        [](const Names& n) { return "<r>" + Join(n, "<", "/>") + "</r>"; },
        1,
        UndeclaredCount},
    {"Ids", true, true, [](const Names& n) { return "<r>" + Join(n, "<n id='", "'/>") + "<n id=''/></r>"; }, 1},
    {"References", true, true, [](const Names& n) { return "<r>" + Join(n, "<n ref='", "'/>") + "</r>"; }, Count},
};

double SecondsToParse(const Row& row, const Names& names)
{
    DOMParser parser;
    if (row.isValidated)
        parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(std::string(Schema), "s.xsd", false));
    const std::string text = row.makeDocument(names);
    const double start = testsupport::CpuSeconds();
    const std::unique_ptr<DOM> document = parser.ParseXmlString(text, "id");
    const double seconds = testsupport::CpuSeconds() - start;
    EXPECT_TRUE(document->HasErrors());
    EXPECT_GE(document->GetErrors().size(), row.errors) << document->GetErrors().front();
    return seconds;
}

class CollidingNamesRows : public testing::TestWithParam<Row> {};

TEST_P(CollidingNamesRows, TakeNoMoreTimeThanOthers)
{
    const Row& row = GetParam();
    Names names = row.isWide ? CollidingWideNames() : CollidingNames();
    names.resize(row.count);
    const double colliding = SecondsToParse(row, names);
    const double ordinary = SecondsToParse(row, OrdinaryNames(names));
    // With std::hash in only one of the tables, colliding names take 5 to 12 times as long, even with 16,384 names.
    EXPECT_LT(colliding, 3 * ordinary + 0.1);
}

INSTANTIATE_TEST_SUITE_P(
    CollidingNamesTest, CollidingNamesRows, testing::ValuesIn(Rows), [](const testing::TestParamInfo<Row>& row) {
        return std::string(row.param.name);
    });

// The rows above prove nothing if the names do not collide.
#if defined(__GLIBCXX__) && defined(__x86_64__)
TEST(CollidingNamesTest, NamesHaveTheSameHash)
{
    std::set<std::size_t> hashes;
    std::set<std::string> names;
    for (const std::string& name : CollidingNames()) {
        hashes.insert(std::hash<std::string>()(name));
        names.insert(name);
    }
    for (const std::string& name : CollidingWideNames()) {
        const QString wide = QString::fromStdString(name);
        hashes.insert(std::hash<std::u16string>()(wide.toStdU16String()));
    }
    EXPECT_LE(hashes.size(), 2u);
    EXPECT_EQ(names.size(), Count);
}
#endif

}  // namespace
