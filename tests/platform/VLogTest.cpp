#include "vancoreplatform/VLog.h"

#include <gtest/gtest.h>

#include <QLoggingCategory>

#include <string>
#include <thread>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vansys/VError.h"

using testsupport::LogCapture;

namespace {

struct QtMessage {
    QtMsgType type;
    std::string category;
    std::string text;
};

std::vector<QtMessage>* s_messages = nullptr;

void KeepMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    s_messages->push_back({type, context.category, text.toStdString()});
}

// Collects the messages of Qt's log while it lives.
class QtLog {
public:
    QtLog() : m_before(qInstallMessageHandler(KeepMessage)) { s_messages = &messages; }
    ~QtLog()
    {
        qInstallMessageHandler(m_before);
        s_messages = nullptr;
    }

    std::vector<QtMessage> messages;

private:
    QtMessageHandler m_before;
};

}  // namespace

TEST(VLogTest, ACaptureReceivesSeverityAndMessage)
{
    LogCapture log;
    LogMessage(VLog::Warn, "careful");
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].severity, VLog::Warn);
    EXPECT_EQ(log.records[0].message, VString("careful"));
    EXPECT_TRUE(log.records[0].key.IsEmpty());
}

TEST(VLogTest, ACaptureReceivesTheIdentityOfTheSite)
{
    LogCapture log;
    const VError::ErrorInfo site(
        VantoraError::MakeError(7, "LogSite_X_0x00000007"), VError::ErrorSource::Product, VError::StatusCode::NotFound);
    LogMessage(VLog::Error, "broken", site);
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].key, VString("LogSite_X_0x00000007"));
    EXPECT_EQ(log.records[0].code, 7u);
    EXPECT_EQ(log.records[0].errorSource, 2);
    EXPECT_EQ(log.records[0].statusCode, 5);
}

TEST(VLogTest, OnlyTheNewestCaptureReceivesMessages)
{
    LogCapture outer;
    {
        LogCapture inner;
        LogMessage(VLog::Debug, "inside");
        EXPECT_EQ(inner.records.size(), 1u);
    }
    LogMessage(VLog::Debug, "outside");
    ASSERT_EQ(outer.records.size(), 1u);
    EXPECT_EQ(outer.records[0].message, VString("outside"));
}

TEST(VLogTest, ACaptureReceivesFromEveryThread)
{
    LogCapture log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 100; ++n)
                LogMessage(VLog::Info, "from a thread");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(log.records.size(), 400u);
}

TEST(VLogTest, QtReceivesNothingDuringACapture)
{
    QtLog qt;
    LogCapture log;
    LogMessage(VLog::Error, "captured");
    EXPECT_TRUE(qt.messages.empty());
}

TEST(VLogTest, QtReceivesMessagesUnderTheirCategoryWithoutACapture)
{
    QtLog qt;
    LogMessage(VLog::Info, "note");
    LogMessage(VLog::Warn, "careful", VError::ErrorInfo(VantoraError::MakeError(7, "LogSite_X")));
    LogMessage(VLog::Error, "broken");
    ASSERT_EQ(qt.messages.size(), 3u);
    EXPECT_EQ(qt.messages[0].type, QtInfoMsg);
    EXPECT_EQ(qt.messages[0].category, "vancorexml");
    EXPECT_EQ(qt.messages[0].text, "note");
    EXPECT_EQ(qt.messages[1].type, QtWarningMsg);
    EXPECT_EQ(qt.messages[1].text, "careful [LogSite_X]");
    EXPECT_EQ(qt.messages[2].type, QtCriticalMsg);
}

TEST(VLogTest, DebugIsOffUnlessTheHostTurnsItOn)
{
    QtLog qt;
    LogMessage(VLog::Debug, "detail");
    EXPECT_TRUE(qt.messages.empty());
    QLoggingCategory::setFilterRules(QStringLiteral("vancorexml.debug=true"));
    LogMessage(VLog::Debug, "detail");
    QLoggingCategory::setFilterRules(QString());
    ASSERT_EQ(qt.messages.size(), 1u);
    EXPECT_EQ(qt.messages[0].type, QtDebugMsg);
}
