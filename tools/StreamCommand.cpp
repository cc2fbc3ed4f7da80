#include "tools/StreamCommand.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

#include "tools/LoadedModule.h"
#include "tools/PlatformSession.h"
#include "tools/RegisterModule.h"
#include "tools/StreamRun.h"
#include "tools/Text.h"

namespace tarn_host
{

namespace
{

constexpr const char *kPictureName = "contact-sheet.png";
constexpr double kLongestSeconds = 86'400;

// An option whose value is one of a few words.
template <class Choice>
void AddChoice(CLI::App &app, const std::string &name, Choice &value, const std::map<std::string, Choice> &choices,
               const std::string &help)
{
    std::string words;
    for (const auto &choice : choices)
    {
        words += (words.empty() ? "" : "|") + choice.first;
    }
    const auto choose = [&value, choices, name, words](const std::string &word) {
        const auto found = choices.find(word);
        if (found == choices.end())
        {
            throw CLI::ValidationError(name, "'" + word + "' is not one of " + words);
        }
        value = found->second;
    };
    app.add_option_function<std::string>(name, choose, help)->type_name(words);
}

void RequireFolder(const std::filesystem::path &folder, const char *option)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
    {
        throw UsageError(std::string(option) + ": no such folder: " + ToText(folder));
    }
}

} // namespace

void StreamCommand::AddOptions(CLI::App &app)
{
    AddChoice<TransformKind>(app, "--transform", options.transform,
                             {{"depth", TransformKind::Depth}, {"color", TransformKind::Color}},
                             "which transform of the module (default depth)");
    app.add_option("--frames", frames, "folder of recorded PNG frames (default: a generated scene)")->type_name("DIR");
    CLI::Option *count = app.add_option("--count", options.count, "frames per camera pin (default: each picture once)")
                             ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}))
                             ->type_name("N");
    app.add_option("--seconds", options.seconds, "stream for so long, instead of a count")
        ->check(CLI::Range(0.1, kLongestSeconds))
        ->type_name("S")
        ->excludes(count);
    app.add_option("--size", size, "frame size in pixels and rate (default: the first type offered)")
        ->type_name("WxH@FPS");
    app.add_option("--format", options.format, "subtype of the output, for example D16 or L16")->type_name("NAME");
    AddChoice<Pace>(app, "--pace", options.pace, {{"realtime", Pace::RealTime}, {"fast", Pace::Fast}},
                    "by the frame rate, or as fast as frames are taken (default realtime)");
    AddChoice<InputReference>(app, "--input-reference", options.inputReference,
                              {{"keep", InputReference::Keep}, {"consumed", InputReference::Consumed}},
                              "who owns the reference given to ProcessInput (default keep)");
    app.add_option("--out", outFolder, std::string("folder for ") + kPictureName + " (default: no picture)")
        ->type_name("DIR");
    app.add_option("--dll", module, "the module (default: tarn_dmft.dll beside this program)")->type_name("PATH");
    app.add_flag("--no-register", dontRegister, "use the module as it is registered already");
    app.add_flag("--json", options.json, "result as JSON on stdout instead of a table");
    app.add_flag("--quiet", options.quiet, "no progress on stderr");
}

void StreamCommand::ReadOptions()
{
    options.registerModule = !dontRegister;
    options.module = module.empty() ? DefaultModulePath() : ToPath(module);
    if (!frames.empty())
    {
        options.frames = ToPath(frames);
        RequireFolder(options.frames, "--frames");
    }
    if (!size.empty())
    {
        options.size = VideoSize::Parse(size);
    }
    if (!outFolder.empty())
    {
        options.outFolder = ToPath(outFolder);
        std::error_code error;
        std::filesystem::create_directories(options.outFolder, error);
        RequireFolder(options.outFolder, "--out");
    }
}

ExitCode StreamCommand::Run()
{
    ReadOptions();
    const PlatformSession platform;
    if (options.registerModule)
    {
        RegisterModule(options.module);
    }

    const LoadedModule loaded(options.module);
    StreamRun run(options);
    StreamReport report = run.Run();
    report.module = ToText(loaded.LoadedFrom());
    report.leftovers.canUnload = loaded.CanUnloadNow();
    CoFreeUnusedLibrariesEx(0, 0);
    report.leftovers.unloaded = !loaded.IsLoaded();

    if (!options.outFolder.empty())
    {
        const std::filesystem::path picture = options.outFolder / kPictureName;
        run.DrawFrames("Tarn " + report.transform + " transform, " + report.source).SavePng(picture);
        report.picture = ToText(picture);
    }
    if (options.json)
    {
        report.WriteJson(std::cout);
    }
    else
    {
        report.WriteTable(std::cout);
    }
    return report.Problems().empty() ? ExitCode::Success : ExitCode::Failure;
}

} // namespace tarn_host
