// "tarn-host stream": plays frames through a transform, tells how it went and shows what came out.
#pragma once

#include <memory>
#include <string>

#include "tools/Command.h"
#include "tools/StreamOptions.h"

namespace tarn_host
{

// Confined.
class StreamCommand final : public Command
{
  public:
    const char *Name() const noexcept override
    {
        return "stream";
    }
    const char *Summary() const noexcept override
    {
        return "stream frames through a transform and check that each one arrives";
    }
    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    void ReadOptions();

    StreamOptions options;
    // As typed; paths and sizes are converted once the whole line has been read.
    std::string module;
    std::string frames;
    std::string outFolder;
    std::string size;
    bool dontRegister = false;
};

} // namespace tarn_host
