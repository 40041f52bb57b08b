#include <gtest/gtest.h>

#include <QRegularExpression>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>

namespace {

using Graph = std::map<std::string, std::set<std::string>>;

const std::filesystem::path Root = VANCOREXML_SOURCE_DIR;

const std::set<std::string> PlatformModules{"vancoreplatform", "vansys", "vancoredata", "art-cpp", "metrics2"};

std::string ModuleOf(const std::string& file)
{
    return file.substr(0, file.find('/'));
}

std::string ReadText(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Returns the files of the project that `file` includes, as paths from the root.
std::set<std::string> IncludesOf(const std::filesystem::path& file)
{
    static const QRegularExpression include(
        QStringLiteral(R"re(^[ \t]*#[ \t]*include[ \t]*["<]([^">\n]+)[">])re"), QRegularExpression::MultilineOption);
    std::set<std::string> includes;
    for (auto matches = include.globalMatch(QString::fromStdString(ReadText(file))); matches.hasNext();) {
        const std::string name = matches.next().captured(1).toStdString();
        if (std::filesystem::exists(Root / name))
            includes.insert(name);
        if (std::filesystem::exists(file.parent_path() / name))
            includes.insert((file.parent_path() / name).lexically_relative(Root).generic_string());
    }
    return includes;
}

// Returns all sources of the modules, each with the files that it includes.
const Graph& Files()
{
    static const Graph files = [] {
        Graph graph;
        std::set<std::string> modules = PlatformModules;
        modules.insert({"vancorexml", "vanxml"});
        for (const std::string& module : modules) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(Root / module)) {
                const std::string extension = entry.path().extension().string();
                if (extension == ".h" || extension == ".cpp")
                    graph[entry.path().lexically_relative(Root).generic_string()] = IncludesOf(entry.path());
            }
        }
        return graph;
    }();
    return files;
}

Graph Modules()
{
    Graph modules;
    for (const auto& [file, includes] : Files()) {
        for (const std::string& included : includes) {
            if (ModuleOf(included) != ModuleOf(file))
                modules[ModuleOf(file)].insert(ModuleOf(included));
        }
    }
    return modules;
}

// Returns the files or modules that are on a cycle or lead to one. Removes nodes that include no remaining node, until
// there are none. The nodes that remain are the result.
std::set<std::string> NodesLeadingToCycles(Graph graph)
{
    for (bool changed = true; changed;) {
        changed = false;
        for (auto node = graph.begin(); node != graph.end();) {
            const bool stays = std::any_of(node->second.begin(), node->second.end(), [&graph](const std::string& next) {
                return graph.count(next) > 0;
            });
            node = stays ? std::next(node) : graph.erase(node);
            changed = changed || !stays;
        }
    }
    std::set<std::string> names;
    for (const auto& node : graph)
        names.insert(node.first);
    return names;
}

// Returns the includes from modules of `from` into modules for which `allowed` returns false.
template <typename Allowed>
std::set<std::string> ForbiddenIncludes(const std::set<std::string>& from, Allowed allowed)
{
    std::set<std::string> violations;
    for (const auto& [file, includes] : Files()) {
        if (from.count(ModuleOf(file)) == 0)
            continue;
        for (const std::string& included : includes) {
            if (ModuleOf(included) != ModuleOf(file) && !allowed(ModuleOf(included)))
                violations.insert(file + " includes " + included);
        }
    }
    return violations;
}

}  // namespace

TEST(IncludeGraphTest, FindsTheSources)
{
    EXPECT_GT(Files().size(), 80u);
    EXPECT_EQ(Files().at("vansys/VError.h").count("vancoreplatform/VString.h"), 1u);
    EXPECT_EQ(Modules().at("vancorexml").count("vansys"), 1u);
}

TEST(IncludeGraphTest, FindsCycles)
{
    EXPECT_TRUE(NodesLeadingToCycles({{"a", {"b"}}, {"b", {"c"}}, {"c", {}}}).empty());
    EXPECT_EQ(NodesLeadingToCycles({{"a", {"b"}}, {"b", {"c"}}, {"c", {"b"}}, {"d", {}}}),
        (std::set<std::string>{"a", "b", "c"}));
    EXPECT_EQ(NodesLeadingToCycles({{"a", {"a"}}}), (std::set<std::string>{"a"}));
}

TEST(IncludeGraphTest, FilesHaveNoIncludeCycles)
{
    EXPECT_EQ(NodesLeadingToCycles(Files()), std::set<std::string>());
}

TEST(IncludeGraphTest, ModulesHaveNoIncludeCycles)
{
    EXPECT_EQ(NodesLeadingToCycles(Modules()), std::set<std::string>());
}

TEST(IncludeGraphTest, TheLowestModuleIncludesNoOtherModule)
{
    EXPECT_EQ(
        ForbiddenIncludes({"vancoreplatform"}, [](const std::string&) { return false; }), std::set<std::string>());
}

TEST(IncludeGraphTest, ThePlatformIncludesOnlyThePlatform)
{
    EXPECT_EQ(
        ForbiddenIncludes(PlatformModules, [](const std::string& module) { return PlatformModules.count(module) > 0; }),
        std::set<std::string>());
}

TEST(IncludeGraphTest, TheLibraryIncludesOnlyThePlatform)
{
    EXPECT_EQ(
        ForbiddenIncludes({"vancorexml"}, [](const std::string& module) { return PlatformModules.count(module) > 0; }),
        std::set<std::string>());
}
