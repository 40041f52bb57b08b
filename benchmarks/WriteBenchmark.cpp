// Tasks: write a tree as text and into a file.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <xercesc/sax/SAXParseException.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

// True if the written text is well-formed and parses to the same tree.
bool ReadsBack(const std::string& text, const Digest& digest, const std::string& original)
{
    try {
        return IsSameTree(MakeXercesSaxPeer()->Parse(text)->GetDigest(), digest, original);
    } catch (const xercesc::SAXParseException&) {
        return false;
    }
}

// A file in memory, if the system has such a folder, because a disk takes much longer than the libraries.
std::string TargetFile()
{
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    const auto folder =
        std::filesystem::is_directory(memory, error) ? memory : std::filesystem::temp_directory_path(error);
    return (folder / "vancorexml-benchmark.xml").string();
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// Registers `write` twice: as `task`, which reuses the memory of the last iteration, and as `task`-cold, which first
// gives all free memory of the heap back to the system, as if the process had just begun.
void RegisterWarmAndCold(const std::string& task, const std::string& name, const std::function<void()>& write)
{
    benchmark::RegisterBenchmark((task + name).c_str(), [write](benchmark::State& state) {
        for (auto _ : state)
            write();
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((task + "-cold" + name).c_str(), [write](benchmark::State& state) {
        for (auto _ : state) {
            state.PauseTiming();
            malloc_trim(0);
            state.ResumeTiming();
            write();
        }
    })->Unit(benchmark::kMillisecond);
}

void RegisterSave(const std::string& name, const std::shared_ptr<PeerDocument>& document, const std::string& text)
{
    const std::string path = TargetFile();
    if (!document->Save(path))
        return;
    Require(ReadFile(path) == text, "a saved file is the written text: " + name);
    std::filesystem::remove(path);
    benchmark::RegisterBenchmark(("save" + name).c_str(), [document, path](benchmark::State& state) {
        for (auto _ : state)
            document->Save(path);
        std::filesystem::remove(path);
    })->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterWriteTasks(const Peers& peers)
{
    for (const CorpusFile& file : LargeDocuments()) {
        for (const auto& peer : peers) {
            std::shared_ptr<PeerDocument> document = peer->Parse(file.bytes);
            const std::string text = document->Write();
            if (text.empty())
                continue;
            if (!ReadsBack(text, document->GetDigest(), file.bytes)) {
                Require(peer->Name() != "vancorexml", "what the library writes reads back: " + file.name);
                std::fprintf(stderr,
                    "not timed: what %s writes of %s does not read back\n",
                    peer->Name().c_str(),
                    file.name.c_str());
                continue;
            }
            const std::string name = "/" + file.name + "/" + peer->Name();
            RegisterWarmAndCold("write", name, [document] { benchmark::DoNotOptimize(document->Write()); });
            if (std::string converted; document->WriteUtf16(&converted) != 0) {
                Require(converted == text, "the UTF-16 text is the UTF-8 text: " + name);
                RegisterWarmAndCold(
                    "write-utf16", name, [document] { benchmark::DoNotOptimize(document->WriteUtf16(nullptr)); });
            }
            RegisterSave(name, document, text);
        }
    }
}
