#include "tools/runs/StreamCommand.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "tools/command/Choice.h"
#include "tools/pictures/ContactSheet.h"
#include "tools/command/Interruption.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/runs/RecordedRuns.h"
#include "tools/runs/ScenarioPlayer.h"

namespace tarn_host
{

namespace
{

constexpr double kLongestSeconds = 86'400;
constexpr VideoSize kFaceLogin{360, 360, 60};
constexpr const char *kSizeHelp = "WxH@FPS";

// A text that is no size names its option, also when that option had no value and took the next word for it.
void AddSize(CLI::App &app, const std::string &name, std::optional<VideoSize> &size, const std::string &help)
{
    const auto parse = [&size, name](const std::string &text) {
        try
        {
            size = VideoSize::Parse(text);
        }
        catch (const UsageError &error)
        {
            throw CLI::ValidationError(name, error.what());
        }
    };
    app.add_option_function<std::string>(name, parse, help)->type_name(kSizeHelp);
}

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
    AddSize(app, "--depth", depth, "run the depth output (the default, at the first type offered)");
    AddSize(app, "--ir", infrared, "run the infrared output, alone or beside --depth");
    AddSize(app, "--color", color, "type of the color output (default: the first type offered)");
    app.add_flag("--confidence", confidenceMap, "switch the confidence map on before depth starts");
    app.add_flag("--face-login", faceLogin, "switch face login on; without --ir the output is 360x360@60");
    CLI::Option *frameCount = app.add_option("--count", count, "frames of each camera pin (default: each picture once)")
                                  ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}))
                                  ->type_name("N");
    app.add_option("--seconds", seconds, "stream for so long, instead of a count")
        ->check(CLI::Range(0.1, kLongestSeconds))
        ->type_name("S")
        ->excludes(frameCount);
    app.add_flag("--save-frames", saveFrames, "save every frame (PNG) and its metadata (frames.jsonl) to --out");
    runOptions.AddTo(app);
}

Scenario StreamCommand::MakeScenario() const
{
    Phase phase;
    phase.frames = count;
    phase.seconds = seconds;
    if (transform == TransformKind::Color)
    {
        if (depth || infrared || confidenceMap || faceLogin)
        {
            throw UsageError("--depth, --ir, --confidence and --face-login belong to --transform depth");
        }
        phase.caption = "color";
        phase.start.push_back({0, color});
    }
    else
    {
        AddDepthOutputs(phase);
    }
    return {"stream", transform, {phase}};
}

void StreamCommand::AddDepthOutputs(Phase &phase) const
{
    if (color)
    {
        throw UsageError("--color belongs to --transform color");
    }
    if (faceLogin && depth)
    {
        throw UsageError("--face-login: infrared runs alone then; leave --depth out");
    }
    if (faceLogin && infrared && (infrared->width != kFaceLogin.width || infrared->height != kFaceLogin.height))
    {
        throw UsageError("--face-login: infrared runs at " + kFaceLogin.ToText() + " then, not at " +
                         infrared->ToText());
    }
    const bool runsInfrared = infrared || faceLogin;
    const bool runsDepth = depth || !runsInfrared;
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
        phase.start.push_back({kDepthOutput, depth});
    }
    if (runsInfrared)
    {
        phase.start.push_back({kInfraredOutput, infrared.value_or(kFaceLogin)});
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
    std::error_code error;
    if (saveFrames && !options.frames.empty() && std::filesystem::equivalent(options.frames, options.outFolder, error))
    {
        throw UsageError("--save-frames: --out is the folder of --frames; name another one");
    }
    options.framesToShow = options.outFolder.empty() ? 0 : kThumbnailsPerSection;
    const Scenario scenario = MakeScenario();

    const RecordedRuns recorded(options);
    const PlatformSession platform;
    const Interruption interruption;
    ProgressLine progress(options.quiet, scenario.phases.size());
    const PlayedScenario played = Play(scenario, options, progress);
    progress.Pause();
    recorded.Collect();
    if (options.json)
    {
        std::cout << played.report.ToJson() << '\n';
    }
    else
    {
        played.report.WriteTable(std::cout);
        StreamReport::WriteLegend(std::cout);
    }
    if (played.report.interrupted)
    {
        return ExitCode::Interrupted;
    }
    if (!played.report.Problems().empty())
    {
        return ExitCode::Failure;
    }
    if (!options.outFolder.empty())
    {
        SaveContactSheet(options.outFolder, "Tarn " + played.report.transform + " transform, " + played.report.source,
                         SectionsOf(played.pictures));
    }
    return ExitCode::Success;
}

} // namespace tarn_host
