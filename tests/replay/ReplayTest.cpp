// Recorded, replayed and recorded again, over the real DLL. TARN_REPLAY_CALLS=2000 makes the random sessions as long,
// TARN_STRESS_SEED=n has them begin with that seed.
#include <cstdlib>
#include <string>

#include "tests/replay/RandomSession.h"
#include "tests/replay/RecordedRun.h"
#include "tools/events/SessionComparison.h"
#include "tools/runs/DemoScenarios.h"
#include "tools/runs/StreamRun.h"

using tarn_host::LoadedModule;
using tarn_recording::RecordedSession;
using tarn_replay::ReplayComparison;

namespace tarn_test
{

namespace
{

struct Case
{
    std::string name;
    bool withPictures = false;
    std::function<void(const LoadedModule &)> run;
};

unsigned Setting(const char *name, unsigned usual)
{
    const char *const text = std::getenv(name);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : usual;
}

Case Played(tarn_host::Scenario scenario, bool withPictures = false)
{
    for (tarn_host::Phase &phase : scenario.phases)
    {
        phase.frames = 5;
    }
    return {scenario.title, withPictures, [scenario](const LoadedModule &module) {
                tarn_host::RunOptions options;
                options.pace = tarn_host::Pace::Fast;
                options.quiet = true;
                tarn_host::ProgressLine progress(true, scenario.phases.size());
                tarn_host::StreamRun(scenario, options, progress).Run(module);
            }};
}

Case Random(const char *name, unsigned seed, const tarn_sim::FaultPlan &faults)
{
    return {name, false, [seed, faults](const LoadedModule &module) {
                RandomSession(Setting("TARN_STRESS_SEED", seed), Setting("TARN_REPLAY_CALLS", 120), faults).Run(module);
            }};
}

std::vector<Case> Scenarios()
{
    std::vector<Case> cases;
    for (const auto &demo : tarn_host::DemoScenarios())
    {
        cases.push_back(Played(demo.scenario));
    }
    tarn_host::Phase phase;
    phase.start = {{0, std::nullopt}};
    cases.push_back(Played({"color", tarn_host::TransformKind::Color, {phase}}, true));
    return cases;
}

std::vector<Case> RandomSessions()
{
    tarn_sim::FaultPlan faults;
    faults.ksCall = {11, E_ABORT, false};
    faults.shortEvery = 4;
    faults.duplicateEvery = 3;
    faults.metadata = tarn_sim::MetadataFault::Truncated;
    return {Random("random calls", 1, {}), Random("random calls and camera faults", 2, faults)};
}

// What fails can be looked at.
void Keep(const std::string &name, const std::vector<std::uint8_t> &bytes)
{
    std::ofstream(kRecordings.parent_path() / name, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

RecordedSession SessionOf(std::vector<std::uint8_t> bytes)
{
    return RecordedSession::FromBytes({std::move(bytes)});
}

std::ptrdiff_t Announced(const RecordedSession &session)
{
    return std::ranges::count_if(session.Records(), &tarn_replay::IsHaveOutput);
}

// With `recordings` the recording of the replay is compared, too, unless a frame that had been cut between two outputs
// brought a sample more: how many were.
std::size_t ExpectTheSameAgain(const std::vector<Case> &cases, bool recordings)
{
    std::size_t comparedRecordings = 0;
    for (const Case &one : cases)
    {
        SCOPED_TRACE(one.name);
        const auto bytes = RecordRun(one.withPictures, one.run);
        const auto recorded = SessionOf(bytes);
        ReplayComparison comparison(recorded);
        const auto bytesAgain =
            RecordRun(one.withPictures, [&](const LoadedModule &module) { Replay(recorded, module, comparison); });
        const auto again = SessionOf(bytesAgain);
        EXPECT_FALSE(comparison.IsDifferent()) << comparison.ToText();
        EXPECT_GT(comparison.Counts().calls, 20U);
        EXPECT_EQ(one.withPictures, comparison.Counts().pictures > 0);
        const bool isOneCut = comparison.Counts().cutFrames != 0 && Announced(recorded) < Announced(again);
        const bool areCompared = recordings && !isOneCut;
        comparedRecordings += areCompared ? 1U : 0U;
        const auto compared = areCompared ? tarn_host::CompareSessions(recorded, again) : tarn_host::ComparisonResult{};
        EXPECT_FALSE(compared.first) << compared.first->lane << ", " << compared.first->where << "\n"
                                     << compared.first->expectedText << "\n"
                                     << compared.first->gotText;
        if (comparison.IsDifferent() || compared.first)
        {
            Keep(one.name + ".recorded.bin", bytes);
            Keep(one.name + ".replayed.bin", bytesAgain);
            continue;
        }
        std::printf("%s: %s", one.name.c_str(), comparison.ToText().c_str());
    }
    return comparedRecordings;
}

} // namespace

TEST(ReplayTest, ScenariosHappenAgainAsRecorded)
{
    EXPECT_GE(ExpectTheSameAgain(Scenarios(), true), 5U);
}

TEST(ReplayTest, RandomSessionsHappenAgainAsRecorded)
{
    ExpectTheSameAgain(RandomSessions(), false);
}

} // namespace tarn_test
