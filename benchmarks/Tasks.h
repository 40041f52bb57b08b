// The tasks: each checks its peers' answers against a reference, then registers what is
// timed. Names are task/document/peer, which the report reads.
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
// Of that library, or of all when it is empty.
void RegisterValidationTasks(const std::string& only);
void RegisterSanitizerTasks();
void RegisterDiagnosticsTasks();
void RegisterRenameTasks();
void RegisterScalingTasks();
// Measures no time: bytes of heap that each peer holds for a document.
void RegisterHeapTasks(const Peers& peers);

// Ends the program when an answer is wrong: what is wrong is never fast.
void Require(bool right, const std::string& what);
