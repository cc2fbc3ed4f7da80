#include "tools/events/SummaryReport.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include <nlohmann/json.hpp>

#include "tools/names/Format.h"

namespace tarn_host
{

namespace
{
using Json = nlohmann::ordered_json;

constexpr std::size_t kChangesShown = 40;

double PercentileMs(const std::vector<std::uint64_t> &ticks, double share)
{
    return ticks.empty() ? 0 : Milliseconds(Percentile(ticks, share));
}

void WriteHead(const SessionSummary &summary, std::ostream &output)
{
    output << "Session of " << TimeText(summary.startTime) << ", "
           << Format("%.3f s", static_cast<double>(summary.ticks) / 1e7) << ", " << summary.records << " records"
           << (summary.droppedRecords == 0 ? ", none dropped" : Format(", %llu dropped", Wide(summary.droppedRecords)))
           << (summary.isClosed ? "" : ", without an orderly end") << '\n'
           << "  module " << summary.module << " on " << summary.machine << ", process " << summary.processId
           << (summary.process.empty() ? "" : " " + summary.process) << '\n'
           << "  " << (summary.holdsPictures ? "holds pictures" : "holds no pictures")
           << (summary.lacksBeginning ? "; the session's beginning is not in these files" : "") << '\n';
    for (const auto &[number, name] : summary.transforms)
    {
        output << "  T" << number << " " << name << '\n';
    }
}

void WriteProblems(const SessionSummary &summary, std::ostream &output)
{
    output << "\nWhat looks wrong\n";
    for (const std::string &problem : summary.problems)
    {
        output << "  - " << problem << '\n';
    }
    if (summary.problems.empty())
    {
        output << "  nothing\n";
    }
}

void WriteChanges(const SessionSummary &summary, std::ostream &output)
{
    output << "\nStarts and stops\n";
    std::size_t left = kChangesShown;
    for (const StateChange &change : summary.changes)
    {
        if (left-- == 0)
        {
            output << "  ... " << summary.changes.size() - kChangesShown << " more (--list --kind state)\n";
            break;
        }
        output << Format("  %10.3f s  T%u  ", summary.Seconds(change.clock), change.transform) << change.text << '\n';
    }
}

void WriteStage(const char *name, const std::vector<std::uint64_t> &ticks, std::ostream &output)
{
    if (!ticks.empty())
    {
        output << Format("      %-26s p50 %8.3f ms   p99 %8.3f ms   max %8.3f ms\n", name, PercentileMs(ticks, 0.5),
                         PercentileMs(ticks, 0.99), PercentileMs(ticks, 1));
    }
}

void WriteOutputs(const SessionSummary &summary, std::ostream &output)
{
    output << "\nFrames                              starts      in     out between cut off    lost     fps\n";
    for (const OutputBooks &books : summary.outputs)
    {
        const std::string name = Format("T%u output %u ", books.transform, books.stream) + books.type.ToText();
        output << Format("  %-32s %7llu %7llu %7llu %7llu %7llu %7llu %7.2f\n", name.c_str(), Wide(books.starts),
                         Wide(books.framesIn), Wide(books.framesOut), Wide(books.between), Wide(books.cutOff),
                         Wide(books.lost), books.FramesPerSecond());
        WriteStage("ProcessInput to announced", books.times.toAnnounced, output);
        WriteStage("announced to fetched", books.times.toFetched, output);
        WriteStage("total", books.times.total, output);
    }
}

void WriteCalls(const char *title, const std::map<std::string, CallBooks> &calls, std::ostream &output)
{
    if (calls.empty())
    {
        return;
    }
    std::size_t width = std::string_view(title).size();
    for (const auto &[name, books] : calls)
    {
        width = std::max(width, name.size() + 2);
    }
    const auto padded = [width](std::string text) {
        text.resize(width, ' ');
        return text;
    };
    output << '\n' << padded(title) << "   count  failed    p50 ms    p99 ms    max ms\n";
    for (const auto &[name, books] : calls)
    {
        output << padded("  " + name)
               << Format(" %7llu %7llu %9.3f %9.3f %9.3f\n", Wide(books.count), Wide(books.failed),
                         PercentileMs(books.ticks, 0.5), PercentileMs(books.ticks, 0.99), PercentileMs(books.ticks, 1));
        for (const auto &[result, count] : books.results)
        {
            output << "      " << count << " x " << result << '\n';
        }
    }
}

void WriteCounts(const char *title, const std::map<std::string, std::uint64_t> &counts, std::ostream &output)
{
    if (!counts.empty())
    {
        output << '\n' << title << '\n';
    }
    for (const auto &[name, count] : counts)
    {
        output << "  " << count << " x " << name << '\n';
    }
}

Json StageJson(const std::vector<std::uint64_t> &ticks)
{
    return {{"count", ticks.size()},
            {"p50Ms", PercentileMs(ticks, 0.5)},
            {"p99Ms", PercentileMs(ticks, 0.99)},
            {"maxMs", PercentileMs(ticks, 1)}};
}

Json OutputJson(const SessionSummary &summary, const OutputBooks &books)
{
    return {{"transform", books.transform},
            {"output", books.stream},
            {"type", books.type.ToText()},
            {"starts", books.starts},
            {"in", books.framesIn},
            {"out", books.framesOut},
            {"between", books.between},
            {"cutOff", books.cutOff},
            {"lost", books.lost},
            {"notFetched", books.notFetched},
            {"unexpected", books.unexpected},
            {"blanked", books.blanked},
            {"fps", books.FramesPerSecond()},
            {"longestGapMs", Milliseconds(books.longestGapTicks)},
            {"longestGapAtSeconds", books.longestGapTicks == 0 ? 0 : summary.Seconds(books.longestGapAt)},
            {"toAnnounced", StageJson(books.times.toAnnounced)},
            {"toFetched", StageJson(books.times.toFetched)},
            {"total", StageJson(books.times.total)}};
}

Json CallsJson(const std::map<std::string, CallBooks> &calls)
{
    Json json = Json::object();
    for (const auto &[name, books] : calls)
    {
        Json one = StageJson(books.ticks);
        one["count"] = books.count;
        one["failed"] = books.failed;
        one["results"] = books.results;
        json[name] = std::move(one);
    }
    return json;
}

} // namespace

void WriteSummary(const SessionSummary &summary, std::ostream &output)
{
    WriteHead(summary, output);
    WriteProblems(summary, output);
    WriteChanges(summary, output);
    WriteOutputs(summary, output);
    WriteCalls("Calls", summary.calls, output);
    WriteCalls("KS calls of applications", summary.applicationKs, output);
    WriteCalls("KS calls to the camera", summary.cameraKs, output);
    WriteCounts("Events raised", summary.events, output);
    WriteCounts("Device events", summary.deviceEvents, output);
}

Json SummaryJson(const SessionSummary &summary)
{
    Json outputs = Json::array();
    for (const OutputBooks &books : summary.outputs)
    {
        outputs.push_back(OutputJson(summary, books));
    }
    Json changes = Json::array();
    for (const StateChange &change : summary.changes)
    {
        changes.push_back(
            {{"seconds", summary.Seconds(change.clock)}, {"transform", change.transform}, {"change", change.text}});
    }
    Json unfinished = Json::array();
    for (const UnfinishedCall &call : summary.unfinished)
    {
        unfinished.push_back({{"sequence", call.sequence},
                              {"seconds", summary.Seconds(call.clock)},
                              {"underWayMs", Milliseconds(call.ticks)},
                              {"thread", call.thread},
                              {"transform", call.transform},
                              {"call", call.text}});
    }
    Json transforms = Json::object();
    for (const auto &[number, name] : summary.transforms)
    {
        transforms[std::to_string(number)] = name;
    }
    return {{"start", TimeText(summary.startTime)},
            {"seconds", static_cast<double>(summary.ticks) / 1e7},
            {"module", summary.module},
            {"machine", summary.machine},
            {"process", summary.process},
            {"processId", summary.processId},
            {"records", summary.records},
            {"closed", summary.isClosed},
            {"holdsPictures", summary.holdsPictures},
            {"lacksBeginning", summary.lacksBeginning},
            {"droppedRecords", summary.droppedRecords},
            {"droppedBytes", summary.droppedBytes},
            {"transforms", transforms},
            {"problems", summary.problems},
            {"damages", summary.damages},
            {"changes", changes},
            {"outputs", outputs},
            {"calls", CallsJson(summary.calls)},
            {"applicationKs", CallsJson(summary.applicationKs)},
            {"cameraKs", CallsJson(summary.cameraKs)},
            {"events", summary.events},
            {"deviceEvents", summary.deviceEvents},
            {"unfinished", unfinished}};
}

} // namespace tarn_host
