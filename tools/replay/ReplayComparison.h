// What a replay found: whether the module did what the recording shows, and where it first did not.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "tools/recording/RecordedSession.h"
#include "tools/replay/EventComparison.h"
#include "tools/replay/OutputComparison.h"
#include "tools/replay/ReplayScript.h"

namespace tarn_replay
{

struct ReplayDifference
{
    const Record *at = nullptr; // the call or event that shows it
    std::string what;
    std::string expected;
    std::string got;
};

struct ReplayCounts
{
    std::uint64_t calls = 0;
    std::uint64_t frames = 0;
    std::uint64_t events = 0;
    std::uint64_t pictures = 0;
    std::uint64_t undecided = 0; // answers given while another thread changed the state, which came out otherwise
    std::uint64_t cutFrames =
        0; // between two outputs, at most: the replay may have a sample and an event more for each
};

// Thread-safe. The session must outlive it.
class ReplayComparison
{
  public:
    explicit ReplayComparison(const RecordedSession &recordedSession);

    // Result and values of a call that the recording saw return.
    void Compare(const RecordedCall &call, std::int32_t result, const ValueWriter &given);
    // The session has been played to its end.
    void End();
    // The first is kept. `at` null: the record at which the replay is.
    void Tell(const Record *at, std::string what, std::string expected, std::string got);
    void GoTo(const Record *record);

    bool IsDifferent() const;
    std::optional<ReplayDifference> First() const;
    ReplayCounts Counts() const;
    // The first difference with what led to it, or what was compared; several lines.
    std::string ToText() const;

  private:
    std::optional<ValueDifference> FindDifferenceOf(const RecordedCall &call, std::int32_t result,
                                                    const ValueWriter &given);
    std::string Before(const Record &record) const;
    std::string LineOf(const Record &record) const;

    const RecordedSession &session;
    mutable std::mutex lock;
    std::optional<ReplayDifference> first; // guarded by lock, as the others
    ReplayCounts counts;
    OutputComparison outputs;
    EventComparison events;
    const Record *current = nullptr;
};

} // namespace tarn_replay
