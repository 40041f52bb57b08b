#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vancoreplatform/FileReader.h"
#include "vancoreplatform/PosixFiles.h"

namespace {

unsigned long long SizeOfFile(const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        ThrowSystemError(EISDIR);
    return static_cast<unsigned long long>(status.st_size);
}

class PosixFileReader final : public FileReader {
public:
    explicit PosixFileReader(const std::filesystem::path& path)
        : m_file(RepeatIfInterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }))
    {}

    std::size_t Read(char* buffer, std::size_t count) override
    {
        const ssize_t done =
            RepeatIfInterrupted([&] { return read(m_file.Get(), buffer, std::min(count, mostBytes)); });
        CheckCall(done >= 0);
        return static_cast<std::size_t>(done);
    }

    void Seek(unsigned long long offset) override
    {
        if (offset > static_cast<unsigned long long>(std::numeric_limits<off_t>::max()))
            ThrowSystemError(EINVAL);
        CheckCall(lseek(m_file.Get(), static_cast<off_t>(offset), SEEK_SET) >= 0);
    }

    unsigned long long Size() const override
    {
        struct stat status;
        CheckCall(fstat(m_file.Get(), &status) == 0);
        return SizeOfFile(status);
    }

private:
    static constexpr std::size_t mostBytes = 1u << 30;  // some systems refuse more than 2 GiB in one call

    FileHandle m_file;
};

}  // namespace

std::unique_ptr<FileReader> FileReader::Open(const VString& name)
{
    auto reader = std::make_unique<PosixFileReader>(std::filesystem::path(name.View()));
    reader->Size();  // throws for a folder
    return reader;
}

unsigned long long FileReader::SizeOf(const VString& name)
{
    const std::filesystem::path path(name.View());
    struct stat status;
    CheckCall(stat(path.c_str(), &status) == 0);
    return SizeOfFile(status);
}
