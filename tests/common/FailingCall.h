// A system call that fails in this program. Compile FailingCalls.cpp into the test.
#pragma once

#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>

struct Fault {
    const char* call;
    int after;  // the number of calls that succeed
    int error;
    int times = 1;
};

inline std::ostream& operator<<(std::ostream& out, const Fault& fault)
{
    return out << fault.call << " fails after " << fault.after << ": " << std::strerror(fault.error);
}

// Makes calls fail while it lives. Make such a call before, which begins a new count of calls.
class Failing {
public:
    explicit Failing(const Fault& fault)
    {
        setenv("FAILING_CALL", fault.call, 1);
        setenv("FAILING_AFTER", std::to_string(fault.after).c_str(), 1);
        setenv("FAILING_ERROR", std::to_string(fault.error).c_str(), 1);
        setenv("FAILING_TIMES", std::to_string(fault.times).c_str(), 1);
    }
    ~Failing() { unsetenv("FAILING_CALL"); }
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;
};
