// "tarn-host trace FILE": what a trace or log of the module says, for a person.
#pragma once

#include <string>

#include "tools/command/Command.h"

namespace tarn_host
{

// Confined.
class TraceCommand final : public Command
{
  public:
    TraceCommand()
        : Command("trace",
                  "say what a trace or log of the module tells: what went wrong first, rates, drops, failed calls")
    {
    }
    void AddOptions(CLI::App &app) override;
    // ExitCode::Failure when something is wrong with a session.
    ExitCode Run() override;

  private:
    std::string file;
};

} // namespace tarn_host
