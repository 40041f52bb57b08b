#include "benchmarks/Corpus.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

CorpusFile Load(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "missing corpus file %s: run scripts/bench, which installs it\n", path.c_str());
        std::exit(2);
    }
    return {
        std::filesystem::path(path).filename().string(), path, std::string(std::istreambuf_iterator<char>(file), {})};
}

}  // namespace

const std::vector<CorpusFile>& LargeDocuments()
{
    static const std::vector<CorpusFile> files = {
        Load("/usr/share/xml/scap/ssg/content/ssg-debian11-ds.xml"),
        Load("/usr/share/mime/packages/freedesktop.org.xml"),
        Load("/usr/share/vulkan/registry/vk.xml"),
    };
    return files;
}

const std::vector<CorpusFile>& SmallDocuments()
{
    static const std::vector<CorpusFile> files = [] {
        std::vector<std::string> paths;
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/unicode/cldr", error)) {
            if (entry.path().extension() == ".xml")
                paths.push_back(entry.path().string());
        }
        std::sort(paths.begin(), paths.end());
        if (paths.size() < 2000) {
            std::fprintf(stderr,
                "only %zu documents of unicode-cldr-core: run scripts/bench, which installs it\n",
                paths.size());
            std::exit(2);
        }
        paths.resize(2000);
        std::vector<CorpusFile> loaded;
        loaded.reserve(paths.size());
        for (const std::string& path : paths)
            loaded.push_back(Load(path));
        return loaded;
    }();
    return files;
}

std::string MakeDocument(std::size_t bytes)
{
    std::string text = "<?xml version='1.0' encoding='utf-8' ?>\n<records>\n";
    text.reserve(bytes + 256);
    for (std::size_t i = 0; text.size() < bytes; ++i) {
        const std::string id = std::to_string(i);
        text += "  <record id='" + id + "' kind='" + (i % 3 ? "plain" : "special") + "'>\n    <name>Record " + id +
            "</name>\n    <value unit='mm'>" + std::to_string(i * 7919 % 10007) + "</value>\n  </record>\n";
    }
    return text + "</records>\n";
}
