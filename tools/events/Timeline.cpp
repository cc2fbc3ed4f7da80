#include "tools/events/Timeline.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/events/RecordText.h"
#include "tools/names/Format.h"

namespace tarn_host
{

namespace
{
constexpr std::size_t kLongestLine = 2000;

double SecondsOf(const RecordedSession &session, const Record &record)
{
    return static_cast<double>(Between(session.Files().front().header.startClock, record.header.clock)) / 1e7;
}

bool IsFailure(const RecordedSession &session, const Record &record)
{
    switch (record.header.type)
    {
    case TARN_RECORD_CALL:
    case TARN_RECORD_KS_CALL: {
        const Record *const end = session.EndOf(record);
        return end == nullptr || (end->Failed() && !IsOrdinaryFailure(session, *end));
    }
    case TARN_RECORD_RETURN:
    case TARN_RECORD_KS_RETURN:
        return record.Failed() && !IsOrdinaryFailure(session, record);
    case TARN_RECORD_EVENT:
        return (record.Values().Unsigned(TARN_VALUE_EVENT_STATUS).value_or(0) & 0x80000000U) != 0;
    case TARN_RECORD_DROPPED:
        return true;
    default:
        return false;
    }
}

RecordKind KindOfCall(std::uint16_t call) noexcept
{
    switch (call)
    {
    case TARN_CALL_PROCESS_INPUT:
    case TARN_CALL_PROCESS_OUTPUT:
        return RecordKind::Frame;
    case TARN_CALL_INITIALIZE_TRANSFORM:
    case TARN_CALL_SET_INPUT_STREAM_STATE:
    case TARN_CALL_SET_OUTPUT_STREAM_STATE:
    case TARN_CALL_SHUTDOWN:
        return RecordKind::State;
    default:
        return RecordKind::Call;
    }
}
} // namespace

RecordKind KindOf(const Record &record) noexcept
{
    switch (record.header.type)
    {
    case TARN_RECORD_CALL:
    case TARN_RECORD_RETURN:
        return KindOfCall(record.header.subject);
    case TARN_RECORD_TRANSFORM:
        return RecordKind::State;
    case TARN_RECORD_EVENT:
        return RecordKind::Event;
    case TARN_RECORD_KS_CALL:
    case TARN_RECORD_KS_RETURN:
        return (record.header.subject & TARN_KS_TO_CAMERA) != 0 ? RecordKind::Camera : RecordKind::Ks;
    case TARN_RECORD_DEVICE_EVENT:
    case TARN_RECORD_CAMERA:
        return RecordKind::Camera;
    case TARN_RECORD_PIXELS:
    case TARN_RECORD_OUTPUT_HASH:
        return RecordKind::Frame;
    default:
        return RecordKind::Session;
    }
}

bool RecordFilter::Passes(const RecordedSession &session, const Record &record) const
{
    const double seconds = SecondsOf(session, record);
    return seconds >= fromSeconds && seconds <= toSeconds &&
           (threads.empty() || threads.contains(record.header.thread)) &&
           (transforms.empty() || transforms.contains(record.header.transform)) &&
           (kinds.empty() || kinds.contains(KindOf(record))) && (!failuresOnly || IsFailure(session, record));
}

std::string TimelineLine(const RecordedSession &session, const Record &record)
{
    std::string text = RecordText(session, record);
    if (text.size() > kLongestLine)
    {
        text = text.substr(0, kLongestLine) + "...";
    }
    return Format("%8llu %12.6f  thread %5lu  T%lu  ", static_cast<unsigned long long>(record.header.sequence),
                  SecondsOf(session, record), static_cast<unsigned long>(record.header.thread),
                  static_cast<unsigned long>(record.header.transform)) +
           text;
}

void WriteTimeline(const RecordedSession &session, const RecordFilter &filter, std::ostream &output)
{
    for (const Record &record : session.Records())
    {
        if (filter.Passes(session, record))
        {
            output << TimelineLine(session, record) << '\n';
        }
    }
}

void WriteTimelineJson(const RecordedSession &session, const RecordFilter &filter, std::ostream &output)
{
    const char *before = "[";
    for (const Record &record : session.Records())
    {
        if (filter.Passes(session, record))
        {
            output << before << '\n'
                   << RecordJson(session, record).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
            before = ",";
        }
    }
    output << (*before == '[' ? "[]" : "\n]");
}

} // namespace tarn_host
