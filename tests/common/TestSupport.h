// Helpers of all tests: logic assertions, captured logs, temporary folders, limits of CPU time.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "tests/common/CpuTime.h"
#include "vancoreplatform/VLog.h"
#include "vancoreplatform/VString.h"
#include "vansys/LogicException.h"
#include "vansys/VantoraException.h"

// Makes GoogleTest print a VString as text instead of a list of code units.
inline void PrintTo(const VString& text, std::ostream* out)
{
    *out << '"' << text << '"';
}

namespace testsupport {

// Expects that `run` raises the logic assertion with this file, line, expression and code, and with the key of that
// code.
inline void ExpectLogicException(
    const std::function<void()>& run, const char* file, int line, const char* text, std::uint32_t code)
{
    try {
        run();
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetFile(), VString(file));
        EXPECT_EQ(exception.GetLine(), line);
        EXPECT_EQ(exception.GetExpression(), VString(text));
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), code);
        char key[64];
        std::snprintf(key, sizeof key, "LogicException_LogicAssert_0x%08X", static_cast<unsigned>(code));
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString(key));
        return;
    }
    ADD_FAILURE() << "no logic assertion \"" << text << "\"";
}

// Collects the log records of all threads while it lives. Captures can be nested; the innermost one gets the records.
class LogCapture {
public:
    LogCapture() : m_before(VLog::SetSink(m_sink)) {}
    ~LogCapture() { VLog::SetSink(m_before); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

private:
    struct Sink : VLog::Sink {
        void Write(const VLog::Record& record) override { records.push_back(record); }
        std::vector<VLog::Record> records;
    };

    std::shared_ptr<Sink> m_sink = std::make_shared<Sink>();
    std::shared_ptr<VLog::Sink> m_before;

public:
    const std::vector<VLog::Record>& records = m_sink->records;
};

// A temporary folder. It is deleted with this object.
class TemporaryFolder {
public:
    VString Path(const VString& name) const { return VString(m_folder.filePath(name.ToQString())); }
    // Writes `bytes` and returns the file's path.
    VString Write(const VString& name, const std::string& bytes) const
    {
        QFile file(m_folder.filePath(name.ToQString()));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes.data(), static_cast<qint64>(bytes.size())), static_cast<qint64>(bytes.size()));
        return VString(file.fileName());
    }
    static std::string Read(const VString& path)
    {
        QFile file(path.ToQString());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }
    // Returns the names of all entries, also of hidden ones, in order.
    std::vector<std::string> Names() const
    {
        const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        std::vector<std::string> names;
        for (const QString& name : QDir(m_folder.path()).entryList(all, QDir::Name))
            names.push_back(name.toStdString());
        return names;
    }

private:
    QTemporaryDir m_folder;
};

// Changes the folder of the process while it lives.
class CurrentFolder {
public:
    explicit CurrentFolder(const VString& folder) : m_before(QDir::currentPath())
    {
        EXPECT_TRUE(QDir::setCurrent(folder.ToQString()));
    }
    ~CurrentFolder() { QDir::setCurrent(m_before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    QString m_before;
};

// Fails the test if the process uses more than `seconds` of CPU time while the object lives. Choose a limit that a slow
// build also keeps, such as one with a sanitizer.
class CpuTimeLimit {
public:
    explicit CpuTimeLimit(double seconds) : m_seconds(seconds) {}
    ~CpuTimeLimit() { EXPECT_LT(CpuSeconds() - m_start, m_seconds) << "seconds of CPU time"; }
    CpuTimeLimit(const CpuTimeLimit&) = delete;
    CpuTimeLimit& operator=(const CpuTimeLimit&) = delete;

private:
    double m_seconds;
    double m_start = CpuSeconds();
};

}  // namespace testsupport
