// The way of each frame through a recorded transform: into ProcessInput, announced, out of ProcessOutput.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/events/RecordViews.h"

namespace tarn_host
{

// Times in 100 ns.
struct StageTimes
{
    std::vector<std::uint64_t> toAnnounced; // ProcessInput to METransformHaveOutput
    std::vector<std::uint64_t> toFetched;   // from there to the return of ProcessOutput
    std::vector<std::uint64_t> total;
};

// One output with one media type.
struct OutputBooks
{
    std::uint32_t transform = 0;
    std::uint32_t stream = 0;
    TypeView type;
    std::uint64_t framesIn = 0;   // given to the transform while the output ran
    std::uint64_t framesOut = 0;  // fetched
    std::uint64_t between = 0;    // in before the first that came out of a start
    std::uint64_t cutOff = 0;     // in after the last that came out before a stop or restart
    std::uint64_t lost = 0;       // in, and others that went in later came out
    std::uint64_t notFetched = 0; // of those cut off or lost: announced, so that only ProcessOutput is missing
    std::uint64_t unexpected = 0; // out with a time that never went in
    std::uint64_t blanked = 0;
    std::uint64_t starts = 0;
    std::uint64_t runningTicks = 0; // from the first to the last frame of each start
    std::uint64_t intervals = 0;    // between frames in that time
    std::uint64_t longestGapTicks = 0;
    std::uint64_t longestGapAt = 0; // clock
    StageTimes times;

    double FramesPerSecond() const noexcept;
};

// A frame's call in and call out, for those who draw its way.
struct FrameLink
{
    std::uint64_t input;  // sequence of the ProcessInput call
    std::uint64_t output; // of the return of ProcessOutput
};

// Fed with every record of a session in its order. Confined.
class FrameBooks
{
  public:
    explicit FrameBooks(const RecordedSession &recordedSession) : session(recordedSession) {}

    void Take(const Record &record);
    // When all have been taken.
    std::vector<OutputBooks> Outputs() const;
    const std::vector<FrameLink> &Links() const noexcept
    {
        return links;
    }

  private:
    struct Frame
    {
        std::uint32_t inputStream;
        bool isAnnounced = false;
        bool isOut = false;
        bool isRefused = false;
    };
    // From one change of any output's state to the next.
    struct Interval
    {
        std::vector<Frame> frames;
        std::uint64_t lastOutAt = 0;
    };
    struct Place
    {
        std::size_t interval;
        std::size_t frame;
    };
    struct Output
    {
        OutputBooks books;
        bool isRunning = false;
        std::vector<Interval> intervals;
        std::unordered_map<std::int64_t, Place> byTime;
        std::unordered_map<std::int64_t, std::uint64_t> announced; // clocks by time
        std::set<std::uint32_t> feeders;
    };
    struct Input
    {
        std::uint64_t clock;
        std::uint64_t sequence;
    };
    struct Transform
    {
        bool isChanging = false;
        std::map<std::uint32_t, Output> outputs;
        std::unordered_map<std::int64_t, Input> inputs;
    };

    void TakeStateChange(Transform &transform, const Record &end);
    void TakeInput(Transform &transform, const Record &call);
    static Frame *FindFrame(Output &output, std::int64_t time);
    void TakeRefusal(Transform &transform, const Record &end);
    static void TakeAnnouncement(Transform &transform, const Record &event);
    void TakeOutput(Transform &transform, const Record &end);
    void TakeSample(Transform &transform, const Record &end, const OutputView &view);
    static OutputBooks Finished(const Output &output);

    const RecordedSession &session;
    std::map<std::uint32_t, Transform> transforms;
    std::vector<OutputBooks> ended; // an output that went on with another type
    std::vector<FrameLink> links;
};

// Of at least one; nearest rank.
std::uint64_t Percentile(std::vector<std::uint64_t> values, double share);

} // namespace tarn_host
