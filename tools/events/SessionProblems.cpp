#include "tools/events/SessionProblems.h"

#include <algorithm>

#include "tools/events/SessionSummary.h"
#include "tools/names/Format.h"

namespace tarn_host
{

namespace
{
using Problems = std::vector<std::string>;
using CallTable = std::map<std::string, CallBooks>;

constexpr std::uint64_t kSlowInput = 200'000;       // 20 ms: the capture thread has a frame interval at most
constexpr std::uint64_t kSlowControl = 5'000'000;   // 0.5 s
constexpr std::uint64_t kTimeForAFrame = 5'000'000; // 0.5 s: an output that runs so long has one
constexpr double kGapFrames = 4;                    // so many usual intervals without a frame are a gap
constexpr std::uint64_t kFewIntervals = 4;          // from which nothing usual can be told

std::string OutputText(const OutputBooks &output)
{
    return Format("T%u output %u (", output.transform, output.stream) + output.type.ToText() + ")";
}

void AddUnfinished(const SessionSummary &summary, Problems &problems)
{
    // One that waits for an event stands there in every session that ends abruptly.
    std::vector<UnfinishedCall> calls = summary.unfinished;
    std::stable_partition(calls.begin(), calls.end(),
                          [](const UnfinishedCall &call) { return !call.text.starts_with("GetEvent"); });
    for (const UnfinishedCall &call : calls)
    {
        problems.push_back(Format("never returned: at %.3f s, thread %lu, %.3f s before the recording's end: ",
                                  summary.Seconds(call.clock), static_cast<unsigned long>(call.thread),
                                  static_cast<double>(call.ticks) / 1e7) +
                           call.text);
    }
    if (!summary.isClosed)
    {
        problems.push_back("the recording has no end: the process still ran, or ended abruptly");
    }
}

void AddOutputs(const SessionSummary &summary, Problems &problems)
{
    for (const OutputBooks &output : summary.outputs)
    {
        if (output.framesOut == 0 && output.openTicks > kTimeForAFrame)
        {
            const auto inputs = summary.inputFrames.find(output.transform);
            const bool gotFrames = inputs != summary.inputFrames.end() && inputs->second != 0;
            problems.push_back(OutputText(output) + " was started and delivered nothing; " +
                               (gotFrames ? Format("%llu frames went in while it ran", Wide(output.framesIn))
                                          : "the camera gave no frame"));
        }
        if (output.lost != 0)
        {
            problems.push_back(
                OutputText(output) + Format(": %llu of %llu frames lost", Wide(output.lost), Wide(output.framesIn)) +
                (output.notFetched == 0 ? ", none announced"
                                        : Format("; %llu were announced and not fetched", Wide(output.notFetched))));
        }
        if (output.unexpected != 0)
        {
            problems.push_back(OutputText(output) +
                               Format(": %llu frames came out that never went in", Wide(output.unexpected)));
        }
        // A pipeline may feed frames faster than their type says.
        const double measured = output.FramesPerSecond() > 0 ? 1 / output.FramesPerSecond() : 0;
        const double usual = std::max(measured, output.type.FrameSeconds());
        const double longest = static_cast<double>(output.longestGapTicks) / 1e7;
        if (output.intervals > kFewIntervals && longest > kGapFrames * usual)
        {
            problems.push_back(OutputText(output) + Format(": no frame for %.3f s from %.3f s on", longest,
                                                           summary.Seconds(output.longestGapAt)));
        }
        if (output.blanked != 0)
        {
            problems.push_back(OutputText(output) + Format(": %llu frames blanked for privacy", Wide(output.blanked)));
        }
    }
}

void AddFailures(const SessionSummary &summary, const CallTable &calls, const char *who, Problems &problems)
{
    for (const auto &[name, books] : calls)
    {
        if (books.failed == 0)
        {
            continue;
        }
        std::string results;
        for (const auto &[result, count] : books.results)
        {
            results += (results.empty() ? "" : ", ") + Format("%llu x ", Wide(count)) + result;
        }
        problems.push_back(who + name +
                           Format(" failed %llu of %llu times, first at %.3f s: ", Wide(books.failed),
                                  Wide(books.count), summary.Seconds(books.firstFailureAt)) +
                           results);
    }
}

void AddSlow(const SessionSummary &summary, const CallTable &calls, std::uint64_t limit, Problems &problems)
{
    for (const auto &[name, books] : calls)
    {
        if (books.slowestTicks > limit)
        {
            problems.push_back(name + Format(" took up to %.1f ms, at %.3f s", Milliseconds(books.slowestTicks),
                                             summary.Seconds(books.slowestAt)));
        }
    }
}

} // namespace

Problems ProblemsOf(const SessionSummary &summary)
{
    Problems problems = summary.damages;
    AddUnfinished(summary, problems);
    AddOutputs(summary, problems);
    AddFailures(summary, summary.calls, "", problems);
    AddFailures(summary, summary.applicationKs, "", problems);
    AddFailures(summary, summary.cameraKs, "camera: ", problems);
    if (const auto input = summary.calls.find("ProcessInput"); input != summary.calls.end())
    {
        AddSlow(summary, {*input}, kSlowInput, problems);
    }
    AddSlow(summary, summary.applicationKs, kSlowControl, problems);
    AddSlow(summary, summary.cameraKs, kSlowControl, problems);
    if (summary.droppedRecords != 0)
    {
        problems.push_back(
            Format("%llu records (%llu bytes) were not recorded: what follows from their absence is no fault",
                   Wide(summary.droppedRecords), Wide(summary.droppedBytes)));
    }
    return problems;
}

} // namespace tarn_host
