// The range of levels that a set of frames uses, so that all of them are drawn on one scale.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/pictures/Thumbnail.h"

namespace tarn_host
{

// Ends and ticks are round numbers: 1, 2 or 5 times a power of ten, of centimetres for depth. `low` < `high`.
struct LevelRange
{
    std::uint32_t low = 0;
    std::uint32_t high = 1;
    std::uint32_t step = 1; // from tick to tick; divides both ends

    // Of frames of one kind, from the 1st to the 99th percentile of all levels, rounded outwards. Depth counts only
    // what was measured, 0 to 1 m when nothing was; confidence is 0 to 15 whatever occurs.
    static LevelRange Of(PixelKind pixels, const std::vector<Thumbnail> &frames);
};

} // namespace tarn_host
