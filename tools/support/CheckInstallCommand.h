// "tarn-host check-install --facts FILE": what holds of an installation, and what to do.
#pragma once

#include <string>

#include "tools/command/Command.h"

namespace tarn_host
{

// Confined.
class CheckInstallCommand final : public Command
{
  public:
    CheckInstallCommand()
        : Command("check-install", "judge the facts of an installation that check-install.ps1 gathered")
    {
    }
    void AddOptions(CLI::App &app) override;
    // ExitCode::Failure when something is wrong.
    ExitCode Run() override;

  private:
    std::string file;
};

} // namespace tarn_host
