#include <iterator>
#include <string>

#include <windows.h>

#include "vancoreplatform/SystemError.h"

namespace {

struct Reason {
    DWORD error;
    const char* text;
};

constexpr Reason Reasons[] = {
    {ERROR_FILE_NOT_FOUND, "No such file or directory"},
    {ERROR_PATH_NOT_FOUND, "No such file or directory"},
    {ERROR_INVALID_DRIVE, "No such file or directory"},
    {ERROR_BAD_NETPATH, "No such file or directory"},
    {ERROR_BAD_NET_NAME, "No such file or directory"},
    {ERROR_ACCESS_DENIED, "Permission denied"},
    {ERROR_NETWORK_ACCESS_DENIED, "Permission denied"},
    {ERROR_SHARING_VIOLATION, "another process uses the file"},
    {ERROR_LOCK_VIOLATION, "another process uses the file"},
    {ERROR_USER_MAPPED_FILE, "another process uses the file"},
    {ERROR_DELETE_PENDING, "another process is deleting the file"},
    {ERROR_FILE_EXISTS, "File exists"},
    {ERROR_ALREADY_EXISTS, "File exists"},
    {ERROR_DIRECTORY, "Not a directory"},
    {ERROR_INVALID_NAME, "the file name is invalid"},
    {ERROR_BAD_PATHNAME, "the file name is invalid"},
    {ERROR_FILENAME_EXCED_RANGE, "File name too long"},
    {ERROR_TOO_MANY_OPEN_FILES, "Too many open files"},
    {ERROR_NOT_ENOUGH_MEMORY, "Cannot allocate memory"},
    {ERROR_OUTOFMEMORY, "Cannot allocate memory"},
    {ERROR_DISK_FULL, "No space left on device"},
    {ERROR_HANDLE_DISK_FULL, "No space left on device"},
    {ERROR_BROKEN_PIPE, "Broken pipe"},
    {ERROR_NO_DATA, "Broken pipe"},
    {ERROR_WRITE_PROTECT, "Read-only file system"},
    {ERROR_CANT_RESOLVE_FILENAME, "Too many levels of symbolic links"},
};

// Returns the system's message without the period and the line end behind it; empty if there is none.
std::wstring FindSystemMessage(DWORD error, DWORD language)
{
    // Without the insertions that a message may have places for, because nobody knows them here.
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    wchar_t buffer[1024];
    const DWORD length =
        FormatMessageW(flags, nullptr, error, language, buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    const std::wstring message(buffer, length);
    return message.substr(0, message.find_last_not_of(L". \r\n") + 1);
}

}  // namespace

VString GetSystemReason(const std::error_code& error)
{
    // The C library writes all its messages in English.
    if (error.category() != std::system_category())
        return VString(error.message().c_str());
    const auto code = static_cast<DWORD>(error.value());
    for (const Reason& reason : Reasons) {
        if (reason.error == code)
            return VString(reason.text);
    }
    constexpr DWORD languages[] = {
        MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)};
    for (const DWORD language : languages) {
        const std::wstring message = FindSystemMessage(code, language);
        if (!message.empty())
            return VString(QString::fromStdWString(message));
    }
    return VString(("error " + std::to_string(code) + " of the system").c_str());
}
