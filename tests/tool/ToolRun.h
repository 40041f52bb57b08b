// Runs the tool as a separate process.
#pragma once

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <sstream>
#include <string>
#include <vector>

#if defined(__linux__)
#  include <unistd.h>
#endif

#include "tests/common/TestSupport.h"

struct ToolResult {
    int status = -1;  // exit status; -1 if the tool crashed or did not end in time
    std::string output;
    std::string errors;
};

// Runs `program` in `folder`, or in the current folder if that is empty. Writes the standard output to `outputFile` if
// there is one, otherwise into the result.
inline ToolResult RunProgram(const std::string& program,
    const std::vector<std::string>& arguments,
    const std::string& input = std::string(),
    const std::string& outputFile = std::string(),
    const std::string& folder = std::string())
{
    QStringList list;
    // QString::fromStdString would drop a U+FEFF at the start.
    for (const std::string& argument : arguments)
        list << VString::fromStdString(argument).ToQString();
    QProcess process;
    if (!outputFile.empty())
        process.setStandardOutputFile(QString::fromStdString(outputFile));
    if (!folder.empty())
        process.setWorkingDirectory(QString::fromStdString(folder));
    process.start(QString::fromStdString(program), list);
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    ToolResult result;
    if (!process.waitForFinished(120000))
        return result;
    if (process.exitStatus() == QProcess::NormalExit)
        result.status = process.exitCode();
    result.output = process.readAllStandardOutput().toStdString();
    result.errors = process.readAllStandardError().toStdString();
    return result;
}

inline ToolResult RunTool(const std::vector<std::string>& arguments, const std::string& input = std::string())
{
    return RunProgram(VANXML_PATH, arguments, input);
}

#if defined(__linux__)
// Runs the tool as an ordinary user, because file permissions do not restrict root.
inline ToolResult RunToolAsOrdinaryUser(const std::vector<std::string>& arguments)
{
    if (geteuid() != 0)
        return RunTool(arguments);
    std::vector<std::string> all{"--reuid=65534", "--regid=65534", "--clear-groups", VANXML_PATH};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProgram("setpriv", all);
}
#endif

// Returns the path with the separators of the system.
inline std::string Native(const std::string& path)
{
    return QDir::toNativeSeparators(QString::fromStdString(path)).toStdString();
}

// On Windows, the regular expressions of GoogleTest have no sets of characters.
MATCHER_P(ContainsExpression, expression, "contains the regular expression " + std::string(expression))
{
    return QRegularExpression(QString::fromStdString(expression)).match(QString::fromStdString(arg)).hasMatch();
}

// Returns the sorted names in the folder of `file`, including hidden ones.
inline std::vector<std::string> NamesInFolderOf(const VString& file)
{
    const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
    std::vector<std::string> names;
    const QDir folder = QFileInfo(file.ToQString()).dir();
    for (const QString& name : folder.entryList(all, QDir::Name))
        names.push_back(name.toStdString());
    return names;
}

// Returns the first line of each message, each with a line feed. The source lines and the note below it begin with a
// blank.
inline std::string FirstLines(const std::string& errors)
{
    std::string first;
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);)
        first += line.starts_with(' ') ? std::string() : line + "\n";
    return first;
}

inline std::string Header()
{
    return "<?xml version='1.0' encoding='utf-8' ?>\n\n";
}
