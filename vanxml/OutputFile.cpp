#include "vanxml/OutputFile.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "vancoreplatform/FileReplacement.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace fs = std::filesystem;

namespace {

bool IsDeviceOrPipe(const fs::path& file)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

void WriteDevice(const VString& name, const fs::path& device, std::string_view bytes)
{
    errno = 0;
    std::ofstream stream(device, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        const std::string reason = std::generic_category().message(errno != 0 ? errno : EIO);
        throw ToolError("Cannot write \"" + name.toStdString() + "\": " + reason);
    }
}

}  // namespace

std::size_t ReplaceFile(const VString& name, std::string_view bytes)
{
    FileReplacement file{VPath(name)};
    file.Write(bytes);
    file.Commit();
    return file.OtherNames();
}

std::size_t WriteOutputFile(const VString& name, std::string_view bytes)
{
    const fs::path file(name.View());
    if (OperatingSystem::IsStandardOutput(file))
        StandardStreams::Write(bytes);
    else if (IsDeviceOrPipe(file))
        WriteDevice(name, file, bytes);
    else
        return ReplaceFile(name, bytes);
    return 0;
}

std::string FormatOtherNamesWarning(const VString& name, std::size_t otherNames)
{
    if (otherNames == 0)
        return std::string();
    const std::string names = otherNames == 1 ? "Another name" : std::to_string(otherNames) + " other names";
    const std::string keep = otherNames == 1 ? " keeps" : " keep";
    return FormatErrorLine(
        names + " of the file \"" + name.toStdString() + "\"" + keep + " the old content (hard links)");
}
