#include "tools/runs/DemoCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <numeric>

#include "tools/pictures/ContactSheet.h"
#include "tools/runs/DemoScenarios.h"
#include "tools/command/Interruption.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/runs/RecordedRuns.h"
#include "tools/runs/ScenarioPlayer.h"

namespace tarn_host
{

namespace
{

constexpr std::size_t kFramesShown = 4; // of each section, a row of the sheet

std::size_t PhaseCount(const std::vector<DemoScenario> &demos)
{
    return std::accumulate(demos.begin(), demos.end(), std::size_t{0}, [](std::size_t count, const DemoScenario &demo) {
        return count + demo.scenario.phases.size();
    });
}

void AddSections(std::vector<ContactSheetSection> &sections, const DemoScenario &demo,
                 const std::vector<PhasePictures> &pictures)
{
    for (const ShownOutput &shown : demo.shown)
    {
        const auto found = std::find_if(pictures.begin(), pictures.end(), [&](const PhasePictures &one) {
            return one.phase == shown.phase && one.outputId == shown.outputId;
        });
        if (found != pictures.end())
        {
            sections.push_back(shown.isConfidenceMap ? found->confidenceMaps : found->frames);
            sections.back().title = demo.scenario.title + "   " + sections.back().title;
        }
    }
}

} // namespace

void DemoCommand::AddOptions(CLI::App &app)
{
    runOptions.AddTo(app);
}

ExitCode DemoCommand::Run()
{
    RunOptions options = runOptions.Read();
    options.framesToShow = options.outFolder.empty() ? 0 : kFramesShown;

    const RecordedRuns recorded(options);
    const PlatformSession platform;
    std::vector<ContactSheetSection> sections;
    std::string source;
    std::size_t good = 0;
    bool interrupted = false;
    const std::vector<DemoScenario> demos = DemoScenarios();
    const Interruption interruption;
    ProgressLine progress(options.quiet, PhaseCount(demos));
    for (std::size_t i = 0; i < demos.size() && !interrupted; ++i)
    {
        const PlayedScenario played = Play(demos[i].scenario, options, progress);
        progress.Pause();
        recorded.Collect(std::to_string(i + 1));
        interrupted = played.report.interrupted;
        source = played.report.source;
        good += !interrupted && played.report.Problems().empty() ? 1 : 0;
        AddSections(sections, demos[i], played.pictures);
        if (options.json)
        {
            std::cout << (i == 0 ? "[\n" : ",\n") << played.report.ToJson();
        }
        else
        {
            played.report.WriteTable(std::cout);
            std::cout << '\n';
        }
        std::cout.flush();
    }
    if (options.json)
    {
        std::cout << "\n]\n";
    }
    else
    {
        StreamReport::WriteLegend(std::cout);
        std::cout << good << " of " << demos.size() << " scenarios without a fault\n";
    }
    if (interrupted)
    {
        return ExitCode::Interrupted;
    }
    if (good != demos.size())
    {
        return ExitCode::Failure;
    }
    if (!options.outFolder.empty())
    {
        SaveContactSheet(options.outFolder, "Tarn depth camera, " + source, sections);
    }
    return ExitCode::Success;
}

} // namespace tarn_host
