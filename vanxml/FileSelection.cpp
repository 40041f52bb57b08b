#include "vanxml/FileSelection.h"

#include <QRegularExpression>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/SystemError.h"
#include "vanxml/InputFile.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;

namespace {

// The extensions of the product's documents.
const std::vector<std::string> DefaultPatterns{"*.kxa", "*.kxb", "*.kxc", "*.kxd", "*.kxe", "*.kxf"};

fs::path ToPath(const std::string& utf8)
{
    if constexpr (OperatingSystem::IsWindows)
        return fs::path(VString::fromStdString(utf8).View());
    return fs::path(utf8);
}

using OperatingSystem::ToUtf8;

// The characters that separate the parts of a path.
constexpr const char* separators = OperatingSystem::IsWindows ? "/\\" : "/";

bool HasWildcard(const std::string& text)
{
    return text.find_first_of("*?[") != std::string::npos;
}

// Returns the length of the root of a path: "/", "C:\", "\\server\share\" or "\\?\C:\". Not every standard library
// knows the last two.
std::size_t RootLength(const std::string& argument)
{
    const auto isSeparator = [&](std::size_t position) {
        return position < argument.size() && std::string_view(separators).find(argument[position]) != std::string::npos;
    };
    if (!OperatingSystem::IsWindows || !isSeparator(0) || !isSeparator(1))
        return ToUtf8(ToPath(argument).root_path()).size();
    const std::size_t first = argument.find_first_of(separators, 2);
    const std::size_t second = first == std::string::npos ? first : argument.find_first_of(separators, first + 1);
    return second == std::string::npos ? argument.size() : second + 1;
}

bool IsPattern(const std::string& argument)
{
    return HasWildcard(argument.substr(RootLength(argument)));
}

// Returns a path that was found for an argument with the separators of the argument: slashes if it has only these.
fs::path SpellLike(const std::string& argument, fs::path path)
{
    const bool hasSlashesOnly = argument.find('/') != std::string::npos && argument.find('\\') == std::string::npos;
    if (OperatingSystem::IsWindows && hasSlashesOnly)
        return fs::path(path.generic_string<fs::path::value_type>());
    return path;
}

// A pattern for the name of a file or folder. On Windows, the case of letters has no meaning.
class NamePattern {
public:
    explicit NamePattern(const std::string& pattern)
        : m_namesHidden(pattern.starts_with(".")),
          m_expression(QRegularExpression::wildcardToRegularExpression(VString::fromStdString(pattern).ToQString()),
              OperatingSystem::IsWindows ? QRegularExpression::CaseInsensitiveOption
                                         : QRegularExpression::NoPatternOption)
    {}

    bool IsValid() const { return m_expression.isValid(); }

    // Bytes of the name that are not UTF-8 match like any other character.
    bool Matches(const OperatingSystem::FolderEntry& entry) const
    {
        if (entry.isHidden && !m_namesHidden)
            return false;
        return m_expression.match(VString::fromStdString(ToUtf8(entry.name)).ToQString()).hasMatch();
    }

private:
    bool m_namesHidden;
    QRegularExpression m_expression;
};

// Returns the paths of the entries of a folder that match. Ignores errors, as shells do.
std::vector<fs::path> MatchEntries(const fs::path& folder, const NamePattern& pattern)
{
    std::vector<fs::path> matches;
    OperatingSystem::VisitFolder(folder, [&](const OperatingSystem::FolderEntry& entry) {
        if (pattern.Matches(entry))
            matches.push_back(folder / entry.name);
    });
    std::sort(matches.begin(), matches.end());
    return matches;
}

// Also works behind a root that the standard library does not know.
fs::path Join(const fs::path& path, const fs::path& part)
{
    const bool hasSeparator = !path.empty() && !path.has_filename();
    return hasSeparator ? fs::path(path.native() + part.native()) : path / part;
}

// Returns the existing files and folders that match a path with wildcards. Skips devices and pipes: reading one may
// never end.
std::vector<fs::path> ExpandPattern(const std::string& argument)
{
    std::vector<fs::path> paths{fs::path()};
    const std::size_t root = RootLength(argument);
    paths.front() = ToPath(argument.substr(0, root));
    for (const fs::path& part : ToPath(argument.substr(root)).relative_path()) {
        const std::string text = ToUtf8(part);
        std::vector<fs::path> next;
        for (const fs::path& path : paths) {
            if (HasWildcard(text)) {
                const std::vector<fs::path> matches = MatchEntries(path, NamePattern(text));
                next.insert(next.end(), matches.begin(), matches.end());
            } else {
                next.push_back(Join(path, part));
            }
        }
        paths = std::move(next);
    }
    const auto isSkipped = [](const fs::path& path) {
        const fs::file_status status(OperatingSystem::TypeOf(path, OperatingSystem::Links::Keep));
        return !fs::exists(status) || fs::is_other(fs::file_status(OperatingSystem::TypeOf(path)));
    };
    paths.erase(std::remove_if(paths.begin(), paths.end(), isSkipped), paths.end());
    for (fs::path& path : paths)
        path = SpellLike(argument, std::move(path));
    return paths;
}

bool IsUtf8(std::string_view text)
{
    return FindInvalidUtf8(text.data(), text.size()) == text.size();
}

// Returns the list in the file `name`, without a byte order mark of UTF-8.
std::string ReadList(const std::string& name)
{
    std::string list = ReadInputFile(VString::fromStdString(name));
    if (list.starts_with("\xFF\xFE") || list.starts_with("\xFE\xFF"))
        throw ToolError("the list '" + name + "' is UTF-16; save it as UTF-8");
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (list.starts_with(byteOrderMark))
        list.erase(0, byteOrderMark.size());
    return list;
}

// Returns the names in a list, without empty ones. A line may end with a carriage return and a line feed.
std::vector<std::string> SplitList(const std::string& list)
{
    const char separator = list.find('\0') == std::string::npos ? '\n' : '\0';
    std::vector<std::string> names;
    std::istringstream lines(list);
    for (std::string name; std::getline(lines, name, separator);) {
        if (separator == '\n' && name.ends_with('\r'))
            name.pop_back();
        if (!name.empty())
            names.push_back(std::move(name));
    }
    return names;
}

bool IsFileWithoutLink(const fs::path& path)
{
    return OperatingSystem::TypeOf(path, OperatingSystem::Links::Keep) == fs::file_type::regular;
}

class Selector {
public:
    Selector(const std::vector<std::string>& include, bool isRecursive) : m_include(include), m_isRecursive(isRecursive)
    {
        for (const std::string& text : include) {
            if (text.empty() || text.find_first_of(separators) != std::string::npos || !NamePattern(text).IsValid())
                throw UsageError("--include: '" + text + "' is not a pattern for the name of a file");
            m_patterns.emplace_back(text);
        }
    }

    void AddArgument(const std::string& argument)
    {
        const fs::path path = ToPath(argument);
        const auto isMissing = [&] {
            return OperatingSystem::TypeOf(path, OperatingSystem::Links::Keep) == fs::file_type::not_found;
        };
        if (argument == "-") {
            AddStandardInput();
        } else if (IsPattern(argument) && isMissing()) {
            AddPattern(argument);
        } else {
            AddPath(path);
        }
    }

    // Adds the names in a list of files.
    void AddList(const std::string& list)
    {
        if (list.empty())
            throw UsageError("--files-from: the name of the list is empty");
        if (list == "-")
            UseStandardInput();
        m_selected.hasList = true;
        for (const std::string& name : SplitList(ReadList(list))) {
            if (!IsUtf8(name))
                AddNameError(name);
            else
                AddPath(name == "-" ? ToPath("./-") : ToPath(name));  // "-" alone would be standard input
        }
    }

    SelectedFiles Finish() { return std::move(m_selected); }

private:
    void UseStandardInput()
    {
        if (!m_known.insert(fs::path("-").native()).second)
            throw UsageError("standard input can be read only once");
    }

    void AddStandardInput()
    {
        UseStandardInput();
        m_selected.files.push_back({VString("-"), std::string()});
    }

    void AddPattern(const std::string& pattern)
    {
        const std::vector<fs::path> paths = ExpandPattern(pattern);
        if (paths.empty())
            AddError("no file matches '" + pattern + "'");
        for (const fs::path& path : paths)
            AddPath(path);
    }

    void AddPath(const fs::path& path)
    {
        // Most paths are files and no links, so a single system call is enough for them.
        const bool isNoLink = IsFileWithoutLink(path);
        if (isNoLink || OperatingSystem::TypeOf(path) != fs::file_type::directory) {
            AddFile(path, isNoLink);
        } else if (m_isRecursive) {
            AddFolder(path);
        } else {
            AddError("Cannot read \"" + ToUtf8(path) + "\": it is a folder, which needs --recursive");
        }
    }

    // Selects a file, unless it was selected before. With `isNoLink`, its name is certainly not that of a link.
    void AddFile(const fs::path& path, bool isNoLink)
    {
        const std::string name = ToUtf8(path);
        if (!IsUtf8(name)) {
            AddNameError(name);
            return;
        }
        if (m_known.insert(WithoutLinks(path, isNoLink).native()).second)
            m_selected.files.push_back({VString::fromStdString(name), std::string()});
    }

    // Returns the path without symbolic links. Resolves the folder of several files once: resolving the path of each
    // file took more system calls than a check of the file.
    fs::path WithoutLinks(const fs::path& path, bool isNoLink)
    {
        // Windows also corrects the letter case of a name.
        if (OperatingSystem::IsWindows || !isNoLink)
            return OperatingSystem::WithoutLinks(path);
        fs::path folder = path.parent_path();
        if (m_resolvedFolder.empty() || folder != m_folder) {
            m_resolvedFolder = OperatingSystem::WithoutLinks(folder.empty() ? fs::path(".") : folder);
            m_folder = std::move(folder);
        }
        return m_resolvedFolder / path.filename();
    }

    void AddFolder(const fs::path& folder)
    {
        m_selected.hasFolder = true;
        m_found.clear();
        std::vector<fs::path> folders{folder};
        // A loop instead of a recursion, because folders can be nested deeply.
        while (!folders.empty()) {
            const fs::path next = std::move(folders.back());
            folders.pop_back();
            SearchFolder(next, folders);
        }
        if (m_found.empty())
            AddError("no file in the folder '" + ToUtf8(folder) + "' matches " + DescribePatterns());
        std::sort(m_found.begin(), m_found.end());
        for (const auto& [path, error] : m_found) {
            if (error)
                AddError("Cannot read \"" + ToUtf8(path) + "\": " + GetSystemReason(error).toStdString());
            else
                AddFile(SpellLike(ToUtf8(folder), path), IsFileWithoutLink(path));
        }
    }

    // Adds the files of a folder to m_found and its subfolders to `folders`.
    void SearchFolder(const fs::path& folder, std::vector<fs::path>& folders)
    {
        const auto visit = [&](const OperatingSystem::FolderEntry& entry) {
            const bool isFolder = entry.type == fs::file_type::directory;
            if (entry.isHidden || (isFolder && entry.isLink) || fs::is_other(fs::file_status(entry.type)))
                return;
            if (isFolder)
                folders.push_back(folder / entry.name);
            else if (IsIncluded(entry))
                m_found.emplace_back(folder / entry.name, std::error_code());
        };
        const std::error_code error = OperatingSystem::VisitFolder(folder, visit);
        if (error)
            m_found.emplace_back(folder, error);
    }

    bool IsIncluded(const OperatingSystem::FolderEntry& entry) const
    {
        const auto matches = [&](const NamePattern& pattern) { return pattern.Matches(entry); };
        return std::any_of(m_patterns.begin(), m_patterns.end(), matches);
    }

    std::string DescribePatterns() const
    {
        std::string text;
        for (const std::string& pattern : m_include)
            text += (text.empty() ? "" : " or ") + pattern;
        return text;
    }

    void AddNameError(const std::string& name) { AddError("the name of the file '" + name + "' is not UTF-8"); }
    void AddError(const std::string& error) { m_selected.files.push_back({VString(), error}); }

    const std::vector<std::string>& m_include;
    const bool m_isRecursive;
    std::vector<NamePattern> m_patterns;
    std::vector<std::pair<fs::path, std::error_code>> m_found;  // the files of one folder, and folders with errors
    fs::path m_folder;                                          // of the last file whose path was resolved
    fs::path m_resolvedFolder;                                  // without symbolic links
    std::set<fs::path::string_type> m_known;                    // the files that were selected, without symbolic links
    SelectedFiles m_selected;
};

}  // namespace

bool MatchesFiles(const std::string& argument)
{
    return IsPattern(argument) && !ExpandPattern(argument).empty();
}

void FileSelection::AddOptions(CLI::App& command)
{
    command
        .add_option("FILE",
            m_arguments,
            "The documents; - is standard input. A folder needs --recursive. "
            "A pattern such as '*.kxa' names the files that match it")
        ->type_name("FILE|FOLDER");
    CLI::Option* const list =
        command
            .add_option("--files-from",
                m_list,
                "Also process the files that the file LIST names, one on each line, or each with a NUL behind it; - is "
                "standard input")
            ->type_name("LIST");
    command.parse_complete_callback([this, list] {
        m_hasList = list->count() > 0;
        if (m_arguments.empty() && !m_hasList)
            throw CLI::RequiredError("FILE");
    });
    command.add_flag("--recursive", m_isRecursive, "Search folders, and all folders below them, for documents");
    command
        .add_option("--include",
            m_include,
            "In folders, select the files whose name matches GLOB; can be repeated. "
            "The default is *.kxa *.kxb *.kxc *.kxd *.kxe *.kxf")
        ->type_name("GLOB")
        ->allow_extra_args(false);
}

SelectedFiles FileSelection::Select() const
{
    Selector selector(m_include.empty() ? DefaultPatterns : m_include, m_isRecursive);
    for (const std::string& argument : m_arguments)
        selector.AddArgument(argument);
    if (m_hasList)
        selector.AddList(m_list);
    return selector.Finish();
}
