#include "tools/runs/RunOptions.h"

#include "tools/command/Choice.h"
#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"
#include "tools/pictures/ContactSheet.h"

namespace tarn_host
{

namespace
{

void RequireFolder(const std::filesystem::path &folder, const char *option)
{
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
    {
        throw UsageError(std::string(option) + ": no such folder: " + ToText(folder));
    }
}

} // namespace

void RunOptionsLine::AddTo(CLI::App &app)
{
    app.add_option("--frames", frames, "folder of recorded PNG frames (default: a generated scene)")->type_name("DIR");
    AddChoice<Pace>(app, "--pace", options.pace, {{"realtime", Pace::RealTime}, {"fast", Pace::Fast}},
                    "by the frame rate, or as fast as frames are taken (default realtime)");
    app.add_flag("--allocator", options.allocator, "offer the platform's sample allocator to each output that starts");
    app.add_option("--out", outFolder, std::string("folder for ") + kPictureName + " (default: no picture)")
        ->type_name("DIR");
    CLI::Option *recording =
        app.add_option("--record", record, "folder for the module's recording, events.bin (default: none)")
            ->type_name("DIR");
    app.add_flag("--record-frames", options.recordPictures, "with the frames' pixels")->needs(recording);
    app.add_option("--dll", module, "the module (default: tarn_dmft.dll beside this program)")->type_name("PATH");
    app.add_flag("--register", registerFirst, kRegisterHelp);
    app.add_flag("--json", options.json, "result as JSON on stdout instead of a table");
    app.add_flag("--quiet", options.quiet, "no progress on stderr");
}

RunOptions RunOptionsLine::Read() const
{
    RunOptions read = options;
    read.moduleAccess = registerFirst ? ModuleAccess::Registry : ModuleAccess::File;
    read.module = module.empty() ? DefaultModulePath() : ToPath(module);
    if (!frames.empty())
    {
        read.frames = ToPath(frames);
        RequireFolder(read.frames, "--frames");
    }
    if (!outFolder.empty())
    {
        read.outFolder = ToPath(outFolder);
        std::error_code error;
        std::filesystem::create_directories(read.outFolder, error);
        RequireFolder(read.outFolder, "--out");
    }
    if (!record.empty())
    {
        read.record = ToPath(record);
        std::error_code error;
        std::filesystem::create_directories(read.record, error);
        RequireFolder(read.record, "--record");
    }
    return read;
}

} // namespace tarn_host
