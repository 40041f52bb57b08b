#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmarks/Tasks.h"

void Require(bool right, const std::string& what)
{
    if (right)
        return;
    std::fprintf(stderr, "wrong answer: %s\n", what.c_str());
    std::exit(1);
}

// Runs the benchmarks.
//   benchmarks [--peer=NAME] [BENCHMARK-OPTIONS...]
// With --peer, the tasks that compare libraries run only that one, so that heap fragmentation by other libraries
// cannot affect its times. The answers of the bare Xerces-C pass are still the reference. Without --peer, these tasks
// run all libraries and compare their answers.
int main(int argc, char** argv)
{
    const std::string first = argc > 1 ? argv[1] : "";
    const std::string peer = first.starts_with("--peer=") ? first.substr(7) : "";
    if (!peer.empty()) {
        std::rotate(argv + 1, argv + 2, argv + argc);
        --argc;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const Peers peers = MakePeers(peer);
    RegisterParseTasks(peers);
    RegisterSmallDocumentTasks(peers);
    RegisterWriteTasks(peers);
    RegisterPathTasks(peers);
    RegisterCopyTasks(peers);
    RegisterChildrenTasks();
    RegisterLightweightTasks();
    RegisterHeapTasks(peers);
    RegisterValidationTasks(peer);
    RegisterSanitizerTasks();
    RegisterDiagnosticsTasks();
    RegisterRenameTasks();
    RegisterScalingTasks();
    RegisterThreadTasks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
