#include "vanxml/OperatingSystem.h"

#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

// Needs windows.h in front of it.
#include <shellapi.h>

namespace {

[[noreturn]] void ThrowLastError(const char* call)
{
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

bool IsHighSurrogate(wchar_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(wchar_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

// A lone surrogate becomes three bytes that are not well-formed UTF-8.
std::string ToUtf8(const wchar_t* text)
{
    std::string bytes;
    for (; *text != 0; ++text) {
        unsigned codePoint = *text;
        if (IsHighSurrogate(text[0]) && IsLowSurrogate(text[1])) {
            codePoint = 0x10000 + ((codePoint & 0x3FF) << 10) + (*++text & 0x3FF);
        }
        const int more = codePoint < 0x80 ? 0 : codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
        constexpr unsigned char firstBytes[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes.push_back(static_cast<char>(firstBytes[more] | codePoint >> 6 * more));
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6) {
            bytes.push_back(static_cast<char>(0x80 | (codePoint >> shift & 0x3F)));
        }
    }
    return bytes;
}

}  // namespace

namespace OperatingSystem {

void PrepareStreams()
{
    for (std::FILE* stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
}

std::vector<std::string> Arguments(int, char**)
{
    // The arguments of `main` were converted to the code page of the machine and may have lost characters.
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide)
        ThrowLastError("CommandLineToArgvW");
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(ToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

bool IsStandardOutput(const std::filesystem::path&) noexcept
{
    return false;
}

// The system deletes the temporary files of a process that ends (see FileReplacement::RemoveTemporaryFiles).
void RemoveTemporaryFilesOnSignals() {}

}  // namespace OperatingSystem
