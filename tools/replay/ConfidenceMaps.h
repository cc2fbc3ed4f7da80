// Which output samples of a session came with a confidence map.
#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "tools/recording/RecordedSession.h"

namespace tarn_replay
{

// Immutable.
class ConfidenceMaps
{
  public:
    explicit ConfidenceMaps(const tarn_recording::RecordedSession &session);

    bool Has(std::uint32_t transform, std::int64_t time) const
    {
        return samples.contains({transform, time});
    }

    // By an application's call.
    static bool AreSwitchedOff(const tarn_recording::Record &call);

  private:
    std::set<std::pair<std::uint32_t, std::int64_t>> samples; // transform and time
};

} // namespace tarn_replay
