#include "tools/runs/ScenarioPlayer.h"

#include "tools/frameserver/LoadedModule.h"
#include "tools/command/Text.h"

namespace tarn_host
{

PlayedScenario Play(const Scenario &scenario, const RunOptions &options, ProgressLine &progress)
{
    LoadedModule module(options.module, options.moduleAccess);
    StreamRun run(scenario, options, progress);
    PlayedScenario played{run.Run(module), run.Pictures()};
    played.report.module = ToText(module.LoadedFrom());
    played.report.leftovers.canUnload = module.CanUnloadNow();
    played.report.leftovers.unloaded = module.Unload();
    return played;
}

} // namespace tarn_host
