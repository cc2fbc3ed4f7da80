#include "tools/replay/ReplayCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

#include "tools/command/Choice.h"
#include "tools/command/Text.h"
#include "tools/frameserver/LoadedModule.h"
#include "tools/frameserver/PlatformSession.h"
#include "tools/replay/CallPlayer.h"

namespace tarn_host
{

namespace
{
// The recording of a process; a file that another process left in the same folder is another one.
tarn_recording::RecordedSession Open(const std::string &file)
{
    std::vector<tarn_recording::RecordedSession> sessions;
    try
    {
        sessions = tarn_recording::RecordedSession::Open({ToPath(file)});
    }
    catch (const std::runtime_error &error)
    {
        throw UsageError(error.what());
    }
    if (sessions.empty() || sessions.front().Records().empty())
    {
        throw UsageError(file + " holds no recorded session");
    }
    const auto &records = sessions.front().Records();
    if (std::ranges::none_of(records, [](const auto &record) { return record.header.type == TARN_RECORD_TRANSFORM; }))
    {
        throw UsageError(file + " holds no transform's calls");
    }
    return std::move(sessions.front());
}
} // namespace

ReplayCommand::ReplayCommand()
    : Command("replay", "play a recorded session on the module and compare"), modulePath(ToText(DefaultModulePath()))
{
}

void ReplayCommand::AddOptions(CLI::App &app)
{
    app.add_option("file", file, "the recording (events.bin)")->required();
    app.add_option("--dll", modulePath, "the module to play it on")->capture_default_str();
    AddChoice<bool>(app, "--speed", recordedSpeed, {{"recorded", true}, {"fast", false}},
                    "in the recorded time or as fast as it goes (default)");
    app.add_option("--until", until, "the number of the last record that is played");
    app.add_flag("--register", isRegistered, kRegisterHelp);
}

ExitCode ReplayCommand::Run()
{
    const auto session = Open(file);
    for (const auto &damage : session.Damages())
    {
        std::cerr << "tarn-host: " << damage.ToText() << '\n';
    }
    const std::uint64_t lastNumber = session.Records().back().header.sequence;
    if (until && (*until == 0 || *until > lastNumber))
    {
        throw UsageError("--until: the recording's records have the numbers 1 to " + std::to_string(lastNumber));
    }
    const PlatformSession platform;
    const LoadedModule module(ToPath(modulePath), isRegistered ? ModuleAccess::Registry : ModuleAccess::File);
    tarn_replay::ReplayComparison comparison(session);
    {
        tarn_replay::CallPlayer player(session, module, comparison);
        tarn_replay::PlayOptions options;
        options.recordedSpeed = recordedSpeed;
        options.until = until;
        player.Play(options);
    }
    std::cout << comparison.ToText();
    return comparison.IsDifferent() ? ExitCode::Failure : ExitCode::Success;
}

} // namespace tarn_host
