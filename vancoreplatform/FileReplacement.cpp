#include "vancoreplatform/FileReplacement.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "vancoreplatform/TemporaryFile.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

namespace fs = std::filesystem;

namespace {

VIO::Exception WriteError(const VString& name, const VString& reason)
{
    return VIO::Exception(VFormatString("Cannot write \"%1\": %2").arg(name).arg(reason));
}

[[noreturn]] void ThrowError(std::errc error)
{
    throw std::system_error(std::make_error_code(error));
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

// Follows symbolic links. Returns the path of the file that Commit replaces or creates.
fs::path FindTarget(const VString& name)
{
    if (name.contains(u'\0'))
        throw WriteError(name, "the file name contains a NUL");
    fs::path file = ResolveLinks(fs::path(name.View()));
    if (file.empty())
        ThrowError(std::errc::no_such_file_or_directory);
    const fs::file_status status = fs::status(file);
    if (fs::is_directory(status) || !file.has_filename())
        ThrowError(std::errc::is_a_directory);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw WriteError(name, "it is not a regular file");
    return file;
}

}  // namespace

FileReplacement::FileReplacement(const VPath& target) : m_name(target.String())
{
    Run([this] {
        m_file = TemporaryFile::CreateFor(FindTarget(m_name));
        m_otherNames = m_file->OtherNames();
    });
}

FileReplacement::~FileReplacement() = default;

void FileReplacement::Write(std::string_view bytes)
{
    Run([&] { m_file->Write(bytes); });
}

void FileReplacement::Commit()
{
    // Make this exception first, because no step may fail after the file is replaced.
    std::exception_ptr furtherCalls;
    Run([&] {
        furtherCalls = std::make_exception_ptr(WriteError(m_name, "it is already replaced"));
        m_file->ReplaceTarget();
    });
    m_file.reset();
    m_failure = std::move(furtherCalls);
}

void FileReplacement::RemoveTemporaryFiles() noexcept
{
    TemporaryFile::RemoveAll();
}

template <typename Step>
void FileReplacement::Run(const Step& step)
{
    if (m_failure)
        std::rethrow_exception(m_failure);
    try {
        try {
            step();
        } catch (const std::system_error& error) {
            throw WriteError(m_name, VString(error.code().message().c_str()));
        }
    } catch (...) {
        m_failure = std::current_exception();
        m_file.reset();
        throw;
    }
}
