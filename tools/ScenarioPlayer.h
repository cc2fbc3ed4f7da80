// Plays a scenario with the module and looks at what is left afterwards.
#pragma once

#include <vector>

#include "tools/ProgressLine.h"
#include "tools/RunOptions.h"
#include "tools/Scenario.h"
#include "tools/StreamReport.h"
#include "tools/StreamRun.h"

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
