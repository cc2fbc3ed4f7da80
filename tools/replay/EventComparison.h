// The events that a replay fetched beside those of the recording.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "tools/replay/ReplayScript.h"
#include "tools/replay/ValueDifference.h"
#include "tools/replay/ValueWriter.h"

namespace tarn_replay
{

// Compares them in their order, but for one thing: frames and changes of state raise theirs on threads of their own,
// and which came first is chance. So those of frames are compared in their order, and the others in theirs; the one
// may be ahead of the other by what a few changes raise. Confined.
class EventComparison
{
  public:
    // Of a call that fetched one, then and now.
    std::optional<ValueDifference> Compare(const RecordedCall &call, const ValueWriter &given);
    // The call of the first recorded one that has not come in the end, when more are missing than `further` others may
    // have come for; null when all is well.
    const RecordedCall *FirstMissing(std::size_t further) const;

  private:
    // Of one transform; those that the other side has not shown yet.
    struct Line
    {
        std::deque<const RecordedCall *> recorded;
        std::deque<ValueWriter> given;
    };
    std::map<std::pair<std::uint32_t, bool>, Line> lines; // by transform, and whether frames raise them
};

} // namespace tarn_replay
