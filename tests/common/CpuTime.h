// The CPU time of the process.
#pragma once

namespace testsupport {

// Returns the seconds of CPU time that all threads of the process have used. std::clock is no substitute: on Windows,
// it returns the elapsed time. The result may grow in steps of 16 ms there.
double CpuSeconds();

}  // namespace testsupport
