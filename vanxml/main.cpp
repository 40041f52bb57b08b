// vanxml: checks, formats and queries XML documents from the command line.
#include <cstdio>

#include "vancoreplatform/VString.h"
#include "vanxml/CommandLine.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"

namespace {

// Reports the current exception.
ExitStatus Report() noexcept
{
    try {
        const FailureReport report = ReportException(VString());
        StandardStreams::WriteError(report.lines);
        return report.status;
    } catch (...) {
        // Even the report needs more memory than there is. This stream has no buffer, so it needs none.
        std::fputs("vanxml: out of memory\n", stderr);
        return ExitStatus::Failed;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    ExitStatus status = ExitStatus::Failed;
    try {
        StandardStreams::Prepare();
        OperatingSystem::RemoveTemporaryFilesOnSignals();
        status = RunCommandLine(OperatingSystem::Arguments(argc, argv));
        StandardStreams::FlushOutput();
    } catch (...) {
        status = Report();
    }
    return static_cast<int>(status);
}
