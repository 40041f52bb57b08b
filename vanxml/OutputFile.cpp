#include "vanxml/OutputFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include "vanxml/ToolError.h"

namespace {

[[noreturn]] void ThrowWriteError(const VString& name, const QString& reason)
{
    throw ToolError(("Cannot write \"" + name + "\": " + VString(reason)).toStdString());
}

// Qt takes a name that begins with a colon for one of its resources.
QString NativeName(const VString& name)
{
    return (name.startsWith(":") ? "./" + name : name).ToQString();
}

bool WriteAll(QIODevice& file, std::string_view bytes)
{
    return file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

bool IsDeviceOrPipe(const VString& name)
{
    const QFileInfo target(NativeName(name));
    return target.exists() && !target.isFile() && !target.isDir();
}

}  // namespace

void ReplaceFile(const VString& name, std::string_view bytes)
{
    if (IsDeviceOrPipe(name)) ThrowWriteError(name, QStringLiteral("it is not a regular file"));
    QSaveFile file(NativeName(name));
    if (!file.open(QIODevice::WriteOnly) || !WriteAll(file, bytes) || !file.commit()) ThrowWriteError(name, file.errorString());
}

void WriteOutputFile(const VString& name, std::string_view bytes)
{
    if (!IsDeviceOrPipe(name)) {
        ReplaceFile(name, bytes);
        return;
    }
    QFile file(NativeName(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !WriteAll(file, bytes)) ThrowWriteError(name, file.errorString());
}
