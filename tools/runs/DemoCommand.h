// "tarn-host demo": the camera as applications use it, scenario by scenario, and one picture of it all.
#pragma once

#include "tools/command/Command.h"
#include "tools/runs/RunOptions.h"

namespace tarn_host
{

// Confined.
class DemoCommand final : public Command
{
  public:
    DemoCommand() : Command("demo", "play every scenario of the depth camera, with a table of each and one picture") {}
    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    RunOptionsLine runOptions;
};

} // namespace tarn_host
