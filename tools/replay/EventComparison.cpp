#include "tools/replay/EventComparison.h"

namespace tarn_replay
{

namespace
{
constexpr std::size_t kMostAhead = 32;

std::uint64_t TypeOf(tarn_recording::ValueList event)
{
    return event.Unsigned(TARN_VALUE_EVENT_TYPE).value_or(0);
}
} // namespace

std::optional<ValueDifference> EventComparison::Compare(const RecordedCall &call, const ValueWriter &given)
{
    const std::uint32_t transform = call.entry->header.transform;
    const auto recorded = call.exit->Values();
    lines[{transform, TypeOf(recorded) == tarn_recording::kHaveOutput}].recorded.push_back(&call);
    lines[{transform, TypeOf(given.Values()) == tarn_recording::kHaveOutput}].given.push_back(given);
    for (const bool ofFrames : {false, true})
    {
        Line &line = lines[{transform, ofFrames}];
        while (!line.recorded.empty() && !line.given.empty())
        {
            auto difference = FindDifference(line.recorded.front()->exit->Values(), line.given.front().Values());
            line.recorded.pop_front();
            line.given.pop_front();
            if (difference)
            {
                return difference;
            }
        }
        if (line.recorded.size() > kMostAhead)
        {
            return FindDifference(recorded, given.Values());
        }
    }
    return std::nullopt;
}

const RecordedCall *EventComparison::FirstMissing(std::size_t further) const
{
    const RecordedCall *first = nullptr;
    std::size_t count = 0;
    for (const auto &[key, line] : lines)
    {
        const bool isFirst =
            !line.recorded.empty() && (first == nullptr || line.recorded.front()->Sequence() < first->Sequence());
        first = isFirst ? line.recorded.front() : first;
        count += line.recorded.size();
    }
    return count > further ? first : nullptr;
}

} // namespace tarn_replay
