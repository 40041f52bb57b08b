#include "vanxml/QueryPath.h"

#include <random>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vanxml/ToolError.h"

using testing::HasSubstr;

namespace {

using Elements = std::vector<const DOMElement*>;

void Visit(QueryMatcher& matcher, const DOMElement& element, Elements& matches)
{
    if (matcher.Enter(element.GetName(), element.GetAttributes()))
        matches.push_back(&element);
    for (const DOMElement* child : element.GetChildren())
        Visit(matcher, *child, matches);
    matcher.Leave();
}

// Returns the matches of a path in document order.
Elements Match(const QueryPath& path, const DOM& document)
{
    QueryMatcher matcher(path);
    Elements matches;
    Visit(matcher, *document.GetDocumentRoot(), matches);
    return matches;
}

std::unique_ptr<DOM> Parse(const std::string& text)
{
    return DOMParser().ParseXmlString(text, "test");
}

// Returns the attributes "i" of the matches.
std::string Ids(const std::string& path, const std::string& text)
{
    const std::unique_ptr<DOM> document = Parse(text);
    std::string ids;
    for (const DOMElement* match : Match(QueryPath(path), *document))
        ids += match->GetAttribute("i").toStdString();
    return ids;
}

std::string HintFor(const std::string& path)
{
    try {
        const QueryPath parsed(path);
        return "no error";
    } catch (const ToolError& error) {
        return error.what();
    }
}

void Descend(const DOMElement& element, std::set<const DOMElement*>& all)
{
    all.insert(&element);
    for (const DOMElement* child : element.GetChildren())
        Descend(*child, all);
}

// Evaluates a path step by step, as XPath defines it, on sets of elements.
std::set<const DOMElement*> EvaluateNaively(const QueryPath& path, const DOM& document)
{
    std::set<const DOMElement*> context{&document.GetRoot()};
    const std::vector<QueryPath::Step>& steps = path.Steps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].name.IsEmpty()) {
            std::set<const DOMElement*> all;
            for (const DOMElement* element : context)
                Descend(*element, all);
            if (i > 0)  // the first slash stands for the document
                context = all;
            continue;
        }
        std::set<const DOMElement*> selected;
        for (const DOMElement* parent : context) {
            Elements candidates;
            for (const DOMElement* child : parent->GetChildren()) {
                if (steps[i].name == "*" || steps[i].name == child->GetName())
                    candidates.push_back(child);
            }
            for (const QueryPath::Predicate& predicate : steps[i].predicates) {
                Elements kept;
                for (std::size_t k = 0; k < candidates.size(); ++k) {
                    const DOMElement& element = *candidates[k];
                    const bool isKept = predicate.kind == QueryPath::Predicate::Kind::Position
                        ? k + 1 == predicate.position
                        : element.HasAttribute(predicate.name) &&
                            (predicate.kind == QueryPath::Predicate::Kind::HasAttribute ||
                                element.GetAttribute(predicate.name) == predicate.value);
                    if (isKept)
                        kept.push_back(&element);
                }
                candidates = kept;
            }
            selected.insert(candidates.begin(), candidates.end());
        }
        context = selected;
    }
    return context;
}

// Returns one of the texts.
const char* Pick(std::mt19937& random, std::initializer_list<const char*> texts)
{
    return *(texts.begin() + random() % texts.size());
}

std::string RandomTree(std::mt19937& random, int depth)
{
    const std::string name = Pick(random, {"a", "b"});
    std::string text = "<" + name + Pick(random, {"", " x='1'", " x='2'", " y=''"}) + ">";
    for (unsigned i = random() % 4; depth > 0 && i > 0; --i)
        text += RandomTree(random, depth - 1);
    return text + "</" + name + ">";
}

std::string RandomPath(std::mt19937& random, bool hasPredicates)
{
    std::string path = Pick(random, {"", "/", "//"});
    for (auto i = 1 + random() % 3; i > 0; --i) {
        path += Pick(random, {"a", "b", "*"});
        for (auto k = random() % 3; hasPredicates && k > 0; --k)
            path += Pick(random, {"[1]", "[2]", "[3]", "[@x]", "[@x='1']", "[ @y = \"\" ]"});
        if (i > 1)
            path += Pick(random, {"/", "//"});
    }
    return path;
}

}  // namespace

TEST(QueryPathTest, PositionCountsSiblingsThatTheStepSelects)
{
    const std::string text = "<r><b/><a i='1'/><a i='2' x=''/><c><a i='3'/><a i='4' x=''/><a i='5' x=''/></c></r>";
    EXPECT_EQ(Ids("//a[2]", text), "24");
    EXPECT_EQ(Ids("//a[@x][2]", text), "5");
    EXPECT_EQ(Ids("//a[2][@x]", text), "24");
    EXPECT_EQ(Ids("r/*[2]", text), "1");
    EXPECT_EQ(Ids("r[1]/c/a[3]", text), "5");
    EXPECT_EQ(Ids("r[2]/c/a[3]", text), "");
}

TEST(QueryPathTest, ValuesMayContainSlashesBracketsAndQuotes)
{
    const std::string text = "<r><a x='/b]' i='1'/><a x='\"' i='2'/><a x=\"'\" i='3'/><a x='ä' i='4'/></r>";
    EXPECT_EQ(Ids("r/a[@x='/b]']", text), "1");
    EXPECT_EQ(Ids("r/a[@x='\"']", text), "2");
    EXPECT_EQ(Ids("r/a[@x=\"'\"]", text), "3");
    EXPECT_EQ(Ids("r/a[\t@x\n=  'ä' ]", text), "4");
}

TEST(QueryPathTest, LastStepMayBeAnAttribute)
{
    const QueryPath path("a//b[1]/@:c");
    EXPECT_EQ(path.Attribute(), VString(":c"));
    EXPECT_EQ(path.LibraryPath(), VString("a//b"));
    EXPECT_TRUE(path.HasPredicates());
    EXPECT_EQ(QueryPath("//@id").LibraryPath(), VString("//*"));
    EXPECT_EQ(QueryPath("a/b").Attribute(), VString());
}

TEST(QueryPathTest, LibraryPathIsThePathIfItHasNoAdditions)
{
    for (const char* path : {"a", "/a", "//a", "a/b", "a//b", "a///*", "///a", "p:a/b.c-d_1", "größe"})
        EXPECT_EQ(QueryPath(path).LibraryPath(), VString::fromStdString(path)) << path;
}

TEST(QueryPathTest, HintSaysWhatToWriteInstead)
{
    const std::pair<const char*, const char*> hints[] = {
        {"", "the path is empty"},
        {"/", "write '/*'"},
        {"a/", "write 'a/*'"},
        {"a//", "ends with a slash"},
        {"child::a", "write 'a' instead of 'child::a'"},
        {"a/descendant::b", "write '//b' instead of '/descendant::b'"},
        {"a/attribute::b", "write '@b' instead of 'attribute::b'"},
        {"a/parent::b", "the axis 'parent::' is not supported"},
        {"a/text()", "write the option --text"},
        {"a/node()", "write '*' instead of 'node()'"},
        {"count(//a)", "write the option --count"},
        {"a[last()]", "the predicate '[last()]' is not supported"},
        {"a[b='1']", "the predicate '[b='1']' is not supported"},
        {"a[@b=1]", "needs quotes"},
        {"a[@b='1' and @c='2']", "write several predicates"},
        {"a[@b", "'[@b' has no ']'"},
        {"a[@b='", "has no ']'"},
        {"a[@b='x]", "[@name='value']"},
        {"a[]", "the predicate '[]' is not supported"},
        {"a[0]", "positions count from 1"},
        {"a[-1]", "the predicate '[-1]' is not supported"},
        {"a[99999999999999999999]", "no element has the position 99999999999999999999"},
        {"a]", "']' has no '['"},
        {"a[1]b", "'a[1]b' is not the name of an element"},
        {"./a", "'.' is not supported"},
        {"a/..", "'..' is not supported"},
        {"a|b", "run vanxml once for each path"},
        {"p:*", "'*' stands for a whole name"},
        {"a b", "'a b' is not the name of an element"},
        {"1a", "'1a' is not the name of an element"},
        {"a@b", "write '/@name'"},
        {"a/@b/c", "'/@b' must be the end of the path"},
        {"a/@b[1]", "'/@b' must be the end of the path"},
        {"a/@", "the name of an attribute must follow '@'"},
        {"@b", "'@b' needs an element in front of it"},
        {"/@b", "'@b' needs an element in front of it"},
        {"a//@b", "write 'a//*/@b'"},
    };
    for (const auto& [path, hint] : hints)
        EXPECT_THAT(HintFor(path), HasSubstr(hint)) << path;
}

TEST(QueryPathTest, PlainPathsMatchLikeThoseOfTheLibrary)
{
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const std::unique_ptr<const DOM> document = Parse(RandomTree(random, 4));
        std::string path = RandomPath(random, false);
        if (i % 3 == 0)
            path.insert(path.size() - 1, "//");
        const DOMElement& root = *document->GetDocumentRoot();
        EXPECT_EQ(Match(QueryPath(path), *document), DOMPath::GetAll(root, VString::fromStdString(path))) << path;
    }
}

TEST(QueryPathTest, PredicatesMeanTheSameAsInXPath)
{
    std::mt19937 random(2);
    std::size_t found = 0;
    for (int i = 0; i < 5000; ++i) {
        const std::string text = RandomTree(random, 4);
        const std::unique_ptr<const DOM> document = Parse(text);
        const QueryPath path(RandomPath(random, true));
        const Elements matches = Match(path, *document);
        found += matches.size();
        EXPECT_EQ(std::set<const DOMElement*>(matches.begin(), matches.end()), EvaluateNaively(path, *document))
            << path.LibraryPath() << " in " << text;
    }
    EXPECT_GT(found, 1000u);
}
