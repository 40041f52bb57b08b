#include "vancoreplatform/FileReplacement.h"

#include <system_error>
#include <utility>

#include "vancoreplatform/SystemError.h"
#include "vancoreplatform/TemporaryFile.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

namespace {

VIO::Exception WriteError(const VString& name, const VString& reason)
{
    return VIO::Exception(VFormatString("Cannot write \"%1\": %2").arg(name).arg(reason));
}

// Returns the file that Commit replaces or creates.
TemporaryFile::Target FindTarget(const VString& name)
{
    if (name.contains(u'\0'))
        throw WriteError(name, "the file name contains a NUL");
    if (name.IsEmpty())
        throw std::system_error(std::make_error_code(std::errc::no_such_file_or_directory));
    TemporaryFile::Target target = TemporaryFile::FindTarget(name);
    if (target.kind == TemporaryFile::TargetKind::Folder)
        throw std::system_error(std::make_error_code(std::errc::is_a_directory));
    if (target.kind == TemporaryFile::TargetKind::Other)
        throw WriteError(name, "it is not a regular file");
    return target;
}

}  // namespace

FileReplacement::FileReplacement(const VPath& target) : m_name(target.String())
{
    Run([this] {
        m_file = TemporaryFile::CreateFor(FindTarget(m_name).path);
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
            throw WriteError(m_name, GetSystemReason(error.code()));
        }
    } catch (...) {
        m_failure = std::current_exception();
        m_file.reset();
        throw;
    }
}
