#include "tools/events/TraceEvents.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <unordered_map>

#include <nlohmann/json.hpp>

#include "tools/events/FrameBooks.h"
#include "tools/events/RecordText.h"
#include "tools/names/Format.h"
#include "tools/names/PipelineNames.h"

namespace tarn_host
{

namespace
{
using Json = nlohmann::ordered_json;

bool IsCall(const Record &record) noexcept
{
    return record.header.type == TARN_RECORD_CALL || record.header.type == TARN_RECORD_KS_CALL;
}

// Writes the events of one session. Confined.
class Writer
{
  public:
    // `processNumber` tells sessions apart; `originTime` is the UTC time that becomes 0.
    Writer(const RecordedSession &recordedSession, std::uint32_t processNumber, std::uint64_t originTime,
           std::uint64_t &lastFlow, std::ostream &stream)
        : session(recordedSession), process(processNumber), output(stream), flow(lastFlow)
    {
        const tarn_recording_header &header = session.Files().front().header;
        startClock = header.startClock;
        offsetMicroseconds = static_cast<double>(Between(originTime, header.startTime)) / 10;
    }

    void WriteAll()
    {
        FindEndsOfUnfinished();
        NameRows();
        FrameBooks frames(session);
        for (const Record &record : session.Records())
        {
            frames.Take(record);
            WriteRecord(record);
        }
        for (const FrameLink &link : frames.Links())
        {
            WriteFrame(link);
        }
    }

    static void Put(const Json &event, std::ostream &stream)
    {
        stream << ",\n" << event.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

  private:
    double Microseconds(std::uint64_t clock) const noexcept
    {
        return offsetMicroseconds + static_cast<double>(Between(startClock, clock)) / 10;
    }
    Json EventOf(const char *phase, const std::string &name, const Record &record) const
    {
        return {{"ph", phase},
                {"name", name},
                {"pid", process},
                {"tid", record.header.thread},
                {"ts", Microseconds(record.header.clock)}};
    }

    // A call that never returned lasts to the end, unless its thread went on, so that its return was not recorded.
    void FindEndsOfUnfinished()
    {
        std::map<std::uint32_t, std::uint64_t> nextCallOf;
        for (const Record &record : session.Records())
        {
            lastClock = std::max(lastClock, record.header.clock);
        }
        for (auto at = session.Records().rbegin(); at != session.Records().rend(); ++at)
        {
            if (!IsCall(*at))
            {
                continue;
            }
            if (session.EndOf(*at) == nullptr)
            {
                const auto next = nextCallOf.find(at->header.thread);
                unfinishedEnds[at->header.sequence] = next == nextCallOf.end() ? lastClock : next->second;
            }
            if (at->header.entry == 0)
            {
                nextCallOf[at->header.thread] = at->header.clock;
            }
        }
    }

    // Rows by what their thread does most.
    void NameRows()
    {
        std::map<std::uint32_t, std::map<std::string, std::size_t>> callsOf;
        for (const Record &record : session.Records())
        {
            if (record.header.type == TARN_RECORD_CALL)
            {
                ++callsOf[record.header.thread][CallText(record.header.subject)];
            }
        }
        Put({{"ph", "M"},
             {"name", "process_name"},
             {"pid", process},
             {"args", {{"name", "session of " + TimeText(session.Files().front().header.startTime)}}}},
            output);
        for (const auto &[thread, calls] : callsOf)
        {
            const auto most = std::ranges::max_element(calls, {}, [](const auto &one) { return one.second; });
            Put({{"ph", "M"},
                 {"name", "thread_name"},
                 {"pid", process},
                 {"tid", thread},
                 {"args", {{"name", "thread " + std::to_string(thread) + ": " + most->first}}}},
                output);
        }
    }

    void WriteRecord(const Record &record)
    {
        if (IsCall(record))
        {
            WriteCall(record);
        }
        else if (record.header.type == TARN_RECORD_EVENT || record.header.type == TARN_RECORD_DEVICE_EVENT)
        {
            Json event = EventOf("i", SubjectText(session, record), record);
            event["cat"] = record.header.type == TARN_RECORD_EVENT ? "event" : "device event";
            event["s"] = "t";
            event["args"] = {{"sequence", record.header.sequence}, {"values", ValuesText(record.Values())}};
            Put(event, output);
        }
    }

    void WriteCall(const Record &record)
    {
        const Record *const end = session.EndOf(record);
        const bool isKs = record.header.type == TARN_RECORD_KS_CALL;
        const bool isToCamera = isKs && (record.header.subject & TARN_KS_TO_CAMERA) != 0;
        const std::uint64_t endClock = end != nullptr ? end->header.clock : unfinishedEnds[record.header.sequence];
        Json event = EventOf("X", SubjectText(session, record), record);
        event["cat"] = isToCamera ? "ks to camera" : isKs ? "ks" : "call";
        event["dur"] = static_cast<double>(Between(record.header.clock, endClock)) / 10;
        Json arguments{{"sequence", record.header.sequence},
                       {"transform", record.header.transform},
                       {"arguments", ValuesText(record.Values())}};
        arguments["result"] = end != nullptr ? EndText(*end) : "never returned";
        if (end != nullptr)
        {
            arguments["gave"] = ValuesText(end->Values());
        }
        event["args"] = std::move(arguments);
        Put(event, output);
        const Record *const cause = session.Find(record.header.entry);
        if (cause != nullptr && cause->header.thread != record.header.thread)
        {
            WriteFlow("cause", *cause, record);
        }
    }

    void WriteFrame(const FrameLink &link)
    {
        const Record *const input = session.Find(link.input);
        const Record *const outputEnd = session.Find(link.output);
        const Record *const call = outputEnd != nullptr ? session.Find(outputEnd->header.entry) : nullptr;
        if (input != nullptr && call != nullptr)
        {
            WriteFlow("frame", *input, *call);
        }
    }

    void WriteFlow(const char *name, const Record &from, const Record &to)
    {
        Json start = EventOf("s", name, from);
        Json finish = EventOf("f", name, to);
        finish["bp"] = "e";
        ++flow;
        for (Json *const event : {&start, &finish})
        {
            (*event)["cat"] = name;
            (*event)["id"] = flow;
            Put(*event, output);
        }
    }

    const RecordedSession &session;
    const std::uint32_t process;
    std::ostream &output;
    std::uint64_t &flow;
    std::uint64_t startClock = 0;
    std::uint64_t lastClock = 0;
    double offsetMicroseconds = 0;
    std::unordered_map<std::uint64_t, std::uint64_t> unfinishedEnds;
};
} // namespace

void WriteTraceEvents(const std::vector<RecordedSession> &sessions, std::ostream &output)
{
    std::uint64_t origin = sessions.empty() ? 0 : sessions.front().Files().front().header.startTime;
    std::uint64_t flow = 0;
    std::uint32_t process = 0;
    output << R"({"displayTimeUnit":"ms","traceEvents":[)" << '\n' << R"({"ph":"M","name":"trace"})";
    for (const RecordedSession &session : sessions)
    {
        Writer(session, ++process, origin, flow, output).WriteAll();
    }
    output << "\n]}\n";
}

} // namespace tarn_host
