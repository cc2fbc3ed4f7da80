// Sessions recorded and replayed in this process. It runs in a Wine prefix that has the folder of recordings.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <vector>

#include "tests/support/Expect.h"
#include "tools/frameserver/LoadedModule.h"
#include "tools/recording/RecordedSession.h"
#include "tools/replay/CallPlayer.h"

namespace tarn_test
{

inline const std::filesystem::path kRecordings = L"c:\\OrrinLogs";

// What the module recorded while `run` used it; `run` lets go of everything.
inline std::vector<std::uint8_t> RecordRun(bool withPictures,
                                           const std::function<void(const tarn_host::LoadedModule &)> &run)
{
    for (const auto &entry : std::filesystem::directory_iterator(kRecordings))
    {
        std::filesystem::remove(entry.path());
    }
    if (withPictures)
    {
        const std::ofstream asked(kRecordings / "frames");
    }
    {
        tarn_host::LoadedModule module(tarn_host::DefaultModulePath(), tarn_host::ModuleAccess::File);
        run(module);
        EXPECT_TRUE(module.Unload());
    }
    std::ifstream file(kRecordings / "events.bin", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void Replay(const tarn_recording::RecordedSession &session, const tarn_host::LoadedModule &module,
                   tarn_replay::ReplayComparison &comparison)
{
    tarn_replay::PlayOptions options;
    options.eventLimit = std::chrono::milliseconds(2000);
    tarn_replay::CallPlayer(session, module, comparison).Play(options);
}

} // namespace tarn_test
