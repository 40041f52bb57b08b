#include "vanxml/StandardStreams.h"

#include <QTextCodec>
#include <QtGlobal>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "vancoreplatform/SystemError.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/ToolError.h"

namespace {

// Throws ToolError if a call that writes standard output returned an error.
void CheckOutput(const std::error_code& error)
{
    if (error)
        throw ToolError("Cannot write standard output: " + GetSystemReason(error).toStdString());
}

// Writes log messages of Qt and of the library as escaped lines.
void WriteLogMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    StandardStreams::WriteError(FormatErrorLine(message.toStdString()));
}

}  // namespace

namespace StandardStreams {

void Prepare()
{
    OperatingSystem::PrepareStreams();
    qInstallMessageHandler(WriteLogMessage);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

std::string ReadInput()
{
    std::string bytes;
    constexpr std::size_t run = 1 << 16;
    std::size_t size = 0;
    do {
        size = bytes.size();
        ReadInput(bytes, run);
    } while (bytes.size() == size + run);
    return bytes;
}

void ReadInput(std::string& bytes, std::size_t count)
{
    const std::size_t size = bytes.size();
    bytes.resize(size + count);
    errno = 0;
    bytes.resize(size + std::fread(bytes.data() + size, 1, count, stdin));
    if (std::ferror(stdin)) {
        const std::error_code error(errno, std::generic_category());
        throw ToolError("Cannot read standard input: " + GetSystemReason(error).toStdString());
    }
}

void Write(std::string_view bytes)
{
    CheckOutput(OperatingSystem::Write(OperatingSystem::Stream::Output, bytes));
}

void FlushOutput()
{
    CheckOutput(OperatingSystem::FlushOutput());
}

void WriteError(std::string_view bytes) noexcept
{
    OperatingSystem::Write(OperatingSystem::Stream::Error, bytes);
}

}  // namespace StandardStreams
