// Measures a stream's frame rate from the times of its samples.
#pragma once

#include <cstdint>
#include <functional>

#include "media/RollingAverage.h"

namespace mft_utils
{

// Owned by a stream, which feeds it under its own lock. Confined.
class FpsMonitor
{
  public:
    // Called from AddSample when the rate has left the whole number of frames per second reported before.
    using ChangeCallback = std::function<void(double framesPerSecond)>;

    FpsMonitor() = default;
    explicit FpsMonitor(ChangeCallback changeCallback);

    // Forgets all intervals and takes `framesPerSecond` as the rate reported last. Throws
    // std::invalid_argument("FPS must be > 0") otherwise, and then changes nothing.
    void Reset(double framesPerSecond);

    // Forgets all intervals and the rate reported last: nothing is known of the rate to come.
    void Clear() noexcept;

    // Takes the time of a sample. A time that does not advance restarts the measurement. Throws what the callback
    // throws.
    void AddSample(std::int64_t timeMicroseconds);

    // Mean over the last 32 intervals; 0 before the second sample.
    double FPS() const noexcept;

  private:
    ChangeCallback onChange;
    RollingAverage intervals;
    std::int64_t previousTime = 0;
    bool hasPreviousTime = false;
    std::int64_t reportedFps = 0;
};

} // namespace mft_utils
