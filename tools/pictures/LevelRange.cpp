#include "tools/pictures/LevelRange.h"

#include <algorithm>

namespace tarn_host
{

namespace
{

constexpr std::uint32_t kUnitsPerMetre = 8000;
constexpr std::uint32_t kUnitsPerCentimetre = kUnitsPerMetre / 100;
constexpr std::uint32_t kMostTicks = 8;

std::vector<std::uint16_t> SortedLevels(const std::vector<Thumbnail> &frames, bool withZero)
{
    std::vector<std::uint16_t> levels;
    for (const Thumbnail &frame : frames)
    {
        std::copy_if(frame.levels.begin(), frame.levels.end(), std::back_inserter(levels),
                     [withZero](std::uint16_t level) { return withZero || level != 0; });
    }
    std::sort(levels.begin(), levels.end());
    return levels;
}

std::uint32_t AtPercent(const std::vector<std::uint16_t> &sorted, std::size_t percent)
{
    return sorted[(sorted.size() - 1) * percent / 100];
}

LevelRange Round(std::uint32_t low, std::uint32_t high, std::uint32_t unit)
{
    for (std::uint32_t tens = unit;; tens *= 10)
    {
        for (const std::uint32_t factor : {1U, 2U, 5U})
        {
            const std::uint32_t step = tens * factor;
            const std::uint32_t from = low / step;
            const std::uint32_t to = std::max((high + step - 1) / step, from + 1);
            if (to - from <= kMostTicks)
            {
                return {from * step, to * step, step};
            }
        }
    }
}

} // namespace

LevelRange LevelRange::Of(PixelKind pixels, const std::vector<Thumbnail> &frames)
{
    if (pixels == PixelKind::Confidence8)
    {
        return {0, 15, 5};
    }
    const bool isDepth = pixels == PixelKind::Depth16;
    const std::vector<std::uint16_t> levels = SortedLevels(frames, !isDepth);
    if (levels.empty())
    {
        return Round(0, isDepth ? kUnitsPerMetre : 255, isDepth ? kUnitsPerCentimetre : 1);
    }
    return Round(AtPercent(levels, 1), AtPercent(levels, 99), isDepth ? kUnitsPerCentimetre : 1);
}

} // namespace tarn_host
