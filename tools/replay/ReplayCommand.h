// tarn-host replay: makes a recorded session happen again and says where the module did otherwise.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/command/Command.h"

namespace tarn_host
{

class ReplayCommand final : public Command
{
  public:
    ReplayCommand();

    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    std::string file;
    std::string modulePath;
    bool recordedSpeed = false;
    bool isRegistered = false;
    std::optional<std::uint64_t> until;
};

} // namespace tarn_host
