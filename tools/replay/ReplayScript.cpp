#include "tools/replay/ReplayScript.h"

#include <algorithm>
#include <tuple>

#include "tools/recording/StateChanges.h"

namespace tarn_replay
{

using tarn_recording::IsStateChange;

namespace
{
constexpr std::uint32_t kHaveOutput = 602;      // METransformHaveOutput
constexpr std::uint32_t kStop = 0;              // DeviceStreamState_Stop
constexpr std::uint32_t kNoWait = 1;            // MF_EVENT_FLAG_NO_WAIT
constexpr std::int32_t kShutDown = -1072873851; // MF_E_SHUTDOWN

bool IsCall(const Record &record)
{
    return record.header.type == TARN_RECORD_CALL ||
           (record.header.type == TARN_RECORD_KS_CALL && (record.header.subject & TARN_KS_TO_CAMERA) == 0);
}

bool Overlap(const RecordedCall &one, const RecordedCall &other)
{
    const auto end = [](const RecordedCall &call) { return call.exit ? call.exit->header.sequence : call.Sequence(); };
    return one.Sequence() < end(other) && other.Sequence() < end(one);
}

bool IsHaveOutput(const Record &record)
{
    return record.header.type == TARN_RECORD_EVENT && record.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == kHaveOutput;
}

std::optional<std::int64_t> TimeOf(const Record &call)
{
    return call.Values().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
}
} // namespace

bool IsWaiting(const Record &entry)
{
    return entry.Is(TARN_RECORD_CALL, TARN_CALL_GET_EVENT) &&
           (entry.Values().Unsigned(TARN_VALUE_FLAGS).value_or(0) & kNoWait) == 0;
}

ReplayScript::ReplayScript(const RecordedSession &session) : records(session.Records())
{
    CollectCalls(session);
    FindDeliveries();
    PlaceChanges();
    for (const RecordedCall &call : calls)
    {
        PlaceCall(call);
    }
    PlaceOthers();
    std::ranges::stable_sort(placed, {}, [](const Placed &one) { return std::tuple(one.at.sequence, one.at.rank); });
    std::ranges::transform(placed, std::back_inserter(steps), &Placed::step);
}

void ReplayScript::CollectCalls(const RecordedSession &session)
{
    const auto besideChanges = tarn_recording::CallsBesideChanges(session);
    for (const Record &record : records)
    {
        // What a call makes in turn, its replay makes by itself.
        if (IsCall(record) && record.header.entry == 0)
        {
            calls.push_back({&record, session.EndOf(record), besideChanges.contains(record.header.sequence)});
        }
    }
    for (const RecordedCall &call : calls)
    {
        if (const auto time = TimeOf(*call.entry); time && call.entry->header.subject == TARN_CALL_PROCESS_INPUT)
        {
            frames.emplace_back(*time, &call);
        }
    }
    std::ranges::stable_sort(frames, {}, &std::pair<std::int64_t, const RecordedCall *>::first);
}

// From the announcements, which tell more, or else from what was fetched.
void ReplayScript::FindDeliveries()
{
    for (const Record &record : records)
    {
        const auto values = record.Values();
        if (IsHaveOutput(record))
        {
            const auto time = values.Signed(TARN_VALUE_TIME);
            const auto stream = values.Unsigned(TARN_VALUE_STREAM);
            if (time && stream)
            {
                deliveries.push_back({record.header.transform, *time, static_cast<std::uint32_t>(*stream)});
            }
        }
        if (!record.Is(TARN_RECORD_RETURN, TARN_CALL_PROCESS_OUTPUT))
        {
            continue;
        }
        for (const auto &value : values)
        {
            const auto time = value.Items().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
            const auto stream = value.Items().Unsigned(TARN_VALUE_STREAM);
            if (value.Name() == TARN_VALUE_BUFFER && time && stream)
            {
                deliveries.push_back({record.header.transform, *time, static_cast<std::uint32_t>(*stream)});
            }
        }
    }
    std::ranges::sort(deliveries);
}

void ReplayScript::PlaceChanges()
{
    for (const RecordedCall &change : calls)
    {
        if (!IsStateChange(*change.entry) || change.exit == nullptr)
        {
            continue;
        }
        // Calls are sorted by entry: those that overlap begin before its end.
        const bool isAlone = std::ranges::none_of(calls, [&](const RecordedCall &other) {
            return &other != &change && other.entry->header.transform == change.entry->header.transform &&
                   Overlap(change, other);
        });
        if (const auto window = isAlone ? std::nullopt : WindowOf(change))
        {
            windows.push_back(*window);
        }
    }
}

std::optional<ReplayScript::Window> ReplayScript::WindowOf(const RecordedCall &change) const
{
    const auto output = change.entry->Values().Unsigned(TARN_VALUE_STREAM);
    const bool isStop = change.entry->Is(TARN_RECORD_CALL, TARN_CALL_SET_OUTPUT_STREAM_STATE) &&
                        change.entry->Values().Unsigned(TARN_VALUE_STATE) == kStop;
    const auto first = std::ranges::upper_bound(records, change.Sequence(), {},
                                                [](const Record &record) { return record.header.sequence; });
    for (auto at = first; at != records.end() && at->header.sequence < change.exit->header.sequence; ++at)
    {
        if (at->header.transform != change.entry->header.transform)
        {
            continue;
        }
        if (at->header.type == TARN_RECORD_EVENT &&
            (at->header.thread == change.entry->header.thread || at->header.entry == change.Sequence()))
        {
            return Window{&change, at->header.sequence, true};
        }
        const bool tellsShutdown = at->header.type == TARN_RECORD_RETURN && at->header.result == kShutDown;
        const auto time = IsHaveOutput(*at) ? at->Values().Signed(TARN_VALUE_TIME) : std::nullopt;
        const bool lacksOutput =
            time && isStop &&
            !std::ranges::binary_search(
                deliveries, Delivery{at->header.transform, *time, static_cast<std::uint32_t>(output.value_or(0))});
        if (tellsShutdown || lacksOutput)
        {
            return Window{&change, at->header.sequence, false};
        }
    }
    return Window{&change, change.exit->header.sequence, false};
}

ReplayScript::Position ReplayScript::PlaceOf(const RecordedCall &call) const
{
    constexpr int kBefore = -1;
    const auto own = std::ranges::find(windows, &call, &Window::change);
    if (own != windows.end())
    {
        return {own->turn, kBefore};
    }
    const auto time = call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT) ? TimeOf(*call.entry) : std::nullopt;
    if (time && call.isUndecided)
    {
        const std::uint32_t transform = call.entry->header.transform;
        const auto delivery = std::ranges::lower_bound(deliveries, Delivery{transform, *time, 0});
        const bool isLost = delivery == deliveries.end() || delivery->transform != transform || delivery->time != *time;
        const auto window = std::ranges::find_if(
            windows, [&](const Window &one) { return one.endsFrames && Overlap(*one.change, call); });
        if (isLost && window != windows.end() && window->turn < call.Sequence())
        {
            return {window->turn, kBefore - 1};
        }
    }
    return {call.Sequence(), 0};
}

void ReplayScript::PlaceCall(const RecordedCall &call)
{
    const Position at = PlaceOf(call);
    if (!IsWaiting(*call.entry))
    {
        placed.push_back({at, {Step::Action::Call, call.entry, &call}});
        return;
    }
    placed.push_back({at, {Step::Action::BeginWait, call.entry, &call}});
    if (call.exit != nullptr)
    {
        placed.push_back({{call.exit->header.sequence, 0}, {Step::Action::EndWait, call.entry, &call}});
    }
}

void ReplayScript::PlaceOthers()
{
    for (const Record &record : records)
    {
        const Position at{record.header.sequence, 0};
        if (record.header.type == TARN_RECORD_TRANSFORM)
        {
            placed.push_back(
                {at, {record.header.subject != 0 ? Step::Action::Create : Step::Action::Release, &record, nullptr}});
        }
        else if (record.header.type == TARN_RECORD_DEVICE_EVENT)
        {
            placed.push_back({at, {Step::Action::SignalEvent, &record, nullptr}});
        }
        else if (const RecordedCall *const frame = IsHaveOutput(record) ? FrameOf(record) : nullptr)
        {
            placed.push_back({at, {Step::Action::RunFrame, &record, frame}});
        }
    }
}

// The last one of that time before the event.
const RecordedCall *ReplayScript::FrameOf(const Record &event) const
{
    const auto time = event.Values().Signed(TARN_VALUE_TIME);
    const RecordedCall *found = nullptr;
    if (time)
    {
        for (auto at =
                 std::ranges::lower_bound(frames, *time, {}, &std::pair<std::int64_t, const RecordedCall *>::first);
             at != frames.end() && at->first == *time; ++at)
        {
            if (at->second->entry->header.transform == event.header.transform &&
                at->second->Sequence() < event.header.sequence)
            {
                found = at->second;
            }
        }
    }
    return found;
}

} // namespace tarn_replay
