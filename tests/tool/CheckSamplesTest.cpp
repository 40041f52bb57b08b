// Checks the samples with the tool.
#include <QDir>

#include <algorithm>
#include <cstdlib>

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

// The words of the messages are tested elsewhere.
TEST(CheckSamplesTest, EveryInvalidSampleHasErrorsWithPositionsInTheSample)
{
    const std::vector<std::string> files = SamplesIn("/invalid", "*.kx?");
    ASSERT_EQ(files.size(), 22u);
    for (const std::string& file : files) {
        const std::string text = TemporaryFolder::Read(VString::fromStdString(file));
        const auto lineCount = std::count(text.begin(), text.end(), '\n') + 1;
        const ToolResult result = RunTool({"check", "--format", "gcc", file});
        EXPECT_EQ(result.status, 1) << file;
        int count = 0;
        std::istringstream lines(result.errors);
        for (std::string line; std::getline(lines, line); ++count) {
            ASSERT_THAT(line, testing::StartsWith(file + ":")) << line;
            const int number = std::atoi(line.c_str() + file.size() + 1);
            EXPECT_TRUE(number >= 1 && number <= lineCount) << line;
        }
        ASSERT_GT(count, 0) << file;
        EXPECT_EQ(result.output, "1 document, " + std::to_string(count) + (count == 1 ? " error\n" : " errors\n"));
    }
}

TEST(CheckSamplesTest, EveryErrorRecordBelongsToASample)
{
    EXPECT_EQ(SamplesIn("/invalid", "*.errors").size(), SamplesIn("/invalid", "*.kx?").size());
}
