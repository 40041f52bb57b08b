// The CPU time of the process.
#pragma once

namespace testsupport {

// Returns the seconds of CPU time that all threads of the process have used, without the time in the system. On some
// virtual machines, the system takes several seconds for the memory that a sanitizer asks for. On Windows, the result
// may grow in steps of 16 ms.
double CpuSeconds();

}  // namespace testsupport
