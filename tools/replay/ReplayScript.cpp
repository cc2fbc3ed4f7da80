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
constexpr std::uint32_t kNoWait = 1; // MF_EVENT_FLAG_NO_WAIT

bool IsCall(const Record &record)
{
    return record.header.type == TARN_RECORD_CALL ||
           (record.header.type == TARN_RECORD_KS_CALL && (record.header.subject & TARN_KS_TO_CAMERA) == 0);
}

bool Overlap(const RecordedCall &one, const RecordedCall &other)
{
    const auto end = [](const RecordedCall &call) { return call.exit ? call.exit->header.sequence : call.Sequence(); };
    return one.entry->header.transform == other.entry->header.transform && one.Sequence() < end(other) &&
           other.Sequence() < end(one);
}

std::uint64_t SequenceOf(const Record &record)
{
    return record.header.sequence;
}

bool IsControl(const Record &record)
{
    return record.header.type == TARN_RECORD_KS_CALL && tarn_recording::IsPropertySet(record);
}

// What a change does to others: an event, a control of the camera, samples that are gone.
bool IsEffect(const Record &record)
{
    return record.header.type == TARN_RECORD_EVENT || record.Is(TARN_RECORD_CHANGE, TARN_CHANGE_OUTPUT_EMPTIED) ||
           IsControl(record);
}

// Of the change that comes next.
bool BeginsOther(const Record &record, std::uint64_t begin)
{
    return record.Is(TARN_RECORD_CHANGE, TARN_CHANGE_BEGINS) && record.header.sequence > begin;
}

bool TellsMode(const Record &record)
{
    return record.Is(TARN_RECORD_CHANGE, TARN_CHANGE_FACE_LOGIN);
}

// Its event says that a chain of nodes ended or began. A property may also have the input restarted alone.
bool EndsFrames(const Record &event, const Record &change)
{
    constexpr std::uint64_t kOther = 0; // MEUnknown, of MEDeviceStreamCreated
    return event.header.type == TARN_RECORD_EVENT &&
           (change.header.type == TARN_RECORD_CALL || event.Values().Unsigned(TARN_VALUE_EVENT_TYPE) == kOther);
}

bool IsFlush(const Record &change)
{
    return change.Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_MESSAGE) ||
           change.Is(TARN_RECORD_CALL, TARN_CALL_FLUSH_OUTPUT_STREAM);
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

ReplayScript::ReplayScript(const RecordedSession &session)
    : records(session.Records()), besideChanges(tarn_recording::CallsBesideChanges(session)),
      deliveries(session, besideChanges)
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
    for (const Record &record : records)
    {
        if (TellsMode(record))
        {
            modes[record.header.entry] = record.header.sequence;
        }
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
            call.isBesideShutdown = call.isBesideShutdown || (&call != &end && Overlap(end, call));
        }
    }
}

void ReplayScript::PlaceChanges()
{
    for (const RecordedCall &change : calls)
    {
        const bool isWhole = IsStateChange(*change.entry) && change.exit != nullptr;
        if (const auto window = isWhole ? WindowOf(change) : std::nullopt)
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
    const bool isFlush = IsFlush(*change.entry);
    Window window{&change, 0, 0, 0, isFlush};
    const auto first = std::ranges::upper_bound(records, change.Sequence(), {}, SequenceOf);
    for (auto at = first; at != records.end() && at->header.sequence < change.exit->header.sequence; ++at)
    {
        if (at->header.transform != change.entry->header.transform)
        {
            continue;
        }
        const bool isOwn = at->header.entry == change.Sequence();
        const bool isDecisive = isOwn ? IsEffect(*at) : begin != 0 && (TellsShutdown(*at) || BeginsOther(*at, begin));
        if (isDecisive && (isFlush || window.turn == 0)) // a flush ends with the last output
        {
            window.turn = at->header.sequence;
        }
        if (isOwn && window.control == 0 && IsControl(*at))
        {
            window.control = at->header.sequence;
        }
        window.mode = isOwn && TellsMode(*at) ? at->header.sequence : window.mode;
        window.endsFrames = window.endsFrames || (isOwn && EndsFrames(*at, *change.entry));
    }
    if (window.turn == 0)
    {
        window.turn = isFlush ? change.Sequence() : begin;
    }
    return window.turn == 0 ? std::nullopt : std::optional(window);
}

// Where it began to change the state alone; 0 when it did not.
std::uint64_t ReplayScript::BeginOf(const RecordedCall &change) const
{
    const auto first = std::ranges::upper_bound(records, change.Sequence(), {}, SequenceOf);
    const auto begin = std::find_if(first, records.end(), [&](const Record &record) {
        return record.header.sequence > change.exit->header.sequence ||
               (record.Is(TARN_RECORD_CHANGE, TARN_CHANGE_BEGINS) && record.header.entry == change.Sequence());
    });
    return begin != records.end() && begin->header.entry == change.Sequence() &&
                   begin->header.type == TARN_RECORD_CHANGE
               ? begin->header.sequence
               : 0;
}

ReplayScript::Position ReplayScript::PlaceOf(const RecordedCall &call) const
{
    if (const Window *const window = IsControl(*call.entry) ? WindowBehind(call) : nullptr)
    {
        return {window->turn, kBefore - 1};
    }
    const auto own = std::ranges::find(windows, &call, &Window::change);
    if (own != windows.end())
    {
        return {own->turn, kBefore};
    }
    if (call.isUndecided && call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT))
    {
        return PlaceOfFrame(call);
    }
    if (const auto mode = modes.find(call.Sequence()); mode != modes.end())
    {
        return PlaceOfMode(call, mode->second);
    }
    const bool hasFetched = call.exit != nullptr && call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_OUTPUT);
    const std::uint64_t announced = hasFetched ? deliveries.LastAnnouncementOf(*call.exit) : 0;
    return announced == 0 ? Position{call.Sequence(), 0} : PlaceOfFetch(call, announced);
}

// The change that took up what an application set during it, and said so to the camera afterwards.
const ReplayScript::Window *ReplayScript::WindowBehind(const RecordedCall &setting) const
{
    const auto own = std::ranges::find(windows, &setting, &Window::change);
    const std::uint64_t end = setting.exit != nullptr ? setting.exit->header.sequence : setting.Sequence();
    const std::uint64_t decided = own != windows.end() ? own->turn : end;
    const auto found = std::ranges::find_if(windows, [&](const Window &one) {
        return one.change != &setting && Overlap(*one.change, setting) && one.turn < decided && decided < one.control;
    });
    return found == windows.end() ? nullptr : &*found;
}

// Behind the announcement of what it got, and before what would have taken that away.
ReplayScript::Position ReplayScript::PlaceOfFetch(const RecordedCall &call, std::uint64_t announced) const
{
    Position place = announced > call.Sequence() ? Position{announced, kBehind} : Position{call.Sequence(), 0};
    for (const Window &window : windows)
    {
        const bool isBetween = window.turn > announced && window.turn < place.sequence;
        if (isBetween && Overlap(*window.change, call))
        {
            place = {window.turn, kBefore - 1};
        }
    }
    return place;
}

// A change of outputs is played as a whole; the mode is tied to it before or after its turn.
ReplayScript::Position ReplayScript::PlaceOfMode(const RecordedCall &call, std::uint64_t decided) const
{
    for (const Window &window : windows)
    {
        if (window.mode != 0 && Overlap(*window.change, call))
        {
            if (window.mode < decided && decided < window.turn)
            {
                return {window.turn, 0};
            }
            if (window.turn < decided && decided < window.mode)
            {
                return {window.turn, kBefore - 1};
            }
        }
    }
    return {decided, 0};
}

ReplayScript::Position ReplayScript::PlaceOfFrame(const RecordedCall &call) const
{
    const auto *const delivery = deliveries.Of(*call.entry);
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
