// "tarn-host stream": plays frames through a transform, tells how it went and shows what came out.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/command/Command.h"
#include "tools/runs/RunOptions.h"
#include "tools/runs/Scenario.h"

namespace tarn_host
{

// Confined.
class StreamCommand final : public Command
{
  public:
    StreamCommand() : Command("stream", "stream frames through a transform and check that each one arrives") {}
    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    Scenario MakeScenario() const;
    void AddDepthOutputs(Phase &phase) const;

    RunOptionsLine runOptions;
    TransformKind transform = TransformKind::Depth;
    std::optional<VideoSize> depth;
    std::optional<VideoSize> infrared;
    std::optional<VideoSize> color;
    bool confidenceMap = false;
    bool faceLogin = false;
    bool saveFrames = false;
    std::uint64_t count = 0; // 0: each picture of the source once
    double seconds = 0;      // 0: limited by count
};

} // namespace tarn_host
