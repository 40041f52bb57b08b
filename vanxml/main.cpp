// vanxml: checks, formats and queries XML documents from the command line.
#include "vancoreplatform/VString.h"
#include "vanxml/CommandLine.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/StandardStreams.h"

int main(int argc, char** argv)
{
    ExitStatus status = ExitStatus::Failed;
    try {
        StandardStreams::Prepare();
        OperatingSystem::RemoveTemporaryFilesOnSignals();
        status = RunCommandLine(OperatingSystem::Arguments(argc, argv));
        StandardStreams::FlushOutput();
    } catch (...) {
        StandardStreams::WriteError(FormatErrorLine(DescribeException(VString())));
        status = ExitStatus::Failed;
    }
    return static_cast<int>(status);
}
