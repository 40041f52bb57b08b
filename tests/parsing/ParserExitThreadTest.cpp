// Processes that exit while other threads parse. Each exit is one of the program parser_exit_threads.
#include <QProcess>

#include <gtest/gtest.h>

namespace {

// Many exits end well even with a fault, because the threads run on for 20 ms only. The thread sanitizer lets them run
// on for a second.
#if defined(__SANITIZE_THREAD__)
constexpr int Repetitions = 1;
constexpr int TimeLimit = 120000;  // in milliseconds
#elif defined(__SANITIZE_ADDRESS__)
constexpr int Repetitions = 2;
constexpr int TimeLimit = 120000;
#else
constexpr int Repetitions = 10;
constexpr int TimeLimit = 20000;
#endif

class ParserExitThreadTest : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(ParserExitThreadTest, AProcessExitsCleanlyWhileThreads)
{
    for (int i = 0; i < Repetitions; ++i) {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(EXIT_PROGRAM, {GetParam()});
        // If the process does not end, the destructor of QProcess kills it.
        ASSERT_TRUE(process.waitForFinished(TimeLimit)) << process.errorString().toStdString();
        ASSERT_EQ(process.exitStatus(), QProcess::NormalExit);
        ASSERT_EQ(process.exitCode(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Do,
    ParserExitThreadTest,
    testing::Values("ParseTexts", "ExplainFaults", "Validate", "ReadDocuments", "ReportToSinks"),
    [](const auto& row) { return std::string(row.param); });
