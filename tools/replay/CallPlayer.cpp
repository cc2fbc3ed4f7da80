#include "tools/replay/CallPlayer.h"

#include <algorithm>
#include <thread>

#include "tools/frameserver/TransformKind.h"
#include "tools/names/PipelineNames.h"
#include "tools/recording/StateChanges.h"
#include "tools/replay/ComValues.h"

namespace tarn_replay
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace
{
constexpr auto kCallLimit = 30s;
constexpr auto kPoll = 2ms;
// A change has closed its outputs by then; what waits for frames in flight can be let through.
constexpr auto kChangeBegun = 150ms;
// An event that is under way has come by then; otherwise it needs a further frame.
constexpr auto kEventUnderWay = 200ms;

CLSID ClassOf(const Record &record)
{
    const auto id = record.Values().Find(TARN_VALUE_CLASS_ID);
    if (const auto guid = id ? id->AsGuid() : std::nullopt)
    {
        return ToGuid(*guid);
    }
    const auto name = record.Values().Find(TARN_VALUE_NAME);
    const bool isColor = name && name->Text().value_or("").find("Color") != std::string_view::npos;
    return tarn_host::ClassOf(isColor ? tarn_host::TransformKind::Color : tarn_host::TransformKind::Depth);
}

std::string EventText(const RecordedCall &call)
{
    const auto type = call.exit->Values().Unsigned(TARN_VALUE_EVENT_TYPE);
    return type ? tarn_host::EventTypeText(static_cast<std::uint32_t>(*type)) : "an end";
}
} // namespace

CallPlayer::CallPlayer(const RecordedSession &recordedSession, const tarn_host::LoadedModule &loadedModule,
                       ReplayComparison &replayComparison)
    : session(recordedSession), module(loadedModule), comparison(replayComparison), pixels(recordedSession),
      maps(recordedSession)
{
}

CallPlayer::~CallPlayer() = default;

void CallPlayer::Play(const PlayOptions &options)
{
    eventLimit = options.eventLimit;
    const ReplayScript script(session);
    const auto startedAt = Clock::now();
    const std::uint64_t startClock = session.Records().empty() ? 0 : session.Records().front().header.clock;
    std::uint64_t last = 0;
    for (const Step &step : script.Steps())
    {
        const auto &head = step.action == Step::Action::EndWait ? step.call->exit->header : step.record->header;
        if (options.until && head.sequence > *options.until)
        {
            continue;
        }
        if (options.recordedSpeed && head.clock > startClock)
        {
            using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
            std::this_thread::sleep_until(startedAt +
                                          std::chrono::duration_cast<Clock::duration>(Ticks(head.clock - startClock)));
        }
        comparison.GoTo(step.record);
        try
        {
            Do(step);
        }
        catch (const std::exception &error)
        {
            comparison.Tell(step.record, "the step cannot be made", "", error.what());
        }
        if (comparison.IsDifferent())
        {
            break;
        }
        last = std::max(last, head.sequence);
    }
    isBehindEnd = true;
    for (const auto &[number, transform] : transforms)
    {
        if (const auto missing = transform.camera->Answers().FirstNotAsked(last))
        {
            comparison.Tell(nullptr, *missing, "asked", "not asked");
        }
    }
    if (!options.until)
    {
        comparison.End();
    }
    ReleaseAll();
}

CallPlayer::Transform *CallPlayer::Find(const Record &record)
{
    const auto found = transforms.find(record.header.transform);
    return found == transforms.end() || !found->second.calls ? nullptr : &found->second;
}

void CallPlayer::Do(const Step &step)
{
    switch (step.action)
    {
    case Step::Action::Create:
        return Create(*step.record);
    case Step::Action::Release:
        return Release(*step.record);
    case Step::Action::Call:
        return MakeCall(*step.call);
    case Step::Action::BeginWait:
        return BeginWait(*step.call);
    case Step::Action::EndWait:
        return EndWait(*step.call);
    case Step::Action::RunFrame:
        return RunFrame(*step.call);
    case Step::Action::SignalEvent:
        return SignalEvent(*step.record);
    }
}

void CallPlayer::Create(const Record &record)
{
    const std::uint32_t number = record.header.transform;
    Transform &transform = transforms[number];
    transform.camera = user_space_frameworks::MakeCom<RecordedCamera>(
        session, number, [this](const std::string &difference) { TellOfCamera(difference); });
    ComPtr<IUnknown> filter;
    tarn_host::ThrowIfFailed(transform.camera.As(&filter), "asking the camera for IUnknown");
    transform.calls =
        std::make_shared<ModuleCalls>(module.Create(ClassOf(record)), filter, pixels, session.HoldsPictures());
}

// Behind its end the recording does not tell what the camera is asked.
void CallPlayer::TellOfCamera(const std::string &difference)
{
    if (!isBehindEnd)
    {
        comparison.Tell(nullptr, difference, "", "");
    }
}

void CallPlayer::Release(const Record &record)
{
    Transform *const transform = Find(record);
    if (transform == nullptr)
    {
        return;
    }
    const ULONG left = transform->calls->Close();
    transform->calls.reset();
    if (left != 0)
    {
        comparison.Tell(&record, "references left on the transform", "0", std::to_string(left));
    }
}

void CallPlayer::Run(CallThread &thread, const std::shared_ptr<ModuleCalls> &calls, const Record &entry,
                     const std::shared_ptr<Answer> &answer)
{
    thread.Start([calls, answer, &entry] {
        try
        {
            answer->result = calls->Make(entry, answer->given);
        }
        catch (const std::exception &error)
        {
            answer->failure = error.what();
        }
    });
}

void CallPlayer::MakeCall(const RecordedCall &call)
{
    Transform *const transform = Find(*call.entry);
    if (transform == nullptr)
    {
        return; // made before the recording began, or after its end
    }
    if (ConfidenceMaps::AreSwitchedOff(*call.entry))
    {
        RunFramesWithMap(*transform, *call.entry);
    }
    const auto answer = std::make_shared<Answer>();
    HasNews(*transform);                // what has come by now is none of the call's
    isBehindEnd = call.exit == nullptr; // the recording ends within it
    Run(caller, transform->calls, *call.entry, answer);
    const bool hasReturned = AwaitCall(call);
    isBehindEnd = false;
    if (hasReturned)
    {
        AfterCall(call, *answer);
    }
}

// A change of state may wait for frames in flight. Those are not let through before it has closed its outputs: an event
// that arrives tells so, or time.
bool CallPlayer::AwaitCall(const RecordedCall &call)
{
    Transform &transform = *Find(*call.entry);
    const bool isChange = tarn_recording::IsStateChange(*call.entry);
    const auto begun = Clock::now();
    while (!caller.Wait(isChange ? std::chrono::milliseconds(kPoll) : std::chrono::milliseconds(kCallLimit)))
    {
        const auto elapsed = Clock::now() - begun;
        if (elapsed >= kCallLimit)
        {
            comparison.Tell(call.entry, "the call did not return in 30 s", "a return", "none");
            return false;
        }
        if ((HasNews(transform) || elapsed >= kChangeBegun) && transform.calls->WorkQueue() != nullptr)
        {
            transform.calls->WorkQueue()->RunAll();
            transform.nextRun = transform.frames.size();
        }
    }
    return true;
}

bool CallPlayer::HasNews(Transform &transform)
{
    bool hasNews = false;
    for (auto &[thread, waiting] : transform.waits)
    {
        const bool came = waiting.isUnderWay && waiting.thread.Wait(0ms);
        hasNews = hasNews || (came && !waiting.hasCome);
        waiting.hasCome = came;
    }
    return hasNews;
}

void CallPlayer::AfterCall(const RecordedCall &call, const Answer &answer)
{
    if (!answer.failure.empty())
    {
        comparison.Tell(call.entry, "the call cannot be made", "", answer.failure);
        return;
    }
    Transform &transform = *Find(*call.entry);
    if (call.entry->Is(TARN_RECORD_CALL, TARN_CALL_PROCESS_INPUT) && transform.calls->WorkQueue() != nullptr)
    {
        transform.frames.push_back({call.Sequence(), transform.calls->WorkQueue()->PutGate()});
    }
    comparison.Compare(call, answer.result, answer.given);
}

void CallPlayer::BeginWait(const RecordedCall &call)
{
    Transform *const transform = Find(*call.entry);
    if (transform == nullptr)
    {
        return;
    }
    Waiting &waiting = transform->waits[call.entry->header.thread];
    waiting.answer = std::make_shared<Answer>();
    waiting.isUnderWay = true;
    waiting.hasCome = false;
    Run(waiting.thread, transform->calls, *call.entry, waiting.answer);
}

void CallPlayer::EndWait(const RecordedCall &call)
{
    Transform *const transform = Find(*call.entry);
    if (transform == nullptr)
    {
        return;
    }
    Waiting &waiting = transform->waits[call.entry->header.thread];
    const auto begun = Clock::now();
    while (!waiting.thread.Wait(kPoll))
    {
        const auto elapsed = Clock::now() - begun;
        if (elapsed >= eventLimit)
        {
            comparison.Tell(call.entry, "the event did not come in time", EventText(call), "none");
            return;
        }
        if (elapsed >= kEventUnderWay)
        {
            RunNextFrame(*transform);
        }
    }
    waiting.isUnderWay = false;
    if (!waiting.answer->failure.empty())
    {
        comparison.Tell(call.entry, "the call cannot be made", "", waiting.answer->failure);
        return;
    }
    comparison.Compare(call, waiting.answer->result, waiting.answer->given);
}

void CallPlayer::RunNextFrame(Transform &transform)
{
    if (transform.nextRun == transform.frames.size())
    {
        return;
    }
    const Frame &frame = transform.frames[transform.nextRun++];
    if (!transform.calls->WorkQueue()->RunUpTo(frame.gate, eventLimit))
    {
        comparison.Tell(session.Find(frame.call), "the frame was not processed in time", "processed", "not processed");
    }
}

void CallPlayer::RunFrame(const RecordedCall &frame)
{
    Transform *const transform = Find(*frame.entry);
    if (transform == nullptr)
    {
        return;
    }
    const auto found = std::ranges::find(transform->frames, frame.Sequence(), &Frame::call);
    const auto behind = found == transform->frames.end() ? 0 : found - transform->frames.begin() + 1;
    while (static_cast<std::ptrdiff_t>(transform->nextRun) < behind)
    {
        RunNextFrame(*transform);
    }
}

// A frame that was under way when an application switched the confidence map off may still have come with one.
void CallPlayer::RunFramesWithMap(Transform &transform, const Record &entry)
{
    RecordedCall last;
    for (std::size_t i = transform.nextRun; i < transform.frames.size(); ++i)
    {
        const Record *const call = session.Find(transform.frames[i].call);
        const auto time = call->Values().Items(TARN_VALUE_SAMPLE).Signed(TARN_VALUE_TIME);
        if (time && maps.Has(entry.header.transform, *time))
        {
            last.entry = call;
        }
    }
    if (last.entry != nullptr)
    {
        RunFrame(last);
    }
}

// The module asks the camera about it on a thread of its own, and has done so before the session goes on.
void CallPlayer::SignalEvent(const Record &record)
{
    Transform *const transform = Find(record);
    if (transform == nullptr)
    {
        return;
    }
    transform->camera->SignalEvent();
    const auto end = Clock::now() + eventLimit;
    const auto &records = session.Records();
    for (auto at = records.begin() + (&record - records.data()) + 1; at != records.end(); ++at)
    {
        const bool isQuestion = at->header.type == TARN_RECORD_KS_CALL && at->header.entry == record.header.sequence;
        while (isQuestion && !transform->camera->Answers().WasAsked(at->header.sequence))
        {
            if (Clock::now() >= end)
            {
                comparison.Tell(&*at, "the camera's event led to no question in time", "a question", "none");
                return;
            }
            std::this_thread::sleep_for(kPoll);
        }
    }
}

// Of a session that ends in the middle.
void CallPlayer::ReleaseAll()
{
    for (auto &[number, transform] : transforms)
    {
        if (!transform.calls || !caller.Wait(0ms))
        {
            continue; // a call that hangs holds it
        }
        if (transform.calls->WorkQueue() != nullptr)
        {
            transform.calls->WorkQueue()->OpenAll();
        }
        caller.Start([calls = transform.calls] { calls->End(); });
        caller.Wait(kCallLimit);
        for (auto &[thread, waiting] : transform.waits)
        {
            waiting.thread.Wait(eventLimit);
        }
        transform.calls->Close();
        transform.calls.reset();
    }
}

} // namespace tarn_replay
