#include "tools/replay/FramePixels.h"

#include <algorithm>

namespace tarn_replay
{

namespace
{
constexpr std::uint64_t kLongestFrame = 64U << 20U; // a damaged recording must not take all memory
constexpr std::size_t kPatternBytes = 4096;
} // namespace

FramePixels::FramePixels(const tarn_recording::RecordedSession &session)
{
    for (const auto &record : session.Records())
    {
        const auto pixels =
            record.header.type == TARN_RECORD_PIXELS ? record.Values().Find(TARN_VALUE_PIXELS) : std::nullopt;
        if (pixels)
        {
            recorded[record.header.entry] = pixels->Payload();
        }
    }
}

std::vector<std::uint8_t> FramePixels::Of(const tarn_recording::Record &call) const
{
    const auto found = recorded.find(call.header.sequence);
    if (found != recorded.end())
    {
        return {found->second.begin(), found->second.end()};
    }
    const auto sample = call.Values().Items(TARN_VALUE_SAMPLE);
    std::vector<std::uint8_t> pixels(std::min(sample.Unsigned(TARN_VALUE_LENGTH).value_or(0), kLongestFrame));
    std::uint64_t state = sample.Unsigned(TARN_VALUE_NUMBER).value_or(0) + 1;
    const std::size_t pattern = std::min(pixels.size(), kPatternBytes);
    for (std::size_t i = 0; i < pattern; ++i)
    {
        state = state * 6364136223846793005 + 1442695040888963407;
        pixels[i] = static_cast<std::uint8_t>(state >> 56U);
    }
    for (std::size_t at = pattern; at < pixels.size(); at += pattern)
    {
        std::copy_n(pixels.begin(), std::min(pattern, pixels.size() - at),
                    pixels.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return pixels;
}

} // namespace tarn_replay
