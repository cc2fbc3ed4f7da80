#include "media/FpsMonitor.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace mft_utils
{

namespace
{
constexpr double kMicrosecondsPerSecond = 1e6;
// More than half a frame, so that a rate between two whole numbers is not reported again and again.
constexpr double kChangeInFps = 0.75;
} // namespace

FpsMonitor::FpsMonitor(ChangeCallback changeCallback) : onChange(std::move(changeCallback)) {}

void FpsMonitor::Reset(double framesPerSecond)
{
    // Written so that a value that is not a number is refused too.
    if (!(framesPerSecond > 0.0) || !std::isfinite(framesPerSecond))
    {
        throw std::invalid_argument("FPS must be > 0");
    }
    Clear();
    reportedFps = std::llround(framesPerSecond);
}

void FpsMonitor::Clear() noexcept
{
    intervals.Clear();
    hasPreviousTime = false;
    reportedFps = 0;
}

void FpsMonitor::AddSample(std::int64_t timeMicroseconds)
{
    const bool hasInterval = hasPreviousTime && timeMicroseconds > previousTime;
    if (hasPreviousTime && !hasInterval)
    {
        // The clock was set back or a stream was restarted: old intervals say nothing about the new ones.
        intervals.Clear();
    }
    // Unsigned: the distance of two times may exceed the signed range.
    const auto interval = static_cast<std::uint64_t>(timeMicroseconds) - static_cast<std::uint64_t>(previousTime);
    previousTime = timeMicroseconds;
    hasPreviousTime = true;
    if (!hasInterval || interval > static_cast<std::uint64_t>(INT64_MAX))
    {
        return;
    }
    intervals.Add(static_cast<std::int64_t>(interval));

    const double fps = FPS();
    if (std::abs(fps - static_cast<double>(reportedFps)) > kChangeInFps)
    {
        reportedFps = std::llround(fps);
        if (onChange)
        {
            onChange(fps);
        }
    }
}

double FpsMonitor::FPS() const noexcept
{
    return intervals.Count() == 0 ? 0.0 : kMicrosecondsPerSecond / intervals.Average();
}

} // namespace mft_utils
