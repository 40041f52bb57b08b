#include "vanxml/StandardStreams.h"

#include <QTextCodec>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include "vanxml/ToolError.h"

#if defined(_WIN32)
#  include <QString>
#  include <fcntl.h>
#  include <io.h>
#  include <windows.h>
#  include <shellapi.h>
#endif

namespace {

[[noreturn]] void ThrowStreamError(const char* what, int error)
{
    throw ToolError(std::string(what) + ": " + std::generic_category().message(error));
}

}  // namespace

namespace StandardStreams {

void Prepare()
{
#if defined(_WIN32)
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
#endif
#if defined(SIGPIPE)
    std::signal(SIGPIPE, SIG_IGN);
#endif
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

std::vector<std::string> Arguments(int argc, char** argv)
{
#if defined(_WIN32)
    // The arguments of `main` went through the machine's code page.
    static_cast<void>(argv);
    std::vector<std::string> arguments;
    int count = argc;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; wide && i < count; ++i) arguments.push_back(QString::fromWCharArray(wide[i]).toStdString());
    LocalFree(wide);
    return arguments;
#else
    return std::vector<std::string>(argv, argv + argc);
#endif
}

std::string ReadInput()
{
    std::string bytes;
    std::array<char, 1 << 16> chunk;
    errno = 0;
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stdin)) bytes.append(chunk.data(), count);
    if (std::ferror(stdin)) ThrowStreamError("Cannot read standard input", errno);
    return bytes;
}

void Write(std::string_view bytes)
{
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) ThrowStreamError("Cannot write standard output", errno);
}

void FlushOutput()
{
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) ThrowStreamError("Cannot write standard output", errno);
}

void WriteError(std::string_view bytes) noexcept
{
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

}  // namespace StandardStreams
