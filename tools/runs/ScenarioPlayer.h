// Plays a scenario with the module and looks at what is left afterwards.
#pragma once

#include <vector>

#include "tools/command/ProgressLine.h"
#include "tools/runs/RunOptions.h"
#include "tools/runs/Scenario.h"
#include "tools/runs/StreamReport.h"
#include "tools/runs/StreamRun.h"

namespace tarn_host
{

struct PlayedScenario
{
    StreamReport report;
    std::vector<PhasePictures> pictures;
};

// Needs a PlatformSession; throws as LoadedModule and StreamRun::Run.
PlayedScenario Play(const Scenario &scenario, const RunOptions &options, ProgressLine &progress);

} // namespace tarn_host
