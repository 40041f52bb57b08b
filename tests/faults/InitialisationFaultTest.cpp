// Initialises Xerces while allocations fail. Each fault needs a new process, because a process can initialise Xerces
// only once. So the test needs fork, which Windows lacks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/FailedAllocations.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

enum Outcome { NoFault, Repeated, Refused, OtherOutcome };

bool CanParse()
{
    return !DOMParser().ParseXmlString("<a/>", "id")->HasErrors();
}

Outcome Initialise(const FaultMode& mode, long number)
{
    AllocationFaults::Begin(mode.kind, number, mode.forever);
    try {
        const XercesInitializer initializer;
        const bool hasFailed = AllocationFaults::End();
        if (!CanParse())
            return OtherOutcome;
        return hasFailed ? Repeated : NoFault;
    } catch (const std::bad_alloc&) {
        AllocationFaults::End();
    } catch (...) {
        return OtherOutcome;
    }
    try {
        return CanParse() ? Repeated : OtherOutcome;
    } catch (const std::bad_alloc&) {
        return Refused;
    }
}

Outcome InitialiseInAnotherProcess(const FaultMode& mode, long number)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(Initialise(mode, number));
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : OtherOutcome;
}

class InitialisationFaultTest : public FaultTest {};

TEST_P(InitialisationFaultTest, FaultsDoNotEndTheProcess)
{
    int refused = 0;
    int repeated = 0;
    for (long number = 0;; number = NextNumber(number)) {
        const Outcome outcome = InitialiseInAnotherProcess(GetParam(), number);
        ASSERT_NE(outcome, OtherOutcome) << "after " << number << " allocations";
        refused += outcome == Refused;
        repeated += outcome == Repeated;
        if (outcome == NoFault)
            break;
    }
    EXPECT_GT(repeated, 0);
    // Xerces allocates two blocks by the global operator new, and ICU one converter by malloc.
    if (!GetParam().forever) {
        EXPECT_LE(refused, 3);
    }
}

INSTANTIATE_FAULT_TEST(InitialisationFaultTest);

}  // namespace
