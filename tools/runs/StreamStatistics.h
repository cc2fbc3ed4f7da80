// Books of one output stream: which frames went in, which came out, in which order and how fast.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <vector>

namespace tarn_host
{

struct StreamSummary
{
    std::uint64_t framesIn = 0;
    std::uint64_t framesOut = 0;
    std::uint64_t between = 0;    // Came, or were refused, while the output was started or restarted.
    std::uint64_t lost = 0;       // Went in and had not come out when the summary was made.
    std::uint64_t cutOff = 0;     // The same, but the output was stopped or restarted meanwhile.
    std::uint64_t reordered = 0;  // Came out after a frame that went in later.
    std::uint64_t unexpected = 0; // Came out without having gone in, or came out twice.
    double framesPerSecond = 0;   // 0 with fewer than two frames.
    double latencyP50Ms = 0;
    double latencyP99Ms = 0;
    double latencyMaxMs = 0;

    bool Complete() const noexcept
    {
        return lost == 0 && reordered == 0 && unexpected == 0;
    }
};

// Matches delivered frames to captured ones by sample time. Confined.
class StreamStatistics
{
  public:
    using Clock = std::chrono::steady_clock;

    // A frame is about to be handed to the transform.
    void FrameIn(std::int64_t sampleTime100ns, Clock::time_point now);
    // The transform refused the frame: it came between two phases. False when it came out all the same, or never went
    // in.
    bool FrameRefused(std::int64_t sampleTime100ns);
    void FramesBetween(std::uint64_t count) noexcept;
    void FrameOut(std::int64_t sampleTime100ns, Clock::time_point now);
    bool Expects(std::int64_t sampleTime100ns) const noexcept;
    // From now on what is still expected need not come.
    void CutOff() noexcept;

    std::uint64_t FramesIn() const noexcept;
    std::uint64_t FramesOut() const noexcept;
    // Frames that have to come yet.
    std::size_t InFlight() const noexcept;
    StreamSummary Summary() const;

  private:
    struct Pending
    {
        std::int64_t sampleTime100ns;
        std::uint64_t number;
        Clock::time_point enteredAt;
    };

    std::deque<Pending> pending;
    std::vector<double> latenciesMs;
    std::uint64_t framesIn = 0;
    std::uint64_t framesOut = 0;
    std::uint64_t between = 0;
    std::uint64_t reordered = 0;
    std::uint64_t unexpected = 0;
    std::uint64_t nextNumber = 0; // Lowest number that is still in order.
    bool isCutOff = false;
    Clock::time_point firstOutAt{};
    Clock::time_point lastOutAt{};
};

} // namespace tarn_host
