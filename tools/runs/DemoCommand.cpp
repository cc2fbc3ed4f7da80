#include "tools/runs/DemoCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

#include "tools/pictures/ContactSheet.h"
#include "tools/runs/DemoScenarios.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/runs/ScenarioPlayer.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

constexpr std::size_t kFramesShown = 4; // of each section, a row of the sheet

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

    const PlatformSession platform;
    std::vector<ContactSheetSection> sections;
    std::string source;
    std::size_t good = 0;
    const std::vector<DemoScenario> demos = DemoScenarios();
    for (std::size_t i = 0; i < demos.size(); ++i)
    {
        const PlayedScenario played = Play(demos[i].scenario, options);
        source = played.report.source;
        good += played.report.Problems().empty() ? 1 : 0;
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
    if (!options.outFolder.empty())
    {
        const std::filesystem::path picture = options.outFolder / kPictureName;
        DrawContactSheet("Tarn depth camera, " + source, sections).SavePng(picture);
        std::cerr << "picture: " << ToText(picture) << '\n';
    }
    return good == demos.size() ? ExitCode::Success : ExitCode::Failure;
}

} // namespace tarn_host
