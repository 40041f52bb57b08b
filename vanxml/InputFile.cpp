#include "vanxml/InputFile.h"

#include <functional>
#include <vector>

#include "art-cpp/Activity.h"
#include "vancoreplatform/VFile.h"
#include "vanxml/StandardStreams.h"

namespace {

// Calls `visit` with each piece of the file, until it returns false.
void ReadPieces(VFile& file, const std::function<bool(std::string_view piece)>& visit)
{
    std::vector<char> chunk(1 << 20);
    while (const std::size_t count = file.Read(chunk.data(), chunk.size())) {
        if (!visit(std::string_view(chunk.data(), count)))
            return;
    }
}

}  // namespace

std::string ReadInputFile(const VString& name)
{
    art::Activity activity("vanxml.read");
    activity.Tag("file", name);
    if (name == "-")
        return StandardStreams::ReadInput();
    VFile file{VPath(name)};
    file.OpenForReading();
    std::string bytes;
    bytes.reserve(file.Size());  // 0 for pipes, which are read to their end too
    ReadPieces(file, [&](std::string_view piece) {
        bytes += piece;
        return true;
    });
    return bytes;
}

bool HasBytes(const VString& name, std::string_view bytes)
{
    VFile file{VPath(name)};
    file.OpenForReading();
    bool isSame = true;
    ReadPieces(file, [&](std::string_view piece) {
        isSame = bytes.starts_with(piece);
        bytes.remove_prefix(isSame ? piece.size() : 0);
        return isSame;
    });
    return isSame && bytes.empty();
}
