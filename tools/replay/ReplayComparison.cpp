#include "tools/replay/ReplayComparison.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "tools/events/RecordText.h"
#include "tools/names/PipelineNames.h"
#include "tools/names/ResultNames.h"
#include "tools/recording/StateChanges.h"

namespace tarn_replay
{

namespace
{
constexpr std::size_t kRecordsBefore = 10;

// A wait that a shutdown ended: whether it still got one of the last events is chance.
bool IsEndedWait(const RecordedCall &call, std::int32_t result)
{
    return call.isBesideShutdown && IsWaiting(*call.entry) &&
           (result == kShutDown || call.exit->header.result == kShutDown);
}
} // namespace

ReplayComparison::ReplayComparison(const RecordedSession &recordedSession)
    : session(recordedSession), outputs(recordedSession)
{
}

void ReplayComparison::Compare(const RecordedCall &call, std::int32_t result, const ValueWriter &given)
{
    const Record &entry = *call.entry;
    {
        const std::scoped_lock hold(lock);
        ++counts.calls;
        counts.frames += entry.Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT) ? 1 : 0;
        counts.events += given.Values().Find(TARN_VALUE_EVENT_TYPE) ? 1 : 0;
    }
    if (call.exit == nullptr)
    {
        return;
    }
    const auto difference = FindDifferenceOf(call, result, given);
    if (!difference)
    {
        return;
    }
    if ((call.isUndecided && tarn_recording::AsksForState(entry)) || IsEndedWait(call, result))
    {
        const std::scoped_lock hold(lock);
        ++counts.undecided;
        return;
    }
    Tell(&entry, difference->what, difference->expected, difference->got);
}

std::optional<ValueDifference> ReplayComparison::FindDifferenceOf(const RecordedCall &call, std::int32_t result,
                                                                  const ValueWriter &given)
{
    if (call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_OUTPUT))
    {
        const std::scoped_lock hold(lock);
        return outputs.Compare(call, result, given.Values());
    }
    const std::int32_t recorded = call.exit->header.result;
    if (result != recorded)
    {
        return ValueDifference{"result", tarn_host::ResultText(static_cast<std::uint32_t>(recorded)),
                               tarn_host::ResultText(static_cast<std::uint32_t>(result))};
    }
    if (call.exit->Values().Find(TARN_VALUE_EVENT_TYPE))
    {
        const std::scoped_lock hold(lock);
        return events.Compare(call, given);
    }
    return FindDifference(call.exit->Values(), given.Values());
}

void ReplayComparison::End()
{
    const RecordedCall *missing = nullptr;
    {
        const std::scoped_lock hold(lock);
        missing = events.FirstMissing(outputs.CutFrames());
    }
    if (missing != nullptr)
    {
        Tell(missing->entry, "event", tarn_replay::ToText(*missing->exit->Values().Find(TARN_VALUE_EVENT_TYPE)),
             "another");
    }
}

void ReplayComparison::Tell(const Record *at, std::string what, std::string expected, std::string got)
{
    const std::scoped_lock hold(lock);
    if (!first)
    {
        first = ReplayDifference{at != nullptr ? at : current, std::move(what), std::move(expected), std::move(got)};
    }
}

void ReplayComparison::GoTo(const Record *record)
{
    const std::scoped_lock hold(lock);
    current = record;
}

bool ReplayComparison::IsDifferent() const
{
    const std::scoped_lock hold(lock);
    return first.has_value();
}

std::optional<ReplayDifference> ReplayComparison::First() const
{
    const std::scoped_lock hold(lock);
    return first;
}

ReplayCounts ReplayComparison::Counts() const
{
    const std::scoped_lock hold(lock);
    ReplayCounts now = counts;
    now.pictures = outputs.Pictures();
    now.cutFrames = outputs.CutFrames();
    return now;
}

std::string ReplayComparison::LineOf(const Record &record) const
{
    const double milliseconds =
        static_cast<double>(record.header.clock - session.Files().front().header.startClock) / 1e4;
    std::array<char, 96> head{};
    std::snprintf(head.data(), head.size(), "#%llu  %.3f ms  thread %u  ",
                  static_cast<unsigned long long>(record.header.sequence), milliseconds, record.header.thread);
    return head.data() + tarn_host::RecordTypeText(record.header.type) + "  " + tarn_host::RecordText(session, record);
}

// The last records of its thread.
std::string ReplayComparison::Before(const Record &record) const
{
    std::vector<const Record *> last;
    for (const Record &one : session.Records())
    {
        if (one.header.sequence > record.header.sequence)
        {
            break;
        }
        if (one.header.thread == record.header.thread)
        {
            last.push_back(&one);
        }
    }
    std::string text;
    for (std::size_t i = last.size() - std::min(last.size(), kRecordsBefore); i < last.size(); ++i)
    {
        text += "  " + LineOf(*last[i]) + "\n";
    }
    return text;
}

std::string ReplayComparison::ToText() const
{
    const std::scoped_lock hold(lock);
    std::string text = std::to_string(counts.calls) + " calls, " + std::to_string(counts.frames) + " frames, " +
                       std::to_string(counts.events) + " events and " + std::to_string(outputs.Pictures()) +
                       " pictures compared: ";
    if (first)
    {
        text += "different\n";
        text += (first->at != nullptr ? "at " + LineOf(*first->at) + "\n" : "") + "what      " + first->what +
                "\nexpected  " + first->expected + "\ngot       " + first->got + "\n";
        text += first->at != nullptr ? "what led to it, on the same thread:\n" + Before(*first->at) : "";
        return text;
    }
    text += "no difference\n";
    if (counts.undecided != 0)
    {
        text += std::to_string(counts.undecided) +
                " answers depend on which of two threads came first and were not compared\n";
    }
    return text;
}

} // namespace tarn_replay
