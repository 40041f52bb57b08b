#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <utility>

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

HANDLE ToHandle(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

std::intptr_t OpenFile(const std::filesystem::path& file, DWORD disposition)
{
    // With FILE_SHARE_DELETE a file can be removed while its handle is still open.
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_DELETE;
    const HANDLE handle =
        CreateFileW(file.c_str(), GENERIC_WRITE, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        ThrowLastError("CreateFileW");
    return reinterpret_cast<std::intptr_t>(handle);
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

void RequireWritable(const std::filesystem::path& file)
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        ThrowLastError("GetFileAttributesW");
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isReadOnly)
        throw std::system_error(ERROR_ACCESS_DENIED, std::system_category());
}

bool IsStandardOutput(const std::filesystem::path&) noexcept
{
    return false;
}

// Windows cannot flush folders, and the journal of its file system keeps the order of renames.
void FlushFolder(const std::filesystem::path&) noexcept {}

// Ignores the access, because a new file inherits the access rights of its folder.
OutputHandle OutputHandle::Create(const std::filesystem::path& file, Access)
{
    return OutputHandle(OpenFile(file, CREATE_NEW));
}

OutputHandle OutputHandle::Open(const std::filesystem::path& file)
{
    return OutputHandle(OpenFile(file, OPEN_EXISTING));
}

OutputHandle::~OutputHandle()
{
    if (m_handle != -1)
        CloseHandle(ToHandle(m_handle));
}

OutputHandle::OutputHandle(OutputHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}

void OutputHandle::Write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t most = std::min<std::size_t>(bytes.size(), 1u << 30);
        DWORD count = 0;
        const BOOL isDone = WriteFile(ToHandle(m_handle), bytes.data(), static_cast<DWORD>(most), &count, nullptr);
        if (!isDone)
            ThrowLastError("WriteFile");
        bytes.remove_prefix(count);
    }
}

void OutputHandle::Flush()
{
    if (!FlushFileBuffers(ToHandle(m_handle)))
        ThrowLastError("FlushFileBuffers");
}

void OutputHandle::Close()
{
    if (!CloseHandle(ToHandle(std::exchange(m_handle, -1))))
        ThrowLastError("CloseHandle");
}

}  // namespace OperatingSystem
