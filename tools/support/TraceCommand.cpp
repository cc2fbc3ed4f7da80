#include "tools/support/TraceCommand.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>

#include "tools/command/Text.h"
#include "tools/diagnosis/TraceSummary.h"

namespace tarn_host
{

void TraceCommand::AddOptions(CLI::App &app)
{
    app.add_option(
           "file", file,
           "text log of TARN_TRACE (FILE.old is read before it), or a recorded trace turned into text or XML by "
           "tracerpt, netsh or pktmon")
        ->required()
        ->type_name("FILE");
}

ExitCode TraceCommand::Run()
{
    TraceSummary told;
    if (std::ifstream older(ToPath(file + ".old"), std::ios::binary); older)
    {
        told.Read(older);
    }
    std::ifstream newest(ToPath(file), std::ios::binary);
    if (!newest)
    {
        throw UsageError("cannot read " + file);
    }
    told.Read(newest);
    if (told.Records() == 0)
    {
        throw UsageError(file + " has no record of the module: is it converted, were the provider's level and flags "
                                "set? (a log at level 2 of a healthy session is empty)");
    }
    return told.Write(std::cout) ? ExitCode::Success : ExitCode::Failure;
}

} // namespace tarn_host
