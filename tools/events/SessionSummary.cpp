#include "tools/events/SessionSummary.h"

#include <algorithm>

#include "tools/events/RecordText.h"
#include "tools/events/SessionProblems.h"
#include "tools/names/PipelineNames.h"
#include "tools/recording/RecordingReader.h"

namespace tarn_host
{

namespace
{

std::string TextOf(const Record &record, std::uint16_t name)
{
    const auto value = record.Values().Find(name);
    std::string text(value ? value->Text().value_or("") : "");
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return text;
}

void ReadFiles(const RecordedSession &session, SessionSummary &summary)
{
    const auto &first = session.Files().front().header;
    const auto &last = session.Files().back().header;
    summary.module = tarn_recording::FieldText(first.moduleVersion);
    summary.machine = tarn_recording::FieldText(first.machine);
    summary.processId = first.processId;
    summary.startTime = first.startTime;
    summary.startClock = first.startClock;
    summary.lacksBeginning = first.part != 0;
    summary.isClosed = (last.flags & TARN_RECORDING_CLOSED) != 0;
    summary.holdsPictures = session.HoldsPictures();
    summary.droppedRecords = session.DroppedRecords();
    for (const auto &file : session.Files())
    {
        summary.droppedBytes += file.header.droppedBytes;
    }
    for (const auto &damage : session.Damages())
    {
        summary.damages.push_back((damage.file.empty() ? "" : damage.file + ": ") + damage.ToText());
    }
}

void CountEnd(const RecordedSession &session, const Record &end, CallBooks &books)
{
    const Record *const call = session.Find(end.header.entry);
    ++books.count;
    if (call != nullptr)
    {
        const std::uint64_t ticks = Between(call->header.clock, end.header.clock);
        if (ticks >= books.slowestTicks)
        {
            books.slowestTicks = ticks;
            books.slowestAt = call->header.clock;
        }
        books.ticks.push_back(ticks);
    }
    if (end.header.result != 0)
    {
        ++books.results[EndText(end)];
    }
    if (end.Failed() && !IsOrdinaryFailure(session, end))
    {
        books.firstFailureAt = books.failed == 0 ? end.header.clock : books.firstFailureAt;
        ++books.failed;
    }
}

std::string ChangeText(const Record &call, const Record *end)
{
    const ValueList values = call.Values();
    const auto type = values.Find(TARN_VALUE_MEDIA_TYPE);
    std::string text = CallText(call.header.subject);
    if (const auto stream = values.Unsigned(TARN_VALUE_STREAM))
    {
        text += " " + std::to_string(*stream);
    }
    if (const auto state = values.Unsigned(TARN_VALUE_STATE))
    {
        text += " " + StreamStateText(static_cast<std::uint32_t>(*state));
    }
    if (type && !type->IsNull())
    {
        text += " " + TypeView::Of(type->Items()).ToText();
    }
    return text + (end == nullptr ? ", never returned" : end->header.result != 0 ? ": " + EndText(*end) : "");
}

void TakeCall(const RecordedSession &session, const Record &record, SessionSummary &summary)
{
    const Record *const end = session.EndOf(record);
    if (end == nullptr)
    {
        summary.unfinished.push_back({record.header.sequence, record.header.clock, 0, record.header.thread,
                                      record.header.transform, CallLine(session, record)});
    }
    switch (record.header.type == TARN_RECORD_CALL ? record.header.subject : 0)
    {
    case TARN_CALL_PROCESS_INPUT:
        ++summary.inputFrames[record.header.transform];
        break;
    case TARN_CALL_INITIALIZE_TRANSFORM:
    case TARN_CALL_SET_INPUT_STREAM_STATE:
    case TARN_CALL_SET_OUTPUT_STREAM_STATE:
    case TARN_CALL_SHUTDOWN:
        summary.changes.push_back({record.header.clock, record.header.transform, ChangeText(record, end)});
        break;
    default:
        break;
    }
}

void TakeOther(const RecordedSession &session, const Record &record, SessionSummary &summary)
{
    switch (record.header.type)
    {
    case TARN_RECORD_SESSION:
        summary.process = TextOf(record, TARN_VALUE_PROCESS_PATH);
        break;
    case TARN_RECORD_TRANSFORM:
        if (record.header.subject != 0)
        {
            const std::string name = TextOf(record, TARN_VALUE_NAME);
            const auto classId = record.Values().Find(TARN_VALUE_CLASS_ID);
            const auto guid = classId ? classId->AsGuid() : std::nullopt;
            summary.transforms[record.header.transform] = !name.empty() ? name : guid ? GuidText(guid->bytes) : "";
        }
        break;
    case TARN_RECORD_CALL:
    case TARN_RECORD_KS_CALL:
        TakeCall(session, record, summary);
        break;
    case TARN_RECORD_RETURN:
        CountEnd(session, record, summary.calls[CallText(record.header.subject)]);
        break;
    case TARN_RECORD_KS_RETURN: {
        const bool isToCamera = (record.header.subject & TARN_KS_TO_CAMERA) != 0;
        CountEnd(session, record, (isToCamera ? summary.cameraKs : summary.applicationKs)[KsText(session, record)]);
        break;
    }
    case TARN_RECORD_EVENT:
        ++summary.events[SubjectText(session, record)];
        break;
    case TARN_RECORD_DEVICE_EVENT:
        ++summary.deviceEvents[SubjectText(session, record)];
        break;
    default:
        break;
    }
}

} // namespace

SessionSummary SessionSummary::Of(const RecordedSession &session)
{
    SessionSummary summary;
    ReadFiles(session, summary);
    FrameBooks frames(session);
    std::uint64_t lastClock = summary.startClock;
    for (const Record &record : session.Records())
    {
        lastClock = std::max(lastClock, record.header.clock);
        TakeOther(session, record, summary);
        frames.Take(record);
    }
    summary.records = session.Records().size();
    summary.ticks = Between(summary.startClock, lastClock);
    summary.outputs = frames.Outputs();
    for (UnfinishedCall &call : summary.unfinished)
    {
        call.ticks = Between(call.clock, lastClock);
    }
    summary.problems = ProblemsOf(summary);
    return summary;
}

} // namespace tarn_host
