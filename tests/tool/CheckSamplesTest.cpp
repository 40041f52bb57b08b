// Checks the samples with the tool.
#include <QDir>

#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

std::vector<std::string> SamplesIn(const char* folder, const char* pattern)
{
    std::vector<std::string> files;
    const QDir samples(QStringLiteral(SAMPLES_FOLDER) + QString::fromLatin1(folder));
    for (const QFileInfo& file : samples.entryInfoList({QString::fromLatin1(pattern)}, QDir::Files, QDir::Name))
        files.push_back(file.filePath().toStdString());
    return files;
}

// Returns the messages that the tool must print for a document, and sets `count` to their number. A file beside the
// document records them. The record omits the document's name, which the tool appends to parser errors.
std::string ExpectedErrors(const std::string& file, int& count)
{
    std::istringstream recorded(TemporaryFolder::Read(VString::fromStdString(file + ".errors")));
    std::string lines;
    count = 0;
    for (std::string line; std::getline(recorded, line); ++count) {
        const bool isParserError = line.rfind("Error(", 0) == 0 || line.rfind("Fatal Error(", 0) == 0;
        lines += file + ": " + line + (isParserError ? " (id: " + file + ")" : "") + "\n";
    }
    return lines;
}

}  // namespace

TEST(CheckSamplesTest, EveryValidSampleHasNoErrors)
{
    const std::vector<std::string> files = SamplesIn("", "*.kx?");
    ASSERT_EQ(files.size(), 22u);
    for (const std::string& file : files) {
        const ToolResult result = RunTool({"check", "--schema", "auto", file});
        EXPECT_EQ(result.status, 0) << file;
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.output, "1 document, 0 errors\n");
    }
}

TEST(CheckSamplesTest, ExtensionManifestIsWellFormed)
{
    EXPECT_EQ(RunTool({"check", SAMPLES_FOLDER "/notes-extension.xml"}).output, "1 document, 0 errors\n");
}

TEST(CheckSamplesTest, EveryInvalidSampleHasItsRecordedErrorsWithPositions)
{
    const std::vector<std::string> files = SamplesIn("/invalid", "*.kx?");
    ASSERT_EQ(files.size(), 22u);
    for (const std::string& file : files) {
        int count = 0;
        const std::string expected = ExpectedErrors(file, count);
        ASSERT_GT(count, 0) << file;
        const ToolResult result = RunTool({"check", "--schema", "auto", file});
        EXPECT_EQ(result.status, 1) << file;
        EXPECT_EQ(result.errors, expected);
        EXPECT_EQ(result.output, "1 document, " + std::to_string(count) + (count == 1 ? " error\n" : " errors\n"));
    }
}

TEST(CheckSamplesTest, EveryErrorRecordBelongsToASample)
{
    EXPECT_EQ(SamplesIn("/invalid", "*.errors").size(), SamplesIn("/invalid", "*.kx?").size());
}
