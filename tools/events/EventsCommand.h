// "tarn-host events": what a recorded session holds.
#pragma once

#include "tools/command/Command.h"
#include "tools/events/EventsProgram.h"

namespace tarn_host
{

// Confined.
class EventsCommand final : public Command
{
  public:
    EventsCommand() : Command("events", "read a recorded session: summary, timeline, trace, pictures, comparison") {}
    void AddOptions(CLI::App &app) override
    {
        program.AddOptions(app);
    }
    ExitCode Run() override;

  private:
    EventsProgram program;
};

} // namespace tarn_host
