// The samples as the tool sees them.
#include <QDir>

#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

std::vector<std::string> SamplesIn(const char* folder, const char* pattern)
{
    std::vector<std::string> files;
    for (const QFileInfo& file : QDir(QStringLiteral(SAMPLES_FOLDER) + QString::fromLatin1(folder))
                                     .entryInfoList({QString::fromLatin1(pattern)}, QDir::Files, QDir::Name))
        files.push_back(file.filePath().toStdString());
    return files;
}

// The output that the tool must print for the errors recorded beside a document. The tool ends
// errors of the parser with the document's name, which the record leaves out.
std::string Expected(const std::string& file, int& count)
{
    std::istringstream recorded(TemporaryFolder::Read(VString::fromStdString(file + ".errors")));
    std::string lines;
    for (std::string line; std::getline(recorded, line); ++count) {
        const bool isParsers = line.rfind("Error(", 0) == 0 || line.rfind("Fatal Error(", 0) == 0;
        lines += file + ": " + line + (isParsers ? " (id: " + file + ")" : "") + "\n";
    }
    return lines;
}

}  // namespace

TEST(CheckSamplesTest, EveryGoodSampleIsGood)
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

TEST(CheckSamplesTest, TheExtensionManifestIsWellFormed)
{
    EXPECT_EQ(RunTool({"check", SAMPLES_FOLDER "/notes-extension.xml"}).output, "1 document, 0 errors\n");
}

TEST(CheckSamplesTest, EveryInvalidSampleGivesItsRecordedErrorsInTheirPlaces)
{
    const std::vector<std::string> files = SamplesIn("/invalid", "*.kx?");
    ASSERT_EQ(files.size(), 22u);
    for (const std::string& file : files) {
        int count = 0;
        const std::string expected = Expected(file, count);
        ASSERT_GT(count, 0) << file;
        const ToolResult result = RunTool({"check", "--schema", "auto", file});
        EXPECT_EQ(result.status, 1) << file;
        EXPECT_EQ(result.errors, expected);
        EXPECT_EQ(result.output, "1 document, " + std::to_string(count) + (count == 1 ? " error\n" : " errors\n"));
    }
}

TEST(CheckSamplesTest, NoRecordIsWithoutADocument)
{
    EXPECT_EQ(SamplesIn("/invalid", "*.errors").size(), SamplesIn("/invalid", "*.kx?").size());
}
