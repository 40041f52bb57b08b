#include "vanxml/OutputFile.h"

#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;
using OperatingSystem::OutputHandle;

namespace {

[[noreturn]] void ThrowWriteError(const VString& name, const std::string& reason)
{
    throw ToolError("Cannot write \"" + name.toStdString() + "\": " + reason);
}

[[noreturn]] void ThrowError(std::errc error)
{
    throw std::system_error(std::make_error_code(error));
}

bool IsDeviceOrPipe(const fs::path& file)
{
    const fs::file_status status = fs::status(file);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

// Follows symbolic links, the last of which may lead to a file that does not exist.
fs::path ResolveLinks(fs::path file)
{
    constexpr int mostLinks = 40;  // the limit of Linux
    for (int links = 0; fs::is_symlink(fs::symlink_status(file)); ++links) {
        if (links == mostLinks)
            ThrowError(std::errc::too_many_symbolic_link_levels);
        file = file.parent_path() / fs::read_symlink(file);
    }
    return file;
}

// Returns a short name that does not depend on the name of the file, so that it never exceeds a limit of the file
// system.
std::string RandomName()
{
    static constexpr char digits[] = "0123456789abcdef";
    std::random_device random;
    std::string name = ".vanxml-";
    for (int i = 0; i < 12; ++i)
        name += digits[random() % 16];
    return name;
}

// A scope guard that removes a file unless the file was renamed.
class TemporaryName {
public:
    explicit TemporaryName(fs::path name) noexcept : m_name(std::move(name)) {}
    ~TemporaryName()
    {
        std::error_code ignored;
        if (!m_name.empty())
            fs::remove(m_name, ignored);
    }
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    void RenameTo(const fs::path& file)
    {
        fs::rename(m_name, file);
        m_name.clear();
    }

private:
    fs::path m_name;
};

std::pair<OutputHandle, fs::path> CreateTemporaryFile(const fs::path& folder, OutputHandle::Access access)
{
    constexpr int mostTries = 100;  // a second try is rare: there are 2^48 names
    for (int tries = 1;; ++tries) {
        fs::path name = folder / RandomName();
        try {
            return {OutputHandle::Create(name, access), std::move(name)};
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::file_exists || tries == mostTries)
                throw;
        }
    }
}

// Sets the permissions unless the file already has them: some file systems have the same permissions for all files
// and refuse to change them.
void SetPermissions(const fs::path& file, fs::perms permissions)
{
    if (fs::status(file).permissions() != permissions)
        fs::permissions(file, permissions);
}

void ReplaceRegularFile(const fs::path& file, std::string_view bytes)
{
    if (file.empty())
        ThrowError(std::errc::no_such_file_or_directory);
    const fs::file_status old = fs::status(file);
    const bool isNew = !fs::exists(old);
    if (fs::is_directory(old) || !file.has_filename())
        ThrowError(std::errc::is_a_directory);
    if (!isNew)
        OperatingSystem::RequireWritable(file);

    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    // Nobody else may read a private document while it is being written.
    const auto access = isNew ? OutputHandle::Access::Everybody : OutputHandle::Access::Owner;
    auto [handle, name] = CreateTemporaryFile(folder, access);
    TemporaryName temporary(name);
    if (!isNew)
        SetPermissions(name, (old.permissions() & fs::perms::all) | fs::perms::owner_write);
    handle.Write(bytes);
    // Flush before the old file is replaced: some file systems report a full disk only here.
    handle.Flush();
    handle.Close();
    temporary.RenameTo(file);
    OperatingSystem::FlushFolder(folder);
}

void WriteDevice(const fs::path& device, std::string_view bytes)
{
    OutputHandle handle = OutputHandle::Open(device);
    handle.Write(bytes);
    handle.Close();
}

// Calls `write` with the path and converts errors of the system to ToolError.
template <typename Write>
void WriteTo(const VString& name, const Write& write)
{
    try {
        write(fs::path(name.View()));
    } catch (const std::system_error& error) {
        ThrowWriteError(name, error.code().message());
    }
}

}  // namespace

void ReplaceFile(const VString& name, std::string_view bytes)
{
    WriteTo(name, [&](const fs::path& file) {
        if (IsDeviceOrPipe(file))
            ThrowWriteError(name, "it is not a regular file");
        ReplaceRegularFile(ResolveLinks(file), bytes);
    });
}

void WriteOutputFile(const VString& name, std::string_view bytes)
{
    WriteTo(name, [&](const fs::path& file) {
        if (OperatingSystem::IsStandardOutput(file))
            StandardStreams::Write(bytes);
        else if (IsDeviceOrPipe(file))
            WriteDevice(file, bytes);
        else
            ReplaceRegularFile(ResolveLinks(file), bytes);
    });
}
