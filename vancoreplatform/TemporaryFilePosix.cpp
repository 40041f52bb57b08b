#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#  include <sys/xattr.h>
#endif

#include "vancoreplatform/PosixFiles.h"
#include "vancoreplatform/TemporaryFile.h"

namespace fs = std::filesystem;

namespace {

// Blocks all signals in this thread.
class SignalBlock {
public:
    SignalBlock() noexcept
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    sigset_t m_before;
};

// The table of the named temporary files of this process, which RemoveAll reads in a signal handler. So it consists of
// atomic variables. These rules ensure that no file is left behind:
//  1. A slot is in the state Creating from before its file gets a name until after that. The thread that names the
//     file blocks signals meanwhile, so a handler on any thread can wait for the end of this state.
//  2. No file gets a name after `removing` is set. A thread first enters the state Creating and then reads `removing`.
//     A handler first sets `removing` and then reads the states.
//  3. The folder of a slot is open while its state is not Free.
//  4. A thread that fails because of a handler waits for the end of the process. Otherwise its error could end the
//     process before the handler has removed all files.
enum class SlotState { Free, Creating, Created };

struct Slot {
    std::atomic<SlotState> state{SlotState::Free};
    std::atomic<int> folder{-1};
    std::atomic<std::uint64_t> number{0};
};

Slot slots[1024];
std::atomic<bool> removing{false};

// Returns a slot in the state Creating, or null if all slots are used.
Slot* ClaimSlot(int folder, std::uint64_t number) noexcept
{
    for (Slot& slot : slots) {
        SlotState expected = SlotState::Free;
        if (slot.state.compare_exchange_strong(expected, SlotState::Creating)) {
            slot.folder = folder;
            slot.number = number;
            return &slot;
        }
    }
    return nullptr;
}

constexpr int LongestWait = 1000;  // milliseconds

void WaitOneMillisecond() noexcept
{
    poll(nullptr, 0, 1);
}

// Waits if a handler is removing the files. The limit is for a program whose handler does not end the process.
void WaitForEndOfProcess() noexcept
{
    for (int milliseconds = 0; removing && milliseconds < LongestWait; ++milliseconds)
        WaitOneMillisecond();
}

void SetState(Slot* slot, SlotState state) noexcept
{
    if (slot != nullptr)
        slot->state = state;
}

// Returns `folder` opened for calls that take a folder and a name. These calls also work with paths that are longer
// than the system allows for one call, and after the folder was renamed.
FileHandle OpenFolder(const fs::path& folder)
{
#if defined(O_PATH)
    constexpr int access = O_PATH;  // needs no permission to read the folder
#else
    constexpr int access = O_RDONLY;
#endif
    const char* const name = folder.empty() ? "." : folder.c_str();
    return FileHandle(open(name, access | O_DIRECTORY | O_CLOEXEC));
}

#if defined(__linux__)

// Returns a name by which this process can refer to the open file.
std::string NameOfHandle(const FileHandle& file)
{
    return "/proc/self/fd/" + std::to_string(file.Get());
}

// Creates a file without a name. The system removes such a file when its handle is closed, also when the process is
// killed. Returns nothing if that fails: many network folders have no such files, and the file could not get a name
// later if /proc is missing.
std::optional<FileHandle> CreateUnnamed(int folder, mode_t permissions)
{
    const int handle =
        RepeatIfInterrupted([&] { return openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, permissions); });
    if (handle < 0)
        return std::nullopt;
    FileHandle file(handle);
    const bool canBeNamed = access(NameOfHandle(file).c_str(), F_OK) == 0;
    return canBeNamed ? std::optional(std::move(file)) : std::nullopt;
}

// Returns -1, with the reason in errno, if that fails.
int GiveName(const FileHandle& file, int folder, const char* name)
{
    return linkat(AT_FDCWD, NameOfHandle(file).c_str(), folder, name, AT_SYMLINK_FOLLOW);
}

#else

std::optional<FileHandle> CreateUnnamed(int, mode_t)
{
    return std::nullopt;
}

int GiveName(const FileHandle&, int, const char*)
{
    errno = ENOTSUP;
    return -1;
}

#endif

// Flushes the entries of the folder to the disk. Ignores failures: some file systems cannot flush folders, and some
// folders may not be read. Without the flush, a crash of the machine can restore the old file, but never a partial
// one.
void FlushFolder(int folder) noexcept
{
    const int handle = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    fsync(handle);
    close(handle);
}

bool IsUnsupported(int error) noexcept
{
    return error == ENOTSUP || error == EOPNOTSUPP || error == ENOSYS;
}

bool IsDenied(int error) noexcept
{
    return error == EPERM || error == EACCES;
}

// Returns false if this process may not set the owner and the group. A value of -1 stays.
bool SetOwner(int file, uid_t owner, gid_t group)
{
    if (fchown(file, owner, group) == 0)
        return true;
    // The file system of a container reports EINVAL for users that the container does not know.
    CheckCall(IsDenied(errno) || IsUnsupported(errno) || errno == EINVAL);
    return false;
}

#if defined(__linux__)

constexpr char AccessList[] = "system.posix_acl_access";

// True for attributes that describe the old content or give privileges to it. The kernel removes or recomputes them
// when a file is written.
bool BelongsToContent(const std::string& attribute)
{
    return attribute == "security.capability" || attribute == "security.ima" || attribute == "security.evm";
}

// Calls `read` with a buffer until its size suffices. Returns nothing if the attributes cannot be read.
template <typename Read>
std::optional<std::string> ReadAttributes(const Read& read)
{
    std::string buffer(256, '\0');
    for (;;) {
        const ssize_t length = read(buffer.data(), buffer.size());
        if (length >= 0) {
            buffer.resize(static_cast<std::size_t>(length));
            return buffer;
        }
        if (errno != ERANGE) {
            CheckCall(IsDenied(errno) || IsUnsupported(errno) || errno == ENODATA);
            return std::nullopt;
        }
        buffer.resize(4 * buffer.size());
    }
}

std::optional<std::string> ReadAttribute(int file, const char* name)
{
    return ReadAttributes([&](char* value, std::size_t size) { return fgetxattr(file, name, value, size); });
}

// Removes the access list that the file inherited from its folder, or replaces it by `list`.
void SetAccessList(int file, const std::optional<std::string>& list)
{
    if (list)
        CheckCall(fsetxattr(file, AccessList, list->data(), list->size(), 0) == 0);
    else if (fremovexattr(file, AccessList) != 0)
        CheckCall(IsUnsupported(errno) || errno == ENODATA);
}

// Copies all other attributes that this process may read and set.
void CopyOtherAttributes(int from, int to)
{
    const std::string names = ReadAttributes([&](char* list, std::size_t size) {
        return flistxattr(from, list, size);
    }).value_or(std::string());
    for (std::size_t begin = 0; begin < names.size();) {
        const std::string name = names.c_str() + begin;
        begin += name.size() + 1;
        if (name == AccessList || BelongsToContent(name))
            continue;
        const std::optional<std::string> value = ReadAttribute(from, name.c_str());
        if (value && fsetxattr(to, name.c_str(), value->data(), value->size(), 0) != 0)
            CheckCall(IsDenied(errno) || IsUnsupported(errno));
    }
}

#else

std::optional<std::string> ReadAttribute(int, const char*)
{
    return std::nullopt;
}

constexpr char AccessList[] = "";

void SetAccessList(int, const std::optional<std::string>&) {}

void CopyOtherAttributes(int, int) {}

#endif

// Sets the permissions unless the file already has them. Some file systems, such as FAT, have the same permissions for
// all files and refuse to change them; that is no error unless it would give more permissions.
void SetPermissions(int file, mode_t permissions)
{
    struct stat status;
    CheckCall(fstat(file, &status) == 0);
    if ((status.st_mode & 07777) == permissions || fchmod(file, permissions) == 0)
        return;
    const bool givesMore = (status.st_mode & 0777 & ~permissions) != 0;
    CheckCall((IsDenied(errno) || IsUnsupported(errno)) && !givesMore);
}

// An old file. It stays open, so that its properties can be read even if its path leads to another file by then: the
// process can change its folder, and other processes can rename files and folders.
struct OldFile {
    FileHandle handle;
    struct stat status;
};

// Gives the file the owner, the access list, the other attributes and the permissions of the old file.
void CopyProperties(const OldFile& oldFile, int file)
{
    const struct stat& old = oldFile.status;
    struct stat now;
    CheckCall(fstat(file, &now) == 0);
    const bool hasGroup = now.st_gid == old.st_gid || SetOwner(file, static_cast<uid_t>(-1), old.st_gid);
    const bool hasOwner = now.st_uid == old.st_uid || SetOwner(file, old.st_uid, static_cast<gid_t>(-1));

    mode_t permissions = old.st_mode & 07777;
    std::optional<std::string> accessList = ReadAttribute(oldFile.handle.Get(), AccessList);
    if (!hasOwner)
        permissions &= ~static_cast<mode_t>(S_ISUID);
    if (!hasGroup) {
        // The members of the old group are now among the others, and the members of the new group were among the
        // others. Neither may gain a permission. An access list may deny permissions to members of
        // either, so with a list neither keeps any.
        const mode_t shared = accessList ? 0 : permissions >> 3 & permissions & 07;
        permissions = (permissions & (S_ISUID | S_ISVTX | S_IRWXU)) | shared << 3 | shared;
        accessList.reset();
    }
    SetAccessList(file, accessList);
    CopyOtherAttributes(oldFile.handle.Get(), file);
    // Comes last, because the calls above can clear some permissions.
    SetPermissions(file, permissions);
}

// Follows symbolic links, the last of which may lead to a file that does not exist.
fs::path ResolveLinks(fs::path file)
{
    constexpr int mostLinks = 40;  // the limit of Linux
    for (int links = 0; fs::is_symlink(fs::symlink_status(file)); ++links) {
        if (links == mostLinks)
            ThrowSystemError(ELOOP);
        file = file.parent_path() / fs::read_symlink(file);
    }
    return file;
}

// The file has no name until it replaces the target, if the file system can do that. So a process that is killed leaves
// a file behind only at the moment between its naming and its renaming.
class PosixTemporaryFile final : public TemporaryFile {
public:
    explicit PosixTemporaryFile(const fs::path& target)
        : m_target(target),
          m_folder(OpenFolder(target.parent_path())),
          m_old(OpenTarget()),
          m_file(CreateFile())
    {}

    ~PosixTemporaryFile() override
    {
        if (m_hasName)
            unlinkat(m_folder.Get(), m_name.data(), 0);
        SetState(m_slot, SlotState::Free);
    }

    std::size_t OtherNames() const noexcept override
    {
        return m_old && m_old->status.st_nlink > 1 ? static_cast<std::size_t>(m_old->status.st_nlink - 1) : 0;
    }

    void Write(std::string_view bytes) override
    {
        while (!bytes.empty()) {
            const ssize_t count = RepeatIfInterrupted([&] { return write(m_file.Get(), bytes.data(), bytes.size()); });
            CheckCall(count >= 0);
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    void ReplaceTarget() override
    {
        if (m_old)
            CopyProperties(*m_old, m_file.Get());
        // Flush before the old file is replaced: some file systems report a full disk only here.
        CheckCall(RepeatIfInterrupted([&] { return fsync(m_file.Get()); }) == 0);
        // Network folders report some failures only when the file is closed. They have no files without a name. Such a
        // file stays open, so that it is renamed as soon as it has a name.
        if (m_hasName)
            m_file.Close();
        else
            UseNewName([this](const char* name) { return GiveName(m_file, m_folder.Get(), name); });
        if (renameat(m_folder.Get(), m_name.data(), m_folder.Get(), m_target.filename().c_str()) != 0) {
            const int error = errno;
            WaitForEndOfProcess();
            ThrowSystemError(error);
        }
        m_hasName = false;
        FlushFolder(m_folder.Get());
    }

    static Name NameOf(const Slot& slot) noexcept { return FormatName(slot.number); }

private:
    // Opens the target if it exists. Throws if it may not be written.
    std::optional<OldFile> OpenTarget() const
    {
        const fs::path name = m_target.filename();
        struct stat status;
        if (fstatat(m_folder.Get(), name.c_str(), &status, 0) != 0) {
            CheckCall(errno == ENOENT);
            return std::nullopt;
        }
        // The kernel lets root write every file. A file that nobody may write was protected on purpose, so root must
        // lift the protection first. An access list cannot grant more than the bits of the group.
        const bool isProtected = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
        if (isProtected)
            ThrowSystemError(EACCES);
        CheckCall(faccessat(m_folder.Get(), name.c_str(), W_OK, AT_EACCESS) == 0);
        // A file that may be written but not read is opened for writing.
        const auto openFor = [&](int access) {
            return RepeatIfInterrupted([&] { return openat(m_folder.Get(), name.c_str(), access | O_CLOEXEC); });
        };
        int handle = openFor(O_RDONLY);
        if (handle < 0 && IsDenied(errno))
            handle = openFor(O_WRONLY);
        return OldFile{FileHandle(handle), status};
    }

    FileHandle CreateFile()
    {
        // Nobody else may read a private document while it is being written.
        const mode_t permissions = m_old ? 0600 : 0666;
        if (std::optional<FileHandle> file = CreateUnnamed(m_folder.Get(), permissions))
            return std::move(*file);
        return FileHandle(UseNewName([&](const char* name) {
            constexpr int access = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
            return RepeatIfInterrupted([&] { return openat(m_folder.Get(), name, access, permissions); });
        }));
    }

    // Calls `create`, which creates a file with the name or gives the name to a file, and makes the entry in the table.
    // Returns the result of `create`.
    template <typename Create>
    int UseNewName(const Create& create)
    {
        return CreateWithNewName([&](std::uint64_t number) { return UseName(number, create); });
    }

    template <typename Create>
    int UseName(std::uint64_t number, const Create& create)
    {
        {
            const SignalBlock block;
            Slot* const slot = ClaimSlot(m_folder.Get(), number);
            if (!removing) {
                const Name name = FormatName(number);
                const int result = create(name.data());
                SetState(slot, result >= 0 ? SlotState::Created : SlotState::Free);
                CheckCall(result >= 0);
                m_name = name;
                m_slot = slot;
                m_hasName = true;
                return result;
            }
            SetState(slot, SlotState::Free);
        }
        WaitForEndOfProcess();
        ThrowSystemError(ECANCELED);
    }

    // Fixed after construction.
    fs::path m_target;
    FileHandle m_folder;
    std::optional<OldFile> m_old;  // nothing if the target does not exist

    // Set by UseName, which also runs while m_file is made.
    bool m_hasName = false;
    Name m_name{};
    Slot* m_slot = nullptr;  // null also if the table is full

    FileHandle m_file;
};

}  // namespace

TemporaryFile::Target TemporaryFile::FindTarget(const VString& name)
{
    fs::path file = ResolveLinks(fs::path(name.View()));
    const fs::file_status status = fs::status(file);
    if (fs::is_directory(status) || !file.has_filename())
        return {std::move(file), TargetKind::Folder};
    const bool isFile = !fs::exists(status) || fs::is_regular_file(status);
    return {std::move(file), isFile ? TargetKind::FileOrNone : TargetKind::Other};
}

std::unique_ptr<TemporaryFile> TemporaryFile::CreateFor(const fs::path& target)
{
    return std::make_unique<PosixTemporaryFile>(target);
}

void TemporaryFile::RemoveAll() noexcept
{
    const int error = errno;
    removing = true;
    for (const Slot& slot : slots) {
        // The limit is for network folders that do not answer.
        for (int milliseconds = 0; slot.state == SlotState::Creating && milliseconds < LongestWait; ++milliseconds)
            WaitOneMillisecond();
        if (slot.state == SlotState::Created)
            unlinkat(slot.folder, PosixTemporaryFile::NameOf(slot).data(), 0);
    }
    errno = error;
}
