#include "vanxml/StandardStreams.h"

#include <QTextCodec>
#include <QtGlobal>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "vanxml/ErrorLines.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/ToolError.h"

namespace {

[[noreturn]] void ThrowStreamError(const char* what, int error)
{
    throw ToolError(std::string(what) + ": " + std::generic_category().message(error));
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
    std::array<char, 1 << 16> chunk;
    errno = 0;
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stdin))
        bytes.append(chunk.data(), count);
    if (std::ferror(stdin))
        ThrowStreamError("Cannot read standard input", errno);
    return bytes;
}

void Write(std::string_view bytes)
{
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
        ThrowStreamError("Cannot write standard output", errno);
}

void FlushOutput()
{
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        ThrowStreamError("Cannot write standard output", errno);
}

void WriteError(std::string_view bytes) noexcept
{
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

}  // namespace StandardStreams
