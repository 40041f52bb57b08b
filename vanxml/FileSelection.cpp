#include "vanxml/FileSelection.h"

#include <QRegularExpression>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "vancoreplatform/Encoding.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;

namespace {

// The extensions of the product's documents.
const std::vector<std::string> DefaultPatterns{"*.kxa", "*.kxb", "*.kxc", "*.kxd", "*.kxe", "*.kxf"};

fs::path ToPath(const std::string& utf8)
{
    return fs::path(VString::fromStdString(utf8).View());
}

// Returns the bytes of the name on systems whose file names are bytes. They may be invalid UTF-8.
std::string ToUtf8(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

bool IsHidden(const fs::path& name)
{
    return ToUtf8(name).starts_with(".");
}

bool HasWildcard(const std::string& text)
{
    return text.find_first_of("*?[") != std::string::npos;
}

// A pattern for the name of a file or folder.
class NamePattern {
public:
    explicit NamePattern(const std::string& pattern)
        : m_namesHidden(pattern.starts_with(".")),
          m_expression(QRegularExpression::wildcardToRegularExpression(VString::fromStdString(pattern).ToQString()))
    {}

    bool IsValid() const { return m_expression.isValid(); }

    // Bytes of the name that are not UTF-8 match like any other character.
    bool Matches(const fs::path& name) const
    {
        if (IsHidden(name) && !m_namesHidden)
            return false;
        return m_expression.match(VString::fromStdString(ToUtf8(name)).ToQString()).hasMatch();
    }

private:
    bool m_namesHidden;
    QRegularExpression m_expression;
};

// Returns the paths of the entries of a folder that match. Ignores errors, as shells do.
std::vector<fs::path> MatchEntries(const fs::path& folder, const NamePattern& pattern)
{
    std::vector<fs::path> matches;
    std::error_code error;
    fs::directory_iterator entries(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const fs::path name = entries->path().filename();
        if (pattern.Matches(name))
            matches.push_back(folder / name);
    }
    std::sort(matches.begin(), matches.end());
    return matches;
}

// Returns the existing files and folders that match a path with wildcards. Skips devices and pipes: reading one may
// never end.
std::vector<fs::path> ExpandPattern(const std::string& argument)
{
    std::vector<fs::path> paths{fs::path()};
    for (const fs::path& part : ToPath(argument)) {
        const std::string text = ToUtf8(part);
        std::vector<fs::path> next;
        for (const fs::path& path : paths) {
            if (HasWildcard(text)) {
                const std::vector<fs::path> matches = MatchEntries(path, NamePattern(text));
                next.insert(next.end(), matches.begin(), matches.end());
            } else {
                next.push_back(path / part);
            }
        }
        paths = std::move(next);
    }
    const auto isSkipped = [](const fs::path& path) {
        std::error_code ignored;
        return !fs::exists(fs::symlink_status(path, ignored)) || fs::is_other(fs::status(path, ignored));
    };
    paths.erase(std::remove_if(paths.begin(), paths.end(), isSkipped), paths.end());
    return paths;
}

class Selector {
public:
    Selector(const std::vector<std::string>& include, bool isRecursive) : m_include(include), m_isRecursive(isRecursive)
    {
        for (const std::string& text : include) {
            if (text.empty() || text.find('/') != std::string::npos || !NamePattern(text).IsValid())
                throw ToolError("--include: \"" + text + "\" is not a pattern for the name of a file");
            m_patterns.emplace_back(text);
        }
    }

    void AddArgument(const std::string& argument)
    {
        std::error_code error;
        const fs::path path = ToPath(argument);
        if (argument == "-") {
            AddStandardInput();
        } else if (HasWildcard(argument) && fs::symlink_status(path, error).type() == fs::file_type::not_found) {
            AddPattern(argument);
        } else {
            AddPath(path);
        }
    }

    SelectedFiles Finish() { return std::move(m_selected); }

private:
    void AddStandardInput()
    {
        if (!m_known.insert("-").second)
            throw ToolError("FILE: standard input can be read only once");
        m_selected.files.push_back({VString("-"), std::string()});
    }

    void AddPattern(const std::string& pattern)
    {
        const std::vector<fs::path> paths = ExpandPattern(pattern);
        if (paths.empty())
            AddError("No file matches \"" + pattern + "\"");
        for (const fs::path& path : paths)
            AddPath(path);
    }

    void AddPath(const fs::path& path)
    {
        std::error_code error;
        const bool isFolder = fs::is_directory(path, error);
        if (!isFolder) {
            AddFile(path);
        } else if (m_isRecursive) {
            AddFolder(path);
        } else {
            AddError("Cannot read \"" + ToUtf8(path) + "\": it is a folder, which needs --recursive");
        }
    }

    // Selects a file, unless it was selected before.
    void AddFile(const fs::path& path)
    {
        const std::string name = ToUtf8(path);
        if (FindInvalidUtf8(name.data(), name.size()) != name.size()) {
            AddError("The name of the file \"" + name + "\" is not UTF-8");
            return;
        }
        std::error_code error;
        const fs::path unique = fs::canonical(path, error);
        if (m_known.insert(error ? path.native() : unique.native()).second)
            m_selected.files.push_back({VString::fromStdString(name), std::string()});
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
            AddError("No file in the folder \"" + ToUtf8(folder) + "\" matches " + DescribePatterns());
        std::sort(m_found.begin(), m_found.end());
        for (const auto& [path, error] : m_found) {
            if (error)
                AddError("Cannot read \"" + ToUtf8(path) + "\": " + error.message());
            else
                AddFile(path);
        }
    }

    // Adds the files of a folder to m_found and its subfolders to `folders`.
    void SearchFolder(const fs::path& folder, std::vector<fs::path>& folders)
    {
        std::error_code error;
        fs::directory_iterator entries(folder, error);
        for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
            const fs::directory_entry& entry = *entries;
            const fs::path name = entry.path().filename();
            std::error_code ignored;
            const fs::file_status status = entry.status(ignored);
            if (IsHidden(name) || (fs::is_directory(status) && entry.is_symlink(ignored)) || fs::is_other(status))
                continue;
            if (fs::is_directory(status))
                folders.push_back(entry.path());
            else if (IsIncluded(name))
                m_found.emplace_back(entry.path(), std::error_code());
        }
        if (error)
            m_found.emplace_back(folder, error);
    }

    bool IsIncluded(const fs::path& name) const
    {
        const auto matches = [&](const NamePattern& pattern) { return pattern.Matches(name); };
        return std::any_of(m_patterns.begin(), m_patterns.end(), matches);
    }

    std::string DescribePatterns() const
    {
        std::string text;
        for (const std::string& pattern : m_include)
            text += (text.empty() ? "" : " or ") + pattern;
        return text;
    }

    void AddError(const std::string& error) { m_selected.files.push_back({VString(), error}); }

    const std::vector<std::string>& m_include;
    const bool m_isRecursive;
    std::vector<NamePattern> m_patterns;
    std::vector<std::pair<fs::path, std::error_code>> m_found;  // the files of one folder, and folders with errors
    std::set<fs::path::string_type> m_known;                    // the files that were selected, without symbolic links
    SelectedFiles m_selected;
};

}  // namespace

void FileSelection::AddOptions(CLI::App& command)
{
    command
        .add_option("FILE",
            m_arguments,
            "The documents; - is standard input. A folder needs --recursive. "
            "A pattern such as '*.kxa' names the files that match it")
        ->required()
        ->type_name("FILE|FOLDER");
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
    return selector.Finish();
}
