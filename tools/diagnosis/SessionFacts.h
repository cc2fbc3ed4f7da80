// What a trace tells of one process that had the module loaded.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarn_host
{

// Times are microseconds as in LogRecord.
struct Counted
{
    std::uint64_t count = 0;
    std::int64_t firstUs = 0;

    void Add(std::int64_t timeUs, std::uint64_t more = 1)
    {
        firstUs = count == 0 ? timeUs : firstUs;
        count += more;
    }
};

// By what is counted; the texts are for people.
using Counts = std::map<std::string, Counted>;

struct OutputFacts
{
    std::string type; // the last one
    double nominalFps = 0;
    bool isActive = false;
    std::uint32_t starts = 0;
    std::int64_t startedUs = 0;                    // the last start
    std::optional<std::int64_t> firstFrameAfterUs; // of the first start that came to a frame
    std::uint64_t framesSinceStart = 0;
    std::uint64_t frames = 0;
    std::int64_t lastFrameUs = 0;
    std::int64_t betweenFramesUs = 0; // sum over all starts
    std::uint64_t intervals = 0;
    std::int64_t longestGapUs = 0;
    // Without a frame, up to the stop or the end of the log: the longest of all starts, and the frames before it.
    std::int64_t longestSilenceUs = 0;
    std::uint64_t framesBeforeSilence = 0;
    std::int64_t silentSinceUs = 0;
    std::string measured; // what the module itself tells at a stop

    double Fps() const noexcept
    {
        return betweenFramesUs == 0 ? 0 : static_cast<double>(intervals) * 1e6 / static_cast<double>(betweenFramesUs);
    }
};

struct NotedLine
{
    std::int64_t timeUs = 0;
    std::string text;
};

// Value.
struct SessionFacts
{
    std::map<std::string, std::string> module; // fields of the module's own record; empty where the log lacks it
    std::uint32_t process = 0;
    std::int64_t firstUs = 0;
    std::int64_t lastUs = 0;
    std::uint64_t records = 0;
    bool hasFrameEvents = false; // recorded at a level that tells frames
    bool hasEnded = false;

    std::map<std::string, OutputFacts> outputs;
    std::uint64_t inputs = 0;
    std::int64_t lastInputUs = 0;
    std::uint64_t refused = 0; // frames of another format or too short

    Counts drops;                // by reason
    Counts ksFailures;           // by property and result
    Counts ksFailuresFromEvents; // the same, told by the other channel
    Counts errors;               // by text
    Counts symptoms;             // by their titles, see Symptoms.h

    std::int64_t privateSinceUs = 0;
    std::int64_t privateUs = 0;
    bool isPrivate = false;

    std::optional<NotedLine> firstError;
    std::vector<NotedLine> beforeFirstError; // oldest first
    std::vector<NotedLine> afterFirstError;  // on the same thread, at once: callers that pass the result on
    std::vector<NotedLine> changes;
    std::uint64_t changesLeftOut = 0;
};

} // namespace tarn_host
