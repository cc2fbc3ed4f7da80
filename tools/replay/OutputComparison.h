// The output samples of a replay beside those of the recording.
#pragma once

#include <compare>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "tools/replay/ReplayScript.h"
#include "tools/replay/ValueDifference.h"

namespace tarn_replay
{

// Compares them in the order of each output. A frame of several outputs is processed as a whole in a replay; in the
// recording a call may have fetched one of its samples before the next was there, so a sample may come with an earlier
// call than recorded, never with a later one. Where the chain ended between the two, the replay has a sample more.
// Confined. The session must outlive it.
class OutputComparison
{
  public:
    explicit OutputComparison(const RecordedSession &recordedSession);

    // Of a ProcessOutput whose return was recorded. The given buffers' lists may hold the TARN_VALUE_HASH of a picture.
    std::optional<ValueDifference> Compare(const RecordedCall &call, std::int32_t result,
                                           tarn_recording::ValueList given);
    std::uint64_t Pictures() const noexcept
    {
        return pictures;
    }
    // How many frames were cut between two outputs at most.
    std::size_t CutFrames() const noexcept
    {
        return cut.size();
    }

  private:
    struct Output
    {
        std::uint32_t transform = 0;
        std::uint32_t stream = 0;
        friend auto operator<=>(const Output &, const Output &) = default;
    };
    struct Sample
    {
        std::vector<std::uint8_t> values;
        std::optional<std::uint64_t> hash;
        std::int64_t Time() const noexcept;
    };

    void FindCutFrames();
    bool WasAnnounced(const Output &output, const Sample &sample) const;
    std::optional<ValueDifference> CompareNext(const RecordedCall &call, const Output &output,
                                               const tarn_recording::Value &recorded);
    std::optional<std::uint64_t> HashOf(const RecordedCall &call, std::uint32_t stream) const;

    const RecordedSession &session;
    std::set<std::pair<Output, std::int64_t>> announced;  // by the sample's time
    std::set<std::pair<std::uint32_t, std::int64_t>> cut; // transform and time
    std::map<Output, std::deque<Sample>> early;           // that the recording has not shown yet
    std::uint64_t pictures = 0;
};

} // namespace tarn_replay
