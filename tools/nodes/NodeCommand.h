// "tarn-host node": runs processing nodes on one picture, so that a person can see what they do.
#pragma once

#include <filesystem>
#include <string>

#include "tools/command/Command.h"

namespace tarn_host
{

struct ImageFrame;

// Confined.
class NodeCommand final : public Command
{
  public:
    NodeCommand() : Command("node", "run processing nodes on a picture and write the result") {}
    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    void Save(const ImageFrame &frame, const std::filesystem::path &path) const;

    std::string input;
    std::string chain;
    std::string output;
    bool grey = false;
};

} // namespace tarn_host
