// The documents that the arguments of a command name.
#pragma once

#include <string>
#include <vector>

#include "vancoreplatform/VString.h"

namespace CLI {
class App;
}

// A document, or the reason why there is none.
struct SelectedFile {
    VString name;       // "-" is standard input
    std::string error;  // if it is not empty, `name` is meaningless; UTF-8, unescaped
};

struct SelectedFiles {
    std::vector<SelectedFile> files;
    bool hasFolder = false;  // true if a folder was searched
    bool hasList = false;    // true if a list of names was read
};

// True if the argument is a pattern that matches files or folders.
bool MatchesFiles(const std::string& argument);

// The arguments FILE and the options --recursive, --include and --files-from of a command.
//
// An argument is one of these:
// - "-", standard input.
// - A file. A file that does not exist is selected too; reading it then fails.
// - A folder, if --recursive is set. All its files that match an include pattern are selected, in all
//   levels, sorted. Hidden entries, symbolic links to folders, devices and pipes are skipped.
// - A pattern, if no file has that name: `*`, `?` and `[...]` as in a shell. Each of its parts between
//   slashes matches hidden names only if the part begins with a dot. Devices and pipes are skipped.
//
// --files-from names a list of files and folders: one on each line, or with a NUL behind each if the list contains a
// NUL. A byte order mark of UTF-8 is skipped. In the list, "-" and patterns are ordinary names. The list is read behind
// the arguments.
//
// A file that is named twice, also through symbolic links, is selected once, at its first place.
//
// Threads: one at a time.
class FileSelection {
public:
    // Adds the options. This object must outlive the command.
    void AddOptions(CLI::App& command);

    // The arguments. A command that has another operand beside the files removes it here before it calls Select.
    std::vector<std::string>& Arguments() noexcept { return m_arguments; }
    // True if a list names more files.
    bool HasList() const noexcept { return m_hasList; }

    // Searches the folders and returns the documents in the order of the arguments. A folder that cannot be read, a
    // folder or pattern without a match, and a name that is not UTF-8 become errors in their place. Throws ToolError
    // if an include pattern is wrong or standard input is named twice, and VIO::Exception or ToolError if the list of
    // files cannot be read. Cost: reads all entries of the folders.
    SelectedFiles Select() const;

private:
    std::vector<std::string> m_arguments;
    std::vector<std::string> m_include;
    std::string m_list;
    bool m_hasList = false;
    bool m_isRecursive = false;
};
