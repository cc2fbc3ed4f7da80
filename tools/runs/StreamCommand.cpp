#include "tools/runs/StreamCommand.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "tools/command/Choice.h"
#include "tools/pictures/ContactSheet.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/runs/ScenarioPlayer.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

constexpr double kLongestSeconds = 86'400;
constexpr VideoSize kFaceLoginSize{360, 360, 60};
constexpr const char *kSizeHelp = "WxH@FPS";

std::vector<ContactSheetSection> SectionsOf(const std::vector<PhasePictures> &pictures)
{
    std::vector<ContactSheetSection> sections;
    for (const PhasePictures &one : pictures)
    {
        sections.push_back(one.frames);
        if (!one.confidenceMaps.frames.empty())
        {
            sections.push_back(one.confidenceMaps);
        }
    }
    return sections;
}

} // namespace

void StreamCommand::AddOptions(CLI::App &app)
{
    AddChoice<TransformKind>(app, "--transform", transform,
                             {{"depth", TransformKind::Depth}, {"color", TransformKind::Color}},
                             "which transform of the module (default depth)");
    app.add_option("--depth", depth, "run the depth output (the default, at the first type offered)")
        ->type_name(kSizeHelp);
    app.add_option("--ir", infrared, "run the infrared output, alone or beside --depth")->type_name(kSizeHelp);
    app.add_option("--color", color, "type of the color output (default: the first type offered)")
        ->type_name(kSizeHelp);
    app.add_flag("--confidence", confidenceMap, "switch the confidence map on before depth starts");
    app.add_flag("--face-login", faceLogin, "switch face login on; without --ir the output is 360x360@60");
    CLI::Option *frameCount = app.add_option("--count", count, "frames of each camera pin (default: each picture once)")
                                  ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}))
                                  ->type_name("N");
    app.add_option("--seconds", seconds, "stream for so long, instead of a count")
        ->check(CLI::Range(0.1, kLongestSeconds))
        ->type_name("S")
        ->excludes(frameCount);
    app.add_flag("--save-frames", saveFrames, "save every frame (PGM) and its metadata (frames.jsonl) to --out");
    runOptions.AddTo(app);
}

Scenario StreamCommand::MakeScenario() const
{
    Phase phase;
    phase.frames = count;
    phase.seconds = seconds;
    if (transform == TransformKind::Color)
    {
        if (!depth.empty() || !infrared.empty() || confidenceMap || faceLogin)
        {
            throw UsageError("--depth, --ir, --confidence and --face-login belong to --transform depth");
        }
        phase.caption = "color";
        phase.start.push_back({0, color.empty() ? std::nullopt : std::optional(VideoSize::Parse(color))});
    }
    else
    {
        AddDepthOutputs(phase);
    }
    return {"stream", transform, {phase}};
}

void StreamCommand::AddDepthOutputs(Phase &phase) const
{
    if (!color.empty())
    {
        throw UsageError("--color belongs to --transform color");
    }
    const bool runsInfrared = !infrared.empty() || faceLogin;
    const bool runsDepth = !depth.empty() || !runsInfrared;
    if (confidenceMap && runsInfrared)
    {
        throw UsageError("--confidence: the camera has no confidence map while infrared runs");
    }
    if (confidenceMap)
    {
        phase.confidenceMap = true;
    }
    if (faceLogin)
    {
        phase.faceLogin = true;
    }
    if (runsDepth)
    {
        phase.start.push_back({kDepthOutput, depth.empty() ? std::nullopt : std::optional(VideoSize::Parse(depth))});
    }
    if (runsInfrared)
    {
        phase.start.push_back({kInfraredOutput, infrared.empty() ? kFaceLoginSize : VideoSize::Parse(infrared)});
    }
    phase.caption = std::string(runsDepth ? "depth" : "") + (runsDepth && runsInfrared ? " and " : "") +
                    (runsInfrared ? "infrared" : "") + (confidenceMap ? " with confidence map" : "") +
                    (faceLogin ? ", face login" : "");
}

ExitCode StreamCommand::Run()
{
    RunOptions options = runOptions.Read();
    options.saveFrames = saveFrames;
    if (saveFrames && options.outFolder.empty())
    {
        throw UsageError("--save-frames needs --out");
    }
    options.framesToShow = options.outFolder.empty() ? 0 : kThumbnailsPerSection;
    const Scenario scenario = MakeScenario();

    const PlatformSession platform;
    const PlayedScenario played = Play(scenario, options);
    if (options.json)
    {
        std::cout << played.report.ToJson() << '\n';
    }
    else
    {
        played.report.WriteTable(std::cout);
        StreamReport::WriteLegend(std::cout);
    }
    if (!options.outFolder.empty())
    {
        const std::filesystem::path picture = options.outFolder / kPictureName;
        DrawContactSheet("Tarn " + played.report.transform + " transform, " + played.report.source,
                         SectionsOf(played.pictures))
            .SavePng(picture);
        std::cerr << "picture: " << ToText(picture) << '\n';
    }
    return played.report.Problems().empty() ? ExitCode::Success : ExitCode::Failure;
}

} // namespace tarn_host
