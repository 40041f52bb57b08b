#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

// Needs windows.h in front of it.
#include <shellapi.h>

#include "vancoreplatform/FileReplacement.h"
#include "vancoreplatform/SystemError.h"
#include "vancoreplatform/WindowsFiles.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;

namespace {

std::error_code LastError() noexcept
{
    return std::error_code(static_cast<int>(GetLastError()), std::system_category());
}

// Returns the error of a call of the C library on a stream if `succeeded` is false. The C library reports the errors of
// the system that it does not know as EINVAL. One of these is that the reader of a pipe has ended.
std::error_code StreamErrorUnless(bool succeeded) noexcept
{
    if (succeeded)
        return std::error_code();
    if (errno == EINVAL && _doserrno != 0)
        return std::error_code(static_cast<int>(_doserrno), std::system_category());
    return std::error_code(errno != 0 ? errno : EIO, std::generic_category());
}

// For the functions of WindowsFiles.h.
std::wstring NativeNameOf(const fs::path& path)
{
    const std::wstring& name = path.native();
    // QString::fromStdWString would drop a U+FEFF at the start.
    QString text(static_cast<int>(name.size()), Qt::Uninitialized);
    std::copy(name.begin(), name.end(), text.begin());
    return ToNativeName(VString(text));
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
std::string EncodeUtf8(std::wstring_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned codePoint = text[i];
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            codePoint = 0x10000 + ((codePoint & 0x3FF) << 10) + (text[++i] & 0x3FF);
        const int more = codePoint < 0x80 ? 0 : codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
        constexpr unsigned char firstBytes[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes.push_back(static_cast<char>(firstBytes[more] | codePoint >> 6 * more));
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6)
            bytes.push_back(static_cast<char>(0x80 | (codePoint >> shift & 0x3F)));
    }
    return bytes;
}

// Returns the handle of a standard stream, or INVALID_HANDLE_VALUE if the parent process gave none.
HANDLE HandleOf(std::FILE* stream) noexcept
{
    const int number = _fileno(stream);
    return number < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(_get_osfhandle(number));
}

bool IsConsole(HANDLE handle) noexcept
{
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;  // fails for files, pipes and other devices
}

// Returns the start of the text that WriteConsoleW accepts at once, without the first half of a character at its end.
// Old versions of Windows accept less than 64 KB.
std::wstring_view FirstRun(std::wstring_view text) noexcept
{
    constexpr std::size_t most = 8192;
    if (text.size() <= most)
        return text;
    return text.substr(0, IsHighSurrogate(text[most - 1]) ? most - 1 : most);
}

// Shows UTF-8 on a console. The other way would be to make UTF-8 the code page of the console. The console belongs to
// the shell too, so a process that is killed would leave that code page behind.
bool WriteToConsole(HANDLE console, std::string_view bytes)
{
    constexpr std::size_t longest = 1 << 20;
    while (!bytes.empty()) {
        std::size_t size = std::min(bytes.size(), longest);
        const auto isInside = [&] { return size < bytes.size() && (bytes[size] & 0xC0) == 0x80; };
        for (int back = 0; back < 3 && isInside(); ++back)
            --size;
        std::wstring text(size, L'\0');
        const int length = MultiByteToWideChar(
            CP_UTF8, 0, bytes.data(), static_cast<int>(size), text.data(), static_cast<int>(text.size()));
        text.resize(static_cast<std::size_t>(length));
        for (std::wstring_view rest = text; !rest.empty();) {
            const std::wstring_view run = FirstRun(rest);
            DWORD written = 0;
            if (!WriteConsoleW(console, run.data(), static_cast<DWORD>(run.size()), &written, nullptr))
                return false;
            if (written == 0) {
                SetLastError(ERROR_WRITE_FAULT);
                return false;
            }
            rest.remove_prefix(written);
        }
        bytes.remove_prefix(size);
    }
    return true;
}

// A console that got another mode, which it loses again at the end. The two streams may share a console.
struct ChangedConsole {
    std::atomic<HANDLE> handle = nullptr;
    DWORD mode = 0;  // the old one; written before `handle`
};

ChangedConsole changedConsoles[2];

extern "C" void RestoreConsoles()
{
    for (ChangedConsole& console : changedConsoles) {
        if (const HANDLE handle = console.handle.exchange(nullptr))
            SetConsoleMode(handle, console.mode);
    }
}

// The system calls this function in a new thread. Ends the process at once, because the destructors of libraries could
// wait for a lock of a thread that is gone. The status is the one of the system's handler, which shells know.
BOOL WINAPI EndByEvent(DWORD)
{
    FileReplacement::RemoveTemporaryFiles();
    RestoreConsoles();
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
    return TRUE;
}

// True for the two names of the console's output, as ToNativeName returns them.
bool IsConsoleName(const std::wstring& nativeName)
{
    return _wcsicmp(nativeName.c_str(), L"\\\\.\\CON") == 0 || _wcsicmp(nativeName.c_str(), L"\\\\.\\CONOUT$") == 0;
}

// True for a symbolic link or a junction. Other reparse points, such as files that a cloud stores, are ordinary files.
bool IsLink(const WIN32_FIND_DATAW& entry) noexcept
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(entry.dwReserved0);
}

fs::file_type TypeOfAttributes(DWORD attributes) noexcept
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? fs::file_type::directory : fs::file_type::regular;
}

bool IsMissing(DWORD error) noexcept
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_DIRECTORY:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_FILENAME_EXCED_RANGE: return true;
    default: return false;
    }
}

// Throws std::system_error if the path names nothing, or if the system refuses an answer.
fs::file_type FindType(const fs::path& path, OperatingSystem::Links links)
{
    const std::wstring name = NativeNameOf(path);
    if (IsDeviceName(name))
        return fs::file_type::character;
    const DWORD attributes = GetFileAttributesW(name.c_str());
    CheckCall(attributes != INVALID_FILE_ATTRIBUTES);
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return TypeOfAttributes(attributes);
    if (links == OperatingSystem::Links::Keep)
        return fs::file_type::symlink;
    const FileHandle target = OpenShared(name, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION information;
    CheckCall(GetFileInformationByHandle(target.Get(), &information));
    return TypeOfAttributes(information.dwFileAttributes);
}

}  // namespace

namespace OperatingSystem {

// The C runtime never gives the number of a closed standard stream to another file.
void PrepareStreams()
{
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        if (_fileno(stream) >= 0)
            _setmode(_fileno(stream), _O_BINARY);
    }
}

std::vector<std::string> Arguments(int, char**)
{
    // The arguments of `main` were converted to the code page of the machine and may have lost characters.
    // CommandLineToArgvW reads quotes and backslashes like the C runtime, with one exception: `""` between quotes also
    // ends the quoted part. Programs that quote arguments write `\"` instead.
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide)
        throw ToolError("Cannot read the command line: " + GetSystemReason(LastError()).toStdString());
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(EncodeUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

std::error_code Write(Stream stream, std::string_view bytes) noexcept
{
    static const HANDLE handles[] = {HandleOf(stdout), HandleOf(stderr)};
    static const bool areConsoles[] = {IsConsole(handles[0]), IsConsole(handles[1])};
    const bool isOutput = stream == Stream::Output;
    const std::size_t number = isOutput ? 0 : 1;
    if (!areConsoles[number]) {
        errno = 0;
        std::FILE* const file = isOutput ? stdout : stderr;
        return StreamErrorUnless(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
    }
    try {
        return WriteToConsole(handles[number], bytes) ? std::error_code() : LastError();
    } catch (const std::bad_alloc&) {
        return std::make_error_code(std::errc::not_enough_memory);
    }
}

std::error_code FlushOutput() noexcept
{
    errno = 0;
    return StreamErrorUnless(std::fflush(stdout) == 0 && !std::ferror(stdout));
}

bool IsTerminal(Stream stream) noexcept
{
    const HANDLE console = HandleOf(stream == Stream::Output ? stdout : stderr);
    DWORD mode = 0;
    if (!GetConsoleMode(console, &mode))
        return false;
    if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    static const int registered = std::atexit(RestoreConsoles);
    static_cast<void>(registered);
    // Set before the mode changes, because Ctrl+C may come at any moment.
    ChangedConsole& changed = changedConsoles[stream == Stream::Output ? 0 : 1];
    changed.mode = mode;
    changed.handle = console;
    if (SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING))
        return true;
    changed.handle = nullptr;
    return false;
}

// The system deletes the temporary files of a process that is killed or crashes (see
// FileReplacement::RemoveTemporaryFiles). A process whose parent ignores Ctrl+C does not get this event.
void RemoveTemporaryFilesOnSignals()
{
    SetConsoleCtrlHandler(EndByEvent, TRUE);
}

fs::file_type TypeOf(const fs::path& path, Links links) noexcept
{
    try {
        return FindType(path, links);
    } catch (const std::system_error& error) {
        return IsMissing(static_cast<DWORD>(error.code().value())) ? fs::file_type::not_found : fs::file_type::none;
    } catch (const std::bad_alloc&) {
        return fs::file_type::none;
    }
}

std::string ToUtf8(const fs::path& path)
{
    return EncodeUtf8(path.native());
}

// Also gives the names the letters that the disk has, because `A.xml` and `a.xml` are mostly the same file. Does not
// open devices and pipes, because a pipe may accept only one connection.
fs::path WithoutLinks(const fs::path& path)
{
    try {
        const std::wstring name = NativeNameOf(path);
        return IsDeviceName(name) ? name : ResolveLinks(name);
    } catch (const std::system_error&) {
        return path;
    }
}

std::error_code VisitFolder(const fs::path& folder, const std::function<void(const FolderEntry& entry)>& visit)
{
    fs::path pattern;
    try {
        pattern = fs::path(NativeNameOf(folder.empty() ? fs::path(L".") : folder)) / L"*";
    } catch (const std::system_error& error) {
        return error.code();
    }
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE)
        return LastError();
    const std::unique_ptr<void, decltype(&FindClose)> owner(search, FindClose);
    do {
        const std::wstring name = found.cFileName;
        if (name == L"." || name == L"..")
            continue;
        const bool isHidden = name.starts_with(L'.') || (found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
        visit({name, TypeOfAttributes(found.dwFileAttributes), IsLink(found), isHidden});
    } while (FindNextFileW(search, &found));
    return GetLastError() == ERROR_NO_MORE_FILES ? std::error_code() : LastError();
}

std::optional<Stream> FindStream(const fs::path&) noexcept
{
    return std::nullopt;
}

void WriteDevice(const fs::path& device, std::string_view bytes)
{
    // The system gives a handle that can show Unicode text only for this name and both kinds of access.
    const std::wstring name = NativeNameOf(device);
    const bool isConsole = IsConsoleName(name);
    const FileHandle handle(CreateFileW(isConsole ? L"CONOUT$" : name.c_str(),
        isConsole ? GENERIC_READ | GENERIC_WRITE : GENERIC_WRITE,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr,
        OPEN_EXISTING,
        FILE_ATTRIBUTE_NORMAL,
        nullptr));
    if (IsConsole(handle.Get())) {
        CheckCall(WriteToConsole(handle.Get(), bytes));
        return;
    }
    while (!bytes.empty()) {
        const std::size_t most = std::min<std::size_t>(bytes.size(), 1u << 30);
        DWORD count = 0;
        CheckCall(WriteFile(handle.Get(), bytes.data(), static_cast<DWORD>(most), &count, nullptr));
        // A serial port whose time is over writes nothing.
        if (count == 0)
            throw std::system_error(ERROR_WRITE_FAULT, std::system_category());
        bytes.remove_prefix(count);
    }
}

}  // namespace OperatingSystem
