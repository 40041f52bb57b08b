#include "vanxml/OutputFile.h"

#include <filesystem>
#include <optional>
#include <system_error>

#include "art-cpp/Activity.h"
#include "vancoreplatform/FileReplacement.h"
#include "vancoreplatform/SystemError.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/InputFile.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t blockSize = 65536;

bool IsDeviceOrPipe(const fs::path& file)
{
    switch (OperatingSystem::TypeOf(file)) {
    case fs::file_type::none:
    case fs::file_type::not_found:
    case fs::file_type::regular:
    case fs::file_type::directory: return false;
    default: return true;
    }
}

[[noreturn]] void ThrowWriteError(const VString& name, const std::error_code& error)
{
    throw ToolError("Cannot write \"" + name.toStdString() + "\": " + GetSystemReason(error).toStdString());
}

void WriteStream(const VString& name, OperatingSystem::Stream stream, std::string_view bytes)
{
    if (stream == OperatingSystem::Stream::Output)
        StandardStreams::Write(bytes);
    else if (const std::error_code error = OperatingSystem::Write(stream, bytes))
        ThrowWriteError(name, error);
}

void WriteDevice(const VString& name, const fs::path& device, std::string_view bytes)
{
    try {
        OperatingSystem::WriteDevice(device, bytes);
    } catch (const std::system_error& error) {
        ThrowWriteError(name, error.code());
    }
}

// The stream that the name of an output file means.
std::optional<OperatingSystem::Stream> FindStreamOf(const VString& name)
{
    if (name == "-")
        return OperatingSystem::Stream::Output;
    return OperatingSystem::FindStream(fs::path(name.View()));
}

// Replaces the file if it exists.
std::size_t WriteWholeFile(const VString& name, std::string_view bytes)
{
    FileReplacement file{VPath(name)};
    file.Write(bytes);
    file.Commit();
    return file.OtherNames();
}

}  // namespace

std::size_t ReplaceFile(const VString& name, std::string_view before, std::string_view after)
{
    art::Activity activity("vanxml.write");
    activity.Tag("file", name);
    FileReplacement file{VPath(name)};
    file.Write(after);
    if (!HasBytes(name, before))
        throw ToolError("Cannot write \"" + name.toStdString() + "\": another program has changed it meanwhile");
    file.Commit();
    return file.OtherNames();
}

std::size_t WriteOutputFile(const VString& name, std::string_view bytes)
{
    const fs::path file(name.View());
    if (const std::optional<OperatingSystem::Stream> stream = OperatingSystem::FindStream(file))
        WriteStream(name, *stream, bytes);
    else if (IsDeviceOrPipe(file))
        WriteDevice(name, file, bytes);
    else
        return WriteWholeFile(name, bytes);
    return 0;
}

StreamedOutputFile::StreamedOutputFile(const VString& name)
    : m_name(name),
      m_isDevice(!FindStreamOf(name) && IsDeviceOrPipe(fs::path(name.View())))
{
    if (!m_isDevice && !FindStreamOf(name))
        m_file = std::make_unique<FileReplacement>(VPath(name));
}

bool StreamedOutputFile::IsStandardOutput() const
{
    return FindStreamOf(m_name) == OperatingSystem::Stream::Output;
}

void StreamedOutputFile::Write(std::string_view bytes)
{
    if (const std::optional<OperatingSystem::Stream> stream = FindStreamOf(m_name)) {
        WriteStream(m_name, *stream, bytes);
        return;
    }
    m_waiting += bytes;
    if (m_file && m_waiting.size() >= blockSize) {
        m_file->Write(m_waiting);
        m_waiting.clear();
    }
}

std::size_t StreamedOutputFile::Finish()
{
    if (m_isDevice)
        WriteDevice(m_name, fs::path(m_name.View()), m_waiting);
    if (!m_file)
        return 0;
    m_file->Write(m_waiting);
    m_file->Commit();
    return m_file->OtherNames();
}

std::string FormatOtherNamesWarning(const VString& name, std::size_t otherNames)
{
    if (otherNames == 0)
        return std::string();
    const std::string names = otherNames == 1 ? "another name" : std::to_string(otherNames) + " other names";
    const std::string keep = otherNames == 1 ? " keeps" : " keep";
    return FormatErrorLine(
        names + " of the file '" + name.toStdString() + "'" + keep + " the old content (hard links)");
}
