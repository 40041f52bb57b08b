#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "benchmarks/Tasks.h"

void Require(bool right, const std::string& what)
{
    if (right) return;
    std::fprintf(stderr, "wrong answer: %s\n", what.c_str());
    std::exit(1);
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    const Peers peers = MakePeers();
    RegisterParseTasks(peers);
    RegisterSmallDocumentTasks(peers);
    RegisterWriteTasks(peers);
    RegisterPathTasks(peers);
    RegisterCopyTasks(peers);
    RegisterHeapTasks(peers);
    RegisterValidationTasks();
    RegisterSanitizerTasks();
    RegisterDiagnosticsTasks();
    RegisterRenameTasks();
    RegisterScalingTasks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
