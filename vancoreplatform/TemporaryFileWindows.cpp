#include <algorithm>
#include <string>
#include <utility>

#include <windows.h>

#include "vancoreplatform/TemporaryFile.h"

namespace {

[[noreturn]] void ThrowError(DWORD error)
{
    throw std::system_error(static_cast<int>(error), std::system_category());
}

void Check(BOOL succeeded)
{
    if (!succeeded)
        ThrowError(GetLastError());
}

// Owns a handle of the system.
class Handle {
public:
    // Throws the error of the call that returned `handle` if that is invalid.
    explicit Handle(HANDLE handle) : m_handle(handle) { Check(handle != INVALID_HANDLE_VALUE); }
    ~Handle()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(m_handle);
    }
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, INVALID_HANDLE_VALUE)) {}
    Handle& operator=(Handle&& other) = delete;

    HANDLE Get() const noexcept { return m_handle; }
    // Closes the handle, even if it throws.
    void Close() { Check(CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE))); }

private:
    HANDLE m_handle;
};

// Sets whether the system deletes the file when its last handle is closed, also when the process is killed. Ignores
// failures: on a file system without this feature, a killed process leaves the file behind.
void SetDeleteOnClose(const Handle& file, bool deletes) noexcept
{
    FILE_DISPOSITION_INFO information{};
    information.DeleteFile = deletes ? TRUE : FALSE;
    SetFileInformationByHandle(file.Get(), FileDispositionInfo, &information, sizeof information);
}

std::size_t CountOtherNames(const std::filesystem::path& file)
{
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const Handle handle(CreateFileW(
        file.c_str(), FILE_READ_ATTRIBUTES, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION information;
    Check(GetFileInformationByHandle(handle.Get(), &information));
    return information.nNumberOfLinks - 1;
}

class WindowsTemporaryFile final : public TemporaryFile {
public:
    explicit WindowsTemporaryFile(const std::filesystem::path& target)
        : m_target(std::filesystem::absolute(target)),  // the process can change its folder
          m_replaces(ReadTarget()),
          m_otherNames(m_replaces ? CountOtherNames(m_target) : 0),
          m_file(CreateWithNewName([this](std::uint64_t number) { return CreateFile(number); }))
    {
        SetDeleteOnClose(m_file, true);
    }

    ~WindowsTemporaryFile() override
    {
        // DeleteFileW has no effect if the file is still open: the system then deletes the file when it is closed.
        if (!m_isRenamed)
            DeleteFileW(m_path.c_str());
    }

    std::size_t OtherNames() const noexcept override { return m_otherNames; }

    void Write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const std::size_t most = std::min<std::size_t>(bytes.size(), 1u << 30);
            DWORD count = 0;
            Check(WriteFile(m_file.Get(), bytes.data(), static_cast<DWORD>(most), &count, nullptr));
            bytes.remove_prefix(count);
        }
    }

    void ReplaceTarget() override
    {
        Check(FlushFileBuffers(m_file.Get()));
        SetDeleteOnClose(m_file, false);
        m_file.Close();
        // ReplaceFileW keeps the properties of the old file. Some network folders do not support it, and it can fail
        // after it has removed the old file. A plain rename works in both cases.
        const bool isDone = m_replaces && ReplaceFileW(m_target.c_str(), m_path.c_str(), nullptr, 0, nullptr, nullptr);
        if (!isDone) {
            if (m_replaces)
                CheckFallback(GetLastError());
            Check(MoveFileExW(m_path.c_str(), m_target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
        }
        m_isRenamed = true;
    }

private:
    // Throws the error of ReplaceFileW unless a plain rename can replace the file after it.
    static void CheckFallback(DWORD error)
    {
        const bool isUnsupported = error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION;
        const bool isHalfDone = error == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
            error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2 || error == ERROR_FILE_NOT_FOUND;
        if (!isUnsupported && !isHalfDone)
            ThrowError(error);
    }

    // Returns whether the target exists. Throws if it may not be written.
    bool ReadTarget() const
    {
        const DWORD attributes = GetFileAttributesW(m_target.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            Check(GetLastError() == ERROR_FILE_NOT_FOUND);
            return false;
        }
        const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
        if (isReadOnly)
            ThrowError(ERROR_ACCESS_DENIED);
        return true;
    }

    Handle CreateFile(std::uint64_t number)
    {
        m_path = m_target.parent_path() / FormatName(number).data();
        // With FILE_SHARE_DELETE the file can be removed while its handle is open.
        constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_DELETE;
        return Handle(CreateFileW(
            m_path.c_str(), GENERIC_WRITE | DELETE, sharing, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    // Fixed after construction.
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    bool m_replaces;
    std::size_t m_otherNames;

    Handle m_file;
    bool m_isRenamed = false;
};

}  // namespace

std::unique_ptr<TemporaryFile> TemporaryFile::CreateFor(const std::filesystem::path& target)
{
    return std::make_unique<WindowsTemporaryFile>(target);
}

// The system deletes the files when the process ends (see SetDeleteOnClose).
void TemporaryFile::RemoveAll() noexcept {}
