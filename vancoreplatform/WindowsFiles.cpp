#include "vancoreplatform/WindowsFiles.h"

#include <string_view>

namespace {

constexpr std::wstring_view LongPrefix = L"\\\\?\\";
constexpr std::wstring_view DevicePrefix = L"\\\\.\\";
constexpr std::wstring_view PipePrefix = L"\\\\?\\pipe\\";
constexpr std::wstring_view SharePrefix = L"\\\\";

// Returns the absolute name. It has no elements "." and "..", and "\" as its only separator.
std::wstring Complete(const std::wstring& name)
{
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        CheckCall(length != 0);
        const bool isComplete = length < full.size();
        full.resize(length);
        if (isComplete)
            return full;
    }
}

}  // namespace

void ThrowSystemError(DWORD error)
{
    throw std::system_error(static_cast<int>(error), std::system_category());
}

void CheckCall(BOOL succeeded)
{
    if (!succeeded)
        ThrowSystemError(GetLastError());
}

std::wstring ToNativeName(const VString& name)
{
    if (name.IsEmpty())
        ThrowSystemError(ERROR_FILE_NOT_FOUND);
    if (name.contains(u'\0'))
        ThrowSystemError(ERROR_INVALID_NAME);
    const std::u16string_view units = name.View();
    const std::wstring given(units.begin(), units.end());
    if (given.starts_with(LongPrefix))
        return given;
    const std::wstring full = Complete(given);
    if (full.starts_with(LongPrefix))
        return full;
    if (full.starts_with(DevicePrefix)) {
        // The two prefixes mean the same to the system. `\\.\C:` without a path is the device of the drive.
        const bool isOnDrive = full.find(L":\\") == DevicePrefix.size() + 1;
        return isOnDrive ? std::wstring(LongPrefix) + full.substr(DevicePrefix.size()) : full;
    }
    if (full.starts_with(SharePrefix))
        return std::wstring(LongPrefix) + L"UNC\\" + full.substr(SharePrefix.size());
    return std::wstring(LongPrefix) + full;
}

bool IsDeviceName(const std::wstring& nativeName) noexcept
{
    return nativeName.starts_with(DevicePrefix) || nativeName.starts_with(PipePrefix);
}

FileHandle OpenShared(const std::wstring& nativeName, DWORD access)
{
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // FILE_FLAG_BACKUP_SEMANTICS also opens folders.
    return FileHandle(
        CreateFileW(nativeName.c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::wstring ResolveLinks(const std::wstring& nativeName)
{
    const FileHandle handle = OpenShared(nativeName, FILE_READ_ATTRIBUTES);
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const auto size = static_cast<DWORD>(name.size());
        const DWORD length =
            GetFinalPathNameByHandleW(handle.Get(), name.data(), size, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
        CheckCall(length != 0);
        name.resize(length);
        if (length < size)
            return name;
    }
}
