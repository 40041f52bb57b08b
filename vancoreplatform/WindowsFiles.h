// Names and handles of files on Windows. The sources of the library and of the tool for Windows include this header. It
// is not installed.
#pragma once

#include <string>
#include <system_error>
#include <utility>

#include <windows.h>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// Throws std::system_error for an error of the system.
[[noreturn]] void ThrowSystemError(DWORD error);
// Throws the error of the call that returned `succeeded` if that is false.
VANCOREPLATFORM_API void CheckCall(BOOL succeeded);

// Returns the name in the form for all calls of the system that take a file name: absolute, normalised, and with the
// prefix `\\?\`, or `\\?\UNC\` for a share. Without the prefix, the system refuses names of more than 260 UTF-16 code
// units.
//
// A name without a root, and a name such as "C:a.xml", is completed by the current folder of the process, and of the
// process on that drive. Both kinds of separators are accepted. Names of devices, such as "NUL", become `\\.\NUL`. A
// name such as `\\.\C:\a.xml`, which is a file and not a device, becomes `\\?\C:\a.xml`. A name that begins with
// `\\?\` is not changed.
//
// Throws std::system_error if the name is empty, contains a NUL or is longer than 32,767 code units.
VANCOREPLATFORM_API std::wstring ToNativeName(const VString& name);

// True for the name of a device or a pipe, as ToNativeName returns it. FileReplacement refuses exactly these names, and
// the tool writes to them directly.
VANCOREPLATFORM_API bool IsDeviceName(const std::wstring& nativeName) noexcept;

// Owns a handle of a file.
class FileHandle {
public:
    // Throws the error of the call that returned `handle` if that is invalid.
    explicit FileHandle(HANDLE handle) : m_handle(handle) { CheckCall(handle != INVALID_HANDLE_VALUE); }
    ~FileHandle() { Reset(); }
    FileHandle(FileHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, INVALID_HANDLE_VALUE)) {}
    FileHandle& operator=(FileHandle&& other) = delete;

    HANDLE Get() const noexcept { return m_handle; }
    // Closes the handle. Ignores failures.
    void Reset() noexcept
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE));
    }
    // Closes the handle, even if it throws.
    void Close() { CheckCall(CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE))); }

private:
    HANDLE m_handle;
};

// Opens an existing file or folder for all uses by others, also for its removal. Throws std::system_error.
VANCOREPLATFORM_API FileHandle OpenShared(const std::wstring& nativeName, DWORD access);

// Returns the name of an existing file or folder without links, with the prefix `\\?\`. The names of its folders have
// the letters that the disk has. Throws std::system_error.
VANCOREPLATFORM_API std::wstring ResolveLinks(const std::wstring& nativeName);
