#include "vancorexml/main/parser/InputSourceUtils.h"

#include "art-cpp/Activity.h"
#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

std::unique_ptr<InputSource> InputSourceUtils::InputSourceFromFileName(
    const VString& fileName, bool skipLeadingWhitespace)
{
    constexpr unsigned long long DecodedSizeLimit = 0x40000000;
    art::Activity activity("InputSourceFromFileName");
    if (GetFileSize(VPath(fileName)) >= DecodedSizeLimit)
        return std::make_unique<FileInputSource>(fileName);
    return StringInputSource::FromUtf8(VFile::LoadTextFileAsUtf8(fileName, true), fileName, skipLeadingWhitespace);
}
