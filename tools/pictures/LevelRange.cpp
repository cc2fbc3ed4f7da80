#include "tools/pictures/LevelRange.h"

#include <algorithm>

namespace tarn_host
{

namespace
{

constexpr std::uint32_t kUnitsPerMetre = 8000;

std::vector<std::uint16_t> SortedLevels(const std::vector<Thumbnail> &frames)
{
    std::vector<std::uint16_t> levels;
    for (const Thumbnail &frame : frames)
    {
        std::copy_if(frame.levels.begin(), frame.levels.end(), std::back_inserter(levels),
                     [](std::uint16_t level) { return level != 0; });
    }
    std::sort(levels.begin(), levels.end());
    return levels;
}

std::uint32_t AtPercent(const std::vector<std::uint16_t> &sorted, std::size_t percent)
{
    return sorted[(sorted.size() - 1) * percent / 100];
}

} // namespace

LevelRange LevelRange::OfDepth(const std::vector<Thumbnail> &frames)
{
    const std::vector<std::uint16_t> levels = SortedLevels(frames);
    if (levels.empty())
    {
        return {0, kUnitsPerMetre};
    }
    const std::uint32_t low = AtPercent(levels, 1);
    const std::uint32_t high = AtPercent(levels, 99);
    const std::uint32_t step = high - low > kUnitsPerMetre ? kUnitsPerMetre / 2 : kUnitsPerMetre / 10;
    return {low / step * step, (high / step + 1) * step};
}

LevelRange LevelRange::OfGrey(const std::vector<Thumbnail> &frames)
{
    if (!frames.empty() && frames.front().pixels == PixelKind::Grey8)
    {
        return {0, 255};
    }
    if (!frames.empty() && frames.front().pixels == PixelKind::Confidence8)
    {
        return {0, 15};
    }
    const std::vector<std::uint16_t> levels = SortedLevels(frames);
    return {0, levels.empty() ? 1 : AtPercent(levels, 99)};
}

} // namespace tarn_host
