// Plays a scenario with the registered module and looks at what is left afterwards.
#pragma once

#include <vector>

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

// Registers the module first if the options say so. Needs a PlatformSession; throws as StreamRun::Run.
PlayedScenario Play(const Scenario &scenario, const RunOptions &options);

} // namespace tarn_host
