#include "recorder/RecordingClock.h"

#include <windows.h>

namespace mft_der
{

namespace
{
constexpr std::uint64_t kTicksPerSecond = 10'000'000;

std::uint64_t Frequency() noexcept
{
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return static_cast<std::uint64_t>(frequency.QuadPart);
}
} // namespace

std::uint64_t RecordingClock() noexcept
{
    static const std::uint64_t frequency = Frequency();
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    const auto ticks = static_cast<std::uint64_t>(counter.QuadPart);
    if (frequency == kTicksPerSecond)
    {
        return ticks;
    }
    return ticks / frequency * kTicksPerSecond + ticks % frequency * kTicksPerSecond / frequency;
}

} // namespace mft_der
