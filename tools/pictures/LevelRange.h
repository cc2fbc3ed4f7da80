// The range of levels that a set of frames uses, so that all of them are drawn on one scale.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/pictures/Thumbnail.h"

namespace tarn_host
{

struct LevelRange
{
    std::uint32_t low = 0;
    std::uint32_t high = 0;

    // From the 1st to the 99th percentile of all measured depths, rounded outwards to steps that read well.
    // 0 to 1 m when nothing was measured.
    static LevelRange OfDepth(const std::vector<Thumbnail> &frames);
    // From 0 to the 99th percentile, at least 1; 0 to 255 for 8-bit frames, 0 to 15 for confidence.
    static LevelRange OfGrey(const std::vector<Thumbnail> &frames);
};

} // namespace tarn_host
