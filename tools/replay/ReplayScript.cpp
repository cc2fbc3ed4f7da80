#include "tools/replay/ReplayScript.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "tools/recording/StateChanges.h"

namespace tarn_replay
{

using tarn_recording::IsStateChange;

namespace
{
constexpr int kBefore = -1; // rank of what comes before a record
constexpr int kBehind = 1;
constexpr std::uint32_t kStop = 0;   // DeviceStreamState_Stop
constexpr std::uint32_t kNoWait = 1; // MF_EVENT_FLAG_NO_WAIT

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

std::uint64_t SequenceOf(const Record &record)
{
    return record.header.sequence;
}

// What a change does to others: an event, or a control of the camera.
bool IsEffect(const Record &record)
{
    return record.header.type == TARN_RECORD_EVENT ||
           (record.header.type == TARN_RECORD_KS_CALL && tarn_recording::IsPropertySet(record));
}

// Of the change that comes next.
bool BeginsOther(const Record &record, std::uint64_t begin)
{
    return record.header.type == TARN_RECORD_CHANGE && record.header.sequence > begin;
}

bool TellsShutdown(const Record &record)
{
    return record.header.type == TARN_RECORD_RETURN && record.header.result == kShutDown;
}
} // namespace

bool IsWaiting(const Record &entry)
{
    return entry.Is(TARN_RECORD_CALL, TARN_CALL_GET_EVENT) &&
           (entry.Values().Unsigned(TARN_VALUE_FLAGS).value_or(0) & kNoWait) == 0;
}

ReplayScript::ReplayScript(const RecordedSession &session) : records(session.Records()), deliveries(session)
{
    CollectCalls(session);
    MarkShutdown();
    PlaceChanges();
    for (const RecordedCall &call : calls)
    {
        PlaceCall(call);
    }
    PlaceOthers();
    std::ranges::stable_sort(placed, {}, &Placed::at);
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
}

void ReplayScript::MarkShutdown()
{
    for (const RecordedCall &end : calls)
    {
        if (!end.entry->Is(TARN_RECORD_CALL, TARN_CALL_SHUTDOWN))
        {
            continue;
        }
        for (RecordedCall &call : calls)
        {
            call.isBesideShutdown =
                call.isBesideShutdown ||
                (call.entry->header.transform == end.entry->header.transform && &call != &end && Overlap(end, call));
        }
    }
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

ReplayScript::Position ReplayScript::PlaceOfSignal(const Record &deviceEvent) const
{
    constexpr int kBeforeAll = -3;
    const std::uint64_t sequence = deviceEvent.header.sequence;
    for (const RecordedCall &call : calls)
    {
        if (call.Sequence() > sequence)
        {
            break;
        }
        const bool isInside = call.exit != nullptr && call.exit->header.sequence > sequence &&
                              call.entry->header.transform == deviceEvent.header.transform;
        if (isInside && IsStateChange(*call.entry) && EndsListening(call, sequence))
        {
            return {std::min(PlaceOf(call).sequence, sequence), kBeforeAll};
        }
    }
    return {sequence, 0};
}

// Whether the camera's event is given up between that record and the call's end.
bool ReplayScript::EndsListening(const RecordedCall &call, std::uint64_t after) const
{
    const auto first =
        std::ranges::upper_bound(records, after, {}, [](const Record &record) { return record.header.sequence; });
    const auto last = std::ranges::lower_bound(records, call.exit->header.sequence, {},
                                               [](const Record &record) { return record.header.sequence; });
    return std::any_of(first, last, [](const Record &record) {
        const auto request = record.Values().Find(TARN_VALUE_REQUEST);
        return record.Is(TARN_RECORD_KS_CALL, TARN_KS_EVENT | TARN_KS_TO_CAMERA) && request && request->IsNull();
    });
}

std::optional<ReplayScript::Window> ReplayScript::WindowOf(const RecordedCall &change) const
{
    const std::uint64_t begin = BeginOf(change);
    const bool excludesOthers = begin != 0;
    const bool isStop = change.entry->Is(TARN_RECORD_CALL, TARN_CALL_SET_OUTPUT_STREAM_STATE) &&
                        change.entry->Values().Unsigned(TARN_VALUE_STATE) == std::uint64_t{kStop};
    const auto output = change.entry->Values().Unsigned(TARN_VALUE_STREAM);
    const bool isFlush = change.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_MESSAGE);
    if (const std::uint64_t split = isStop && excludesOthers ? SplitBefore(change) : 0; split != 0)
    {
        return Window{&change, split, false};
    }
    std::uint64_t lastOfBefore = 0; // a frame that was under way when a flush began
    const auto first = std::ranges::upper_bound(records, change.Sequence(), {}, SequenceOf);
    for (auto at = first; at != records.end() && at->header.sequence < change.exit->header.sequence; ++at)
    {
        if (at->header.transform != change.entry->header.transform)
        {
            continue;
        }
        if (at->header.entry == change.Sequence() && IsEffect(*at))
        {
            return Window{&change, at->header.sequence, at->header.type == TARN_RECORD_EVENT};
        }
        if (excludesOthers && (TellsShutdown(*at) || BeginsOther(*at, begin) ||
                               (isStop && IsHaveOutput(*at) && deliveries.Lacks(*at, output))))
        {
            return Window{&change, at->header.sequence, false};
        }
        const RecordedCall *const frame = isFlush && IsHaveOutput(*at) ? FrameOf(*at) : nullptr;
        if (frame != nullptr && frame->Sequence() < change.Sequence())
        {
            lastOfBefore = at->header.sequence;
        }
    }
    if (isFlush)
    {
        return Window{&change, std::max(change.Sequence(), lastOfBefore + 1), true};
    }
    // A stop takes its time until it shows; what has no effect has none from its beginning on.
    return excludesOthers ? std::optional(Window{&change, isStop ? change.exit->header.sequence : begin, false})
                          : std::nullopt;
}

// The announcement of a frame that had come out of another output when the stop took this one away; 0 when none had.
std::uint64_t ReplayScript::SplitBefore(const RecordedCall &stop) const
{
    const auto output = stop.entry->Values().Unsigned(TARN_VALUE_STREAM);
    std::uint64_t split = 0;
    for (auto at = stop.entry; at != records.data(); --at)
    {
        const Record &record = *(at - 1);
        const bool isOwn = record.header.transform == stop.entry->header.transform;
        if (isOwn && record.header.type == TARN_RECORD_CHANGE)
        {
            return 0; // the output brought nothing since
        }
        if (!isOwn || !IsHaveOutput(record))
        {
            continue;
        }
        if (record.Values().Unsigned(TARN_VALUE_STREAM) == output)
        {
            return split;
        }
        if (split != 0)
        {
            return deliveries.Lacks(record, output) ? 0 : split; // the frame before came out of both
        }
        split = deliveries.Lacks(record, output) ? record.header.sequence : 0;
        if (split == 0)
        {
            return 0;
        }
    }
    return 0;
}

// Where it began to change the state alone; 0 when it did not.
std::uint64_t ReplayScript::BeginOf(const RecordedCall &change) const
{
    const auto first = std::ranges::upper_bound(records, change.Sequence(), {}, SequenceOf);
    const auto begin = std::find_if(first, records.end(), [&](const Record &record) {
        return record.header.sequence > change.exit->header.sequence ||
               (record.header.type == TARN_RECORD_CHANGE && record.header.entry == change.Sequence());
    });
    return begin != records.end() && begin->header.type == TARN_RECORD_CHANGE ? begin->header.sequence : 0;
}

ReplayScript::Position ReplayScript::PlaceOf(const RecordedCall &call) const
{
    const auto own = std::ranges::find(windows, &call, &Window::change);
    if (own != windows.end())
    {
        return {own->turn, kBefore};
    }
    const auto time = call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT) ? TimeOf(*call.entry) : std::nullopt;
    if (time && call.isUndecided)
    {
        return PlaceOfFrame(call, *time);
    }
    const bool hasFetched = call.exit != nullptr && call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_OUTPUT);
    const std::uint64_t announced = hasFetched ? deliveries.LastAnnouncementOf(*call.exit) : 0;
    return announced > call.Sequence() ? Position{announced, kBehind} : Position{call.Sequence(), 0};
}

ReplayScript::Position ReplayScript::PlaceOfFrame(const RecordedCall &call, std::int64_t time) const
{
    const auto *const delivery = deliveries.Find(call.entry->header.transform, time, std::nullopt, call.Sequence());
    Position place{call.Sequence(), 0};
    for (const Window &window : windows)
    {
        if (!window.endsFrames || !Overlap(*window.change, call))
        {
            continue;
        }
        if (delivery == nullptr && window.turn < place.sequence)
        {
            place = {window.turn, kBefore - 1};
        }
        if (delivery != nullptr && window.turn < delivery->sequence && place.sequence < window.turn)
        {
            place = {window.turn, 0};
        }
    }
    return place;
}

void ReplayScript::PlaceCall(const RecordedCall &call)
{
    const Position at = PlaceOf(call);
    if (!IsWaiting(*call.entry))
    {
        placed.push_back({at, {Step::Action::Call, call.entry, &call}});
        return;
    }
    // The end takes what is not fetched with it: who fetched an event of it meanwhile is there before.
    const auto end = std::ranges::find_if(windows, [&](const Window &one) {
        return one.change->entry->Is(TARN_RECORD_CALL, TARN_CALL_SHUTDOWN) && Overlap(*one.change, call);
    });
    const bool isBeforeEnd = end != windows.end() && call.exit != nullptr && call.exit->header.result >= 0;
    placed.push_back({isBeforeEnd ? std::min(at, Position{end->turn, kBefore - 1}) : at,
                      {Step::Action::BeginWait, call.entry, &call}});
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
            placed.push_back({PlaceOfSignal(record), {Step::Action::SignalEvent, &record, nullptr}});
        }
        else if (const RecordedCall *const frame = IsHaveOutput(record) ? FrameOf(record) : nullptr)
        {
            placed.push_back({at, {Step::Action::RunFrame, &record, frame}});
        }
    }
}

const RecordedCall *ReplayScript::FrameOf(const Record &event) const
{
    const Record *const frame = deliveries.FrameOf(event);
    const auto call = frame == nullptr
                          ? calls.end()
                          : std::ranges::lower_bound(calls, frame->header.sequence, {}, &RecordedCall::Sequence);
    return call != calls.end() && call->entry == frame ? &*call : nullptr;
}

} // namespace tarn_replay
