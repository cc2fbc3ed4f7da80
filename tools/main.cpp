// tarn-host: plays the frame server for the Tarn device transforms.

#include <fcntl.h>
#include <io.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tools/command/CommandLine.h"
#include "tools/runs/DemoCommand.h"
#include "tools/command/Interruption.h"
#include "tools/events/EventsCommand.h"
#include "tools/ks/KsCommand.h"
#include "tools/nodes/NodeCommand.h"
#include "tools/replay/ReplayCommand.h"
#include "tools/runs/StreamCommand.h"
#include "tools/support/CheckInstallCommand.h"
#include "tools/support/TraceCommand.h"
#include "base/WideString.h"

namespace
{

tarn_host::ExitCode Run(int argumentCount, wchar_t **arguments)
{
    std::vector<std::string> texts;
    for (int i = 1; i < argumentCount; ++i)
    {
        texts.push_back(mft_utils::Narrow(arguments[i]));
    }
    std::vector<std::unique_ptr<tarn_host::Command>> commands;
    commands.push_back(std::make_unique<tarn_host::StreamCommand>());
    commands.push_back(std::make_unique<tarn_host::DemoCommand>());
    commands.push_back(std::make_unique<tarn_host::KsCommand>());
    commands.push_back(std::make_unique<tarn_host::NodeCommand>());
    commands.push_back(std::make_unique<tarn_host::EventsCommand>());
    commands.push_back(std::make_unique<tarn_host::TraceCommand>());
    commands.push_back(std::make_unique<tarn_host::ReplayCommand>());
    commands.push_back(std::make_unique<tarn_host::CheckInstallCommand>());
    return tarn_host::CommandLine(std::move(commands)).Run(std::move(texts), std::cout, std::cerr);
}

} // namespace

int wmain(int argumentCount, wchar_t **arguments)
{
    // What scripts read must not be given carriage returns.
    _setmode(_fileno(stdout), _O_BINARY);
    tarn_host::Interruption::Install();
    tarn_host::EndProcess(Run(argumentCount, arguments));
}
