#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vancoreplatform/TemporaryFile.h"
#include "vancoreplatform/WindowsFiles.h"

namespace {

// Virus scanners and search services open a file for a moment after it was written. So a call that fails because
// another process uses a file is repeated after 10, 20, 40, 80 and 160 milliseconds.
constexpr DWORD FirstWait = 10;
constexpr DWORD LongestWait = 160;

bool IsSharingError(DWORD error) noexcept
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}

// True for all errors of the calls that rename and remove a file which another process uses. ERROR_ACCESS_DENIED also
// means that the permission is missing.
bool IsInUseError(DWORD error) noexcept
{
    return IsSharingError(error) || error == ERROR_ACCESS_DENIED || error == ERROR_USER_MAPPED_FILE ||
        error == ERROR_DELETE_PENDING;
}

bool IsUnsupported(DWORD error) noexcept
{
    return error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION || error == ERROR_INVALID_PARAMETER ||
        error == ERROR_INVALID_LEVEL || error == ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD ErrorOf(BOOL succeeded) noexcept
{
    return succeeded ? ERROR_SUCCESS : GetLastError();
}

// Calls `step`, which returns the error of a call of the system. Repeats that while `isTemporary` returns true for the
// error. Returns the last error.
template <typename Step>
DWORD Repeat(const Step& step, bool (*isTemporary)(DWORD) noexcept)
{
    for (DWORD wait = FirstWait;; wait *= 2) {
        const DWORD error = step();
        if (!isTemporary(error) || wait > LongestWait)
            return error;
        Sleep(wait);
    }
}

// Opens an existing file as `sharing` says and closes it. Returns the error of the system.
DWORD TryToOpen(const std::wstring& file, DWORD access, DWORD sharing) noexcept
{
    const HANDLE handle =
        CreateFileW(file.c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError();
    CloseHandle(handle);
    return ERROR_SUCCESS;
}

constexpr DWORD FullSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Sets whether the system deletes the file when its last handle is closed, also when the process is killed. Ignores
// failures: on a file system without this feature, a killed process leaves the file behind.
void SetDeleteOnClose(const FileHandle& file, bool deletes) noexcept
{
    FILE_DISPOSITION_INFO information{};
    information.DeleteFile = deletes ? TRUE : FALSE;
    SetFileInformationByHandle(file.Get(), FileDispositionInfo, &information, sizeof information);
}

// The properties of a file that its replacement gets.
struct Properties {
    std::size_t otherNames = 0;
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    FILETIME created{};
    std::string accessList;  // a security descriptor; empty if the file system has none
};

std::string ReadAccessList(HANDLE file)
{
    std::string descriptor(256, '\0');
    for (;;) {
        DWORD size = 0;
        const DWORD error = ErrorOf(GetKernelObjectSecurity(
            file, DACL_SECURITY_INFORMATION, descriptor.data(), static_cast<DWORD>(descriptor.size()), &size));
        if (IsUnsupported(error))
            return std::string();
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            CheckCall(error == ERROR_SUCCESS);
            return descriptor;
        }
        descriptor.resize(size);
    }
}

// Returns nothing if there is no such file. Throws if it may not be written.
std::optional<Properties> ReadProperties(const std::wstring& file)
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        CheckCall(GetLastError() == ERROR_FILE_NOT_FOUND);
        return std::nullopt;
    }
    // The system checks the permission before the sharing.
    const bool isProtected = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    const DWORD error = isProtected ? ERROR_ACCESS_DENIED : TryToOpen(file, GENERIC_WRITE, FullSharing);
    if (error != ERROR_SUCCESS && !IsSharingError(error))
        ThrowSystemError(error);

    const FileHandle handle = OpenShared(file, FILE_READ_ATTRIBUTES | READ_CONTROL);
    BY_HANDLE_FILE_INFORMATION information;
    CheckCall(GetFileInformationByHandle(handle.Get(), &information));
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
        FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_ENCRYPTED;
    // A server may report no links.
    const std::size_t otherNames = information.nNumberOfLinks > 0 ? information.nNumberOfLinks - 1 : 0;
    return Properties{
        otherNames, information.dwFileAttributes & kept, information.ftCreationTime, ReadAccessList(handle.Get())};
}

void CopyStream(const std::wstring& from, const std::wstring& to)
{
    const FileHandle source = OpenShared(from, GENERIC_READ);
    // Instead of CREATE_ALWAYS, which fails if the file has the attribute "hidden" or "system".
    const FileHandle target(
        CreateFileW(to.c_str(), GENERIC_WRITE, FullSharing, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    CheckCall(SetEndOfFile(target.Get()));
    for (std::string buffer(0x10000, '\0');;) {
        DWORD count = 0;
        CheckCall(ReadFile(source.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr));
        if (count == 0)
            return;
        CheckCall(WriteFile(target.Get(), buffer.data(), count, &count, nullptr));
    }
}

// Copies the named streams of a file, such as the mark of a file that comes from the internet.
void CopyNamedStreams(const std::wstring& from, const std::wstring& to)
{
    WIN32_FIND_STREAM_DATA stream;
    const HANDLE streams = FindFirstStreamW(from.c_str(), FindStreamInfoStandard, &stream, 0);
    if (streams == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        if (error != ERROR_HANDLE_EOF && !IsUnsupported(error))
            ThrowSystemError(error);
        return;
    }
    const std::unique_ptr<void, decltype(&FindClose)> closing(streams, &FindClose);
    do {
        const std::wstring name = stream.cStreamName;  // ":NAME:$DATA"
        if (name != L"::$DATA")
            CopyStream(from + name, to + name);
    } while (FindNextStreamW(streams, &stream));
    CheckCall(GetLastError() == ERROR_HANDLE_EOF);
}

// Renames an open file so that it replaces the file `target` if there is one. Returns the error of the system.
DWORD RenameOpenFile(const FileHandle& file, const std::wstring& target)
{
    struct Request {
        DWORD flags;
        HANDLE folder;
        DWORD nameBytes;
        wchar_t name[1];
    };
    static_assert(sizeof(Request) == sizeof(FILE_RENAME_INFO));
    std::vector<char> bytes(sizeof(Request) + target.size() * sizeof(wchar_t));
    Request request{};
    request.nameBytes = static_cast<DWORD>(target.size() * sizeof(wchar_t));
    std::memcpy(bytes.data() + offsetof(Request, name), target.c_str(), request.nameBytes);
    const auto rename = [&](FILE_INFO_BY_HANDLE_CLASS operation, DWORD flags) {
        request.flags = flags;
        std::memcpy(bytes.data(), &request, offsetof(Request, name));
        const auto size = static_cast<DWORD>(bytes.size());
        return ErrorOf(SetFileInformationByHandle(file.Get(), operation, bytes.data(), size));
    };
    // Since 2017, Windows can rename a file as POSIX systems do: processes that share the old file for its removal keep
    // it open. The headers have these constants only for programs that need such a system.
    constexpr auto renameLikePosix = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);  // FileRenameInfoEx
    constexpr DWORD replaces = 1;
    constexpr DWORD likePosix = 2;
    const DWORD error = rename(renameLikePosix, replaces | likePosix);
    return IsUnsupported(error) ? rename(FileRenameInfo, replaces) : error;
}

// Returns false if there is no such file.
bool HasAttribute(const std::wstring& file, DWORD attribute) noexcept
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

// A thread holds it while its temporary file would stay behind if the process ended.
class KeptFileLock {
public:
    KeptFileLock() noexcept { AcquireSRWLockShared(&lock); }
    ~KeptFileLock() { ReleaseSRWLockShared(&lock); }
    KeptFileLock(const KeptFileLock&) = delete;
    KeptFileLock& operator=(const KeptFileLock&) = delete;

    // Waits until no thread holds the lock. From then on, threads that want it wait for ever.
    static void Stop() noexcept { AcquireSRWLockExclusive(&lock); }

private:
    static inline SRWLOCK lock = SRWLOCK_INIT;
};

class WindowsTemporaryFile final : public TemporaryFile {
public:
    explicit WindowsTemporaryFile(const std::wstring& target)
        : m_target(target),
          m_old(ReadProperties(target)),
          m_file(Create())
    {}

    ~WindowsTemporaryFile() override
    {
        if (m_isRenamed)
            return;
        // The system deletes the file here if it can.
        m_file.Reset();
        Repeat([this] { return ErrorOf(DeleteFileW(m_path.c_str())); }, IsInUseError);
    }

    std::size_t OtherNames() const noexcept override { return m_old ? m_old->otherNames : 0; }

    void Write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const std::size_t most = std::min<std::size_t>(bytes.size(), 1u << 30);
            DWORD count = 0;
            CheckCall(WriteFile(m_file.Get(), bytes.data(), static_cast<DWORD>(most), &count, nullptr));
            bytes.remove_prefix(count);
        }
    }

    void ReplaceTarget() override
    {
        if (m_old)
            SetFileTime(m_file.Get(), &m_old->created, nullptr, nullptr);
        CheckCall(FlushFileBuffers(m_file.Get()));
        DWORD error = Repeat([this] { return Rename(); }, IsInUseError);
        // The system also denies the access if another process uses the target.
        if (error == ERROR_ACCESS_DENIED && IsSharingError(TryToOpen(m_target, GENERIC_READ, 0)))
            error = ERROR_SHARING_VIOLATION;
        if (error != ERROR_SUCCESS)
            ThrowSystemError(error);
        m_isRenamed = true;
        // Without this, a crash of the machine can restore the old file, but never a partial one.
        FlushFileBuffers(m_file.Get());
        m_file.Reset();
    }

private:
    FileHandle Create()
    {
        const KeptFileLock lock;
        FileHandle file = CreateWithNewName([this](std::uint64_t number) { return CreateNew(number); });
        try {
            // Nobody can open the streams of a file that the system is going to delete.
            if (m_old)
                CopyNamedStreams(m_target, m_path);
        } catch (...) {
            DeleteFileW(m_path.c_str());
            throw;
        }
        SetDeleteOnClose(file, true);
        return file;
    }

    // Returns the error of the system.
    DWORD Rename()
    {
        // Fails before the temporary file loses its protection. The rename would fail for the same reason.
        const DWORD sharing = TryToOpen(m_target, DELETE, FullSharing);
        if (IsSharingError(sharing))
            return sharing;
        // The system renames no file that it is going to delete. So a process that is killed between these calls leaves
        // the temporary file behind.
        const KeptFileLock lock;
        SetDeleteOnClose(m_file, false);
        const DWORD error = RenameOpenFile(m_file, m_target);
        if (error != ERROR_SUCCESS)
            SetDeleteOnClose(m_file, true);
        return error;
    }

    FileHandle CreateNew(std::uint64_t number)
    {
        const Name name = FormatName(number);
        m_path = m_target.substr(0, m_target.rfind(L'\\') + 1) + std::wstring(name.begin(), name.end() - 1);
        const DWORD attributes = m_old ? m_old->attributes : FILE_ATTRIBUTE_NORMAL;
        SECURITY_ATTRIBUTES security{sizeof security, nullptr, FALSE};
        if (m_old && !m_old->accessList.empty())
            security.lpSecurityDescriptor = m_old->accessList.data();
        // The sharing lets this process write the named streams, and remove the file while its handle is open.
        return FileHandle(CreateFileW(
            m_path.c_str(), GENERIC_WRITE | DELETE, FullSharing, &security, CREATE_NEW, attributes, nullptr));
    }

    // Both names have the form that ToNativeName returns.
    const std::wstring m_target;
    std::wstring m_path;
    std::optional<Properties> m_old;  // nothing if the target does not exist

    FileHandle m_file;
    bool m_isRenamed = false;
};

}  // namespace

TemporaryFile::Target TemporaryFile::FindTarget(const VString& name)
{
    std::wstring path = ToNativeName(name);
    if (IsDeviceName(path))
        return {std::move(path), TargetKind::Other};
    if (HasAttribute(path, FILE_ATTRIBUTE_REPARSE_POINT))
        path = ResolveLinks(path);
    if (HasAttribute(path, FILE_ATTRIBUTE_DIRECTORY) || path.back() == L'\\')
        return {std::move(path), TargetKind::Folder};
    // A named stream of a file cannot be replaced.
    if (path.find(L':', path.rfind(L'\\')) != std::wstring::npos)
        ThrowSystemError(ERROR_INVALID_NAME);
    return {std::move(path), TargetKind::FileOrNone};
}

std::unique_ptr<TemporaryFile> TemporaryFile::CreateFor(const std::filesystem::path& target)
{
    return std::make_unique<WindowsTemporaryFile>(target.native());
}

// The system deletes a marked file when the process ends (see SetDeleteOnClose). A file is not marked while it is
// created or renamed, so this function waits for that.
void TemporaryFile::RemoveAll() noexcept
{
    KeptFileLock::Stop();
}
