// The tasks. Each task compares the answers of all peers with a reference and then registers its benchmarks. The names
// have the form task/document/peer, which scripts/bench-report.py reads.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/peers/Peer.h"

using Peers = std::vector<std::unique_ptr<Peer>>;

void RegisterParseTasks(const Peers& peers);
void RegisterSmallDocumentTasks(const Peers& peers);
void RegisterWriteTasks(const Peers& peers);
void RegisterPathTasks(const Peers& peers);
void RegisterCopyTasks(const Peers& peers);
// Registers the tasks of the library `only`, or of all libraries if `only` is empty.
void RegisterValidationTasks(const std::string& only);
void RegisterChildrenTasks();
void RegisterLightweightTasks();
void RegisterSanitizerTasks();
void RegisterDiagnosticsTasks();
void RegisterRenameTasks();
void RegisterScalingTasks();
// Need two cores.
void RegisterThreadTasks();
// Measures heap bytes per document instead of time.
void RegisterHeapTasks(const Peers& peers);

// Ends the program with a message about `what` if an answer is wrong, so that a wrong answer is never timed.
void Require(bool right, const std::string& what);
