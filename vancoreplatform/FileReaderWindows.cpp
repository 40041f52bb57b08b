#include <algorithm>
#include <cstdint>

#include "vancoreplatform/FileReader.h"
#include "vancoreplatform/WindowsFiles.h"

namespace {

[[noreturn]] void ThrowFolder()
{
    throw std::system_error(std::make_error_code(std::errc::is_a_directory));
}

class WindowsFileReader final : public FileReader {
public:
    WindowsFileReader(const std::wstring& name, DWORD access)
        : m_file(OpenShared(name, access)),
          m_isPipe(GetFileType(m_file.Get()) != FILE_TYPE_DISK)
    {
        if (m_isPipe)
            return;
        BY_HANDLE_FILE_INFORMATION information;
        CheckCall(GetFileInformationByHandle(m_file.Get(), &information));
        if ((information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            ThrowFolder();
    }

    std::size_t Read(char* buffer, std::size_t count) override
    {
        constexpr std::size_t most = 1u << 30;
        DWORD done = 0;
        if (ReadFile(m_file.Get(), buffer, static_cast<DWORD>(std::min(count, most)), &done, nullptr))
            return done;
        // The end of a pipe is an error of the system.
        const DWORD error = GetLastError();
        if (error != ERROR_BROKEN_PIPE && error != ERROR_HANDLE_EOF)
            ThrowSystemError(error);
        return 0;
    }

    void Seek(unsigned long long offset) override
    {
        LARGE_INTEGER distance;
        distance.QuadPart = static_cast<LONGLONG>(offset);
        CheckCall(SetFilePointerEx(m_file.Get(), distance, nullptr, FILE_BEGIN));
    }

    unsigned long long Size() const override
    {
        LARGE_INTEGER size{};
        if (!m_isPipe)
            CheckCall(GetFileSizeEx(m_file.Get(), &size));
        return static_cast<unsigned long long>(size.QuadPart);
    }

private:
    FileHandle m_file;
    bool m_isPipe;  // or a device
};

}  // namespace

std::unique_ptr<FileReader> FileReader::Open(const VString& name)
{
    return std::make_unique<WindowsFileReader>(ToNativeName(name), DWORD{GENERIC_READ});
}

unsigned long long FileReader::SizeOf(const VString& name)
{
    const std::wstring nativeName = ToNativeName(name);
    WIN32_FILE_ATTRIBUTE_DATA data;
    const bool isKnown = !IsDeviceName(nativeName) &&
        GetFileAttributesExW(nativeName.c_str(), GetFileExInfoStandard, &data) &&
        (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
    // Links are opened, because their own size says nothing. Opening also throws the right reason.
    if (!isKnown)
        return WindowsFileReader(nativeName, FILE_READ_ATTRIBUTES).Size();
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        ThrowFolder();
    return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}
