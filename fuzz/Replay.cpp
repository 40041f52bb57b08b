// Runs a fuzzer without a fuzzing engine over the files in its arguments and in the folders there. Passes each file
// unchanged, cut in half, and with one byte changed. Fails if an argument has no file.
//
// The environment variable VANCOREXML_FUZZ_CORPUS names a folder that scripts/fuzz has filled. Then the fuzzer also
// runs over the folder there that has its name, if the fuzzer has kept an input.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/FuzzSupport.h"

namespace {

void Run(const std::string& bytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

// True for the messages that tests expect for a document, and for a document that takes minutes with a sanitizer.
bool IsSkipped(const std::filesystem::path& path)
{
    return path.extension() == ".expected" || path.extension() == ".errors" || path.filename() == "entity-bomb.xml";
}

// Returns false if the file cannot be read.
bool RunFile(const std::filesystem::path& path)
{
    if (IsSkipped(path))
        return true;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::cerr << "cannot read " << path << "\n";
        return false;
    }
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Run(bytes);
    if (bytes.empty())
        return true;
    Run(bytes.substr(0, bytes.size() / 2));
    bytes[bytes.size() / 3] = '<';
    Run(bytes);
    bytes[bytes.size() / 3] = '\xFF';
    Run(bytes);
    return true;
}

// Returns false if the folder has no file, or if a file cannot be read.
bool RunFolder(const std::filesystem::path& folder)
{
    bool hasFile = false;
    bool isRead = true;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        hasFile = true;
        isRead = RunFile(entry.path()) && isRead;
    }
    if (!hasFile)
        std::cerr << "no file in " << folder << "\n";
    return hasFile && isRead;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::filesystem::path> paths(argv + 1, argv + argc);
    if (const char* const corpus = std::getenv("VANCOREXML_FUZZ_CORPUS")) {
        const std::filesystem::path kept = std::filesystem::path(corpus) / FUZZER_NAME;
        if (!std::filesystem::is_directory(corpus)) {
            std::cerr << "VANCOREXML_FUZZ_CORPUS is not a folder: " << corpus << "\n";
            return 1;
        }
        if (std::filesystem::is_directory(kept) && !std::filesystem::is_empty(kept))
            paths.push_back(kept);
        else
            std::cout << "the fuzzer has kept no inputs, so only the seeds run: " << kept << "\n";
    }
    bool isRead = !paths.empty();
    for (const std::filesystem::path& path : paths)
        isRead = (std::filesystem::is_directory(path) ? RunFolder(path) : RunFile(path)) && isRead;
    return isRead ? 0 : 1;
}
