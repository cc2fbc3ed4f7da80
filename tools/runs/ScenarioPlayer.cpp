#include "tools/runs/ScenarioPlayer.h"

#include "tools/frameserver/LoadedModule.h"
#include "tools/frameserver/RegisterModule.h"
#include "tools/command/Text.h"

namespace tarn_host
{

PlayedScenario Play(const Scenario &scenario, const RunOptions &options)
{
    if (options.registerModule)
    {
        RegisterModule(options.module);
    }
    const LoadedModule loaded(options.module);
    StreamRun run(scenario, options);
    PlayedScenario played{run.Run(), run.Pictures()};
    played.report.module = ToText(loaded.LoadedFrom());
    played.report.leftovers.canUnload = loaded.CanUnloadNow();
    CoFreeUnusedLibrariesEx(0, 0);
    played.report.leftovers.unloaded = !loaded.IsLoaded();
    return played;
}

} // namespace tarn_host
