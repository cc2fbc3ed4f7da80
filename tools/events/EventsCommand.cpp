#include "tools/events/EventsCommand.h"

#include <iostream>

namespace tarn_host
{

ExitCode EventsCommand::Run()
{
    try
    {
        return program.Run(std::cout) == 0 ? ExitCode::Success : ExitCode::Failure;
    }
    catch (const EventsInputError &error)
    {
        throw UsageError(error.what());
    }
}

} // namespace tarn_host
