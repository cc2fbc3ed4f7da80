#include "tools/runs/StreamStatistics.h"

#include <algorithm>
#include <cmath>

namespace tarn_host
{

namespace
{

// Nearest rank: the smallest value that at least `share` of all values do not exceed.
double Percentile(const std::vector<double> &sorted, double share)
{
    if (sorted.empty())
    {
        return 0;
    }
    const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size())));
    return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

} // namespace

void StreamStatistics::FrameIn(std::int64_t sampleTime100ns, Clock::time_point now)
{
    pending.push_back({sampleTime100ns, framesIn, now});
    ++framesIn;
}

bool StreamStatistics::FrameRefused(std::int64_t sampleTime100ns)
{
    const auto found = std::ranges::find(pending, sampleTime100ns, &Pending::sampleTime100ns);
    if (found == pending.end())
    {
        return false;
    }
    pending.erase(found);
    --framesIn;
    ++between;
    return true;
}

void StreamStatistics::FramesBetween(std::uint64_t count) noexcept
{
    between += count;
}

void StreamStatistics::FrameOut(std::int64_t sampleTime100ns, Clock::time_point now)
{
    firstOutAt = framesOut == 0 ? now : firstOutAt;
    lastOutAt = now;
    ++framesOut;

    const auto found = std::ranges::find(pending, sampleTime100ns, &Pending::sampleTime100ns);
    if (found == pending.end())
    {
        ++unexpected;
        return;
    }
    if (found->number < nextNumber)
    {
        ++reordered;
    }
    nextNumber = std::max(nextNumber, found->number + 1);
    latenciesMs.push_back(std::chrono::duration<double, std::milli>(now - found->enteredAt).count());
    pending.erase(found);
}

bool StreamStatistics::Expects(std::int64_t sampleTime100ns) const noexcept
{
    return std::ranges::find(pending, sampleTime100ns, &Pending::sampleTime100ns) != pending.end();
}

void StreamStatistics::CutOff() noexcept
{
    isCutOff = true;
}

std::uint64_t StreamStatistics::FramesIn() const noexcept
{
    return framesIn;
}

std::uint64_t StreamStatistics::FramesOut() const noexcept
{
    return framesOut;
}

std::size_t StreamStatistics::InFlight() const noexcept
{
    return isCutOff ? 0 : pending.size();
}

StreamSummary StreamStatistics::Summary() const
{
    std::vector<double> sorted = latenciesMs;
    std::sort(sorted.begin(), sorted.end());

    StreamSummary summary;
    summary.framesIn = framesIn;
    summary.framesOut = framesOut;
    summary.between = between;
    (isCutOff ? summary.cutOff : summary.lost) = pending.size();
    summary.reordered = reordered;
    summary.unexpected = unexpected;
    summary.latencyP50Ms = Percentile(sorted, 0.50);
    summary.latencyP99Ms = Percentile(sorted, 0.99);
    summary.latencyMaxMs = sorted.empty() ? 0 : sorted.back();
    const double seconds = std::chrono::duration<double>(lastOutAt - firstOutAt).count();
    if (framesOut > 1 && seconds > 0)
    {
        summary.framesPerSecond = static_cast<double>(framesOut - 1) / seconds;
    }
    return summary;
}

} // namespace tarn_host
