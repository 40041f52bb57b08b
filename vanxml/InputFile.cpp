#include "vanxml/InputFile.h"

#include <vector>

#include "vancoreplatform/VFile.h"
#include "vanxml/StandardStreams.h"

std::string ReadInputFile(const VString& name)
{
    if (name == "-")
        return StandardStreams::ReadInput();
    VFile file{VPath(name)};
    file.OpenForReading();
    std::string bytes;
    bytes.reserve(file.Size());  // 0 for pipes, which are read to their end too
    std::vector<char> chunk(1 << 20);
    while (const std::size_t count = file.Read(chunk.data(), chunk.size()))
        bytes.append(chunk.data(), count);
    return bytes;
}
